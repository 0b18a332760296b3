// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>
#include <QtCore/QUuid>

#include <optional>

namespace zelctl {

/// The program's own options, and the words that follow them.
///
/// Parsed by hand: QCommandLineParser takes options from anywhere in the line, so that the text of a message could
/// be taken for one, and a negative number always is.
struct CommandLine
{
    bool json = false;
    bool all = false;
    QString about; ///< "--help" or another that has the program only tell of itself; empty: none.
    bool simulate = false;
    QString scenario; ///< Empty: the simulator's own world.
    QUuid uuid = defaultUuid();
    int timeout = 10'000; ///< Milliseconds.
    QStringList words;    ///< The command and its arguments.

    /// What the program calls itself when it is not told otherwise: always the same, so that the service knows it
    /// again from one call to the next.
    static QUuid defaultUuid();

    /// \a arguments without the program's name. Empty, with a sentence in \a error, for wrong use.
    static std::optional<CommandLine> parse(const QStringList& arguments, QString* error);

    /// Whether \a word is one of the options, which stand before the command.
    static bool isOption(const QString& word);
};

} // namespace zelctl
