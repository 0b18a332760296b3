// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <span>
#include <variant>

namespace zelcore {

class SimulatorPrivate;
class World;
struct Addressee;

/// What a command answers: why it cannot be done, or else what there is to say.
struct Answer
{
    QString problem = {};
    QString text = {};
};

/// Of an operation, whose \a problem is empty when it is done; \a text is what there is to say then.
inline Answer outcomeOf(const QString& problem, const QString& text = {})
{
    return {problem, text};
}

inline Answer say(const QString& text)
{
    return {QString(), text};
}

using InWorld = Answer (*)(World&, const QStringList&);
using InService = Answer (*)(SimulatorPrivate&, const QStringList&);
/// Behind "app APP", only for that application: what is in the world is its own box, which goes by its UUID.
using InBox = Answer (*)(World&, const QString& owner, const QStringList&);
using ForApplications = Answer (*)(SimulatorPrivate&, const Addressee&, const QStringList&);

/// One form of a command. Arguments: [X] may be missing, X... may be many; wordProblem() says which names mean more
/// than any word. A row comes before those that take its words for something else.
struct Form
{
    const char16_t* name;
    const char16_t* arguments;
    const char16_t* what;
    std::variant<InWorld, InService, InBox, ForApplications> run;
    bool ofApplications = false; ///< About what applications may have made: there is nothing to try it on.

    template <typename Action>
    bool runs() const
    {
        return std::holds_alternative<Action>(run);
    }
    bool isForOne() const { return runs<InBox>() || runs<ForApplications>(); }
    bool isOfWorld() const { return runs<InWorld>() || runs<InBox>(); }
};

/// The whole command language, a row for every form of every command, with the arguments that it takes, its help and
/// its action; in the order of the help. How many words there are and of which kind is checked by the rows; what cannot
/// be done is for the world to say.
std::span<const Form> registrationForms();
std::span<const Form> peopleForms();
std::span<const Form> boxForms();
std::span<const Form> wireForms();

/// Rows of words under each other. Names of people come last: how wide a script is, is for the terminal to know.
QString table(const QList<QStringList>& rows);
/// A file, or a made-up picture of so many bytes; none for "none". Empty, or why not.
QString readPicture(const QString& word, QByteArray* data);
/// The outcome of what \a take, which answers a problem, does with the bytes of such a picture.
template <typename Take>
Answer withPicture(const QString& word, Take take)
{
    QByteArray data;
    const QString problem = readPicture(word, &data);
    return outcomeOf(problem.isEmpty() ? take(data) : problem);
}

} // namespace zelcore
