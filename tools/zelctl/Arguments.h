// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHash>
#include <QtCore/QLatin1String>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>
#include <vector>

namespace zelctl {

/// One word that a command takes, or the value of one of its options.
struct Parameter
{
    enum Kind {
        Text,
        Number,    ///< An int, negative ones included.
        UserStatus ///< "available" or "busy".
    };

    QLatin1String name; ///< As the usage shows it.
    Kind kind = Text;
};

struct Option
{
    QLatin1String name;             ///< With its dashes.
    std::optional<Parameter> value; ///< None: the option stands alone.
};

/// What one command takes.
struct Signature
{
    std::vector<Parameter> parameters; ///< All are wanted.
    std::vector<Option> options;       ///< None is wanted; they may stand anywhere behind the command.
};

/// The words behind a command, checked against what it takes.
///
/// Only a command that has options looks for them: a message that begins with a dash is a message. And a dash before
/// a digit is a negative number (or a text that begins like one), never an option. "--" ends the options.
class Arguments
{
public:
    /// Empty, with a sentence in \a error, when \a words do not fit.
    static std::optional<Arguments> parse(const Signature& signature, const QStringList& words, QString* error);

    QString text(qsizetype at) const { return m_words.value(at); }
    int number(qsizetype at) const { return m_words.value(at).toInt(); }
    const QStringList& words() const { return m_words; }

    bool has(QLatin1String option) const { return m_options.contains(option); }
    QString text(QLatin1String option) const { return m_options.value(option); }
    int number(QLatin1String option) const { return m_options.value(option).toInt(); }

private:
    QStringList m_words;
    QHash<QString, QString> m_options;
};

/// "HANDLE [-o FILE]"
QString usageOf(const Signature& signature);

} // namespace zelctl
