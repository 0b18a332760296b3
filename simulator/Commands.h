// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace zelcore {

class SimulatorPrivate;

/// The command language.
class Commands
{
public:
    explicit Commands(SimulatorPrivate& simulator)
        : m_simulator(simulator)
    {
    }

    /// Runs one line. False, with a sentence in \a reply, when it is no command or cannot be done.
    bool run(const QString& line, QString* reply);

    static QString help();
    /// A sentence when the line does not begin with a command.
    static QString problemWith(const QString& line);
    /// A sentence when \a words, as they stand behind "registration", name no policy.
    static QString problemWithRegistration(const QString& words);
    /// Cuts a line into words: blanks separate, single and double quotes keep together, a backslash takes the next
    /// character as it is (within double quotes, \n is a line break), # begins a comment. False when a quote is open.
    static bool split(const QString& line, QStringList* words);

private:
    SimulatorPrivate& m_simulator;
};

} // namespace zelcore
