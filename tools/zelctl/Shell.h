// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/LineReader.h>

#include <QtCore/QObject>

#include <memory>

namespace zelctl {

class Output;
class Session;

/// Commands from a descriptor, a line each, for a person or another program. Each line is answered by one line; every
/// signal is printed as it comes; nothing registers but the command that says so.
///
/// finished() comes once, at `quit` or at the end of the input; a last line without a line break still counts.
class Shell : public QObject
{
    Q_OBJECT

public:
    /// \a session and \a output must outlive it; \a input stays the caller's.
    Shell(Session& session, Output& output, int input, QObject* parent = nullptr);

    void start();
    /// Answers one line, its line break removed.
    void execute(const QString& line);
    void quit();

Q_SIGNALS:
    void finished(int exitStatus);

private:
    void runCommand(const QStringList& words);
    void help(const QString& name);

    Session& m_session;
    Output& m_output;
    const std::unique_ptr<zeltools::LineReader> m_lines;
    bool m_done = false;
};

} // namespace zelctl
