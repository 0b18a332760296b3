// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace zelcore {

class SimulatorPrivate;
class World;
struct Addressee;
struct Answer;
struct Form;

/// The command language: what is typed, what scenarios are made of.
class Commands
{
public:
    /// For a service that is there.
    explicit Commands(SimulatorPrivate& simulator);
    /// To try commands on a world. What concerns the service, or items and icons that applications may have made, is
    /// only checked by its form.
    explicit Commands(World& world)
        : m_world(world)
    {
    }

    /// Runs one line. False, with a sentence in \a reply, when it is no command or cannot be done.
    bool run(const QString& line, QString* reply) const;
    bool run(const QStringList& words, QString* reply) const;

    static QString help();
    static QStringList names();
    /// The words of a line; # begins a comment.
    static std::optional<QStringList> split(const QString& line, QString* error);

private:
    bool runFor(const Addressee& whose, const QStringList& words, QString* reply) const;
    static const Form* find(const QStringList& words, qsizetype* nameLength, QString* problem);
    Answer act(const Form& form, const Addressee& whose, const QStringList& args) const;

    World& m_world;
    SimulatorPrivate* m_simulator = nullptr;
};

} // namespace zelcore
