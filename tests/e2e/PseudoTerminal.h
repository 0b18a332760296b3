// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <csignal>
#include <cstdlib>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

/// A program at a terminal of its own, and what that shows. A shell starts the program and stays behind: the system
/// would put the terminal in order itself when its first process ends.
class PseudoTerminal
{
public:
    PseudoTerminal(const QStringList& words, QProcessEnvironment environment)
        : m_terminal(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
        ::grantpt(m_terminal);
        ::unlockpt(m_terminal);
        m_programEnd = ::open(::ptsname(m_terminal), O_RDWR | O_NOCTTY | O_CLOEXEC);
        const winsize size{24, columns, 0, 0};
        ::ioctl(m_terminal, TIOCSWINSZ, &size);
        m_before = modes();
        environment.insert(QStringLiteral("TERM"), QStringLiteral("vt100"));
        environment.insert(QStringLiteral("NO_COLOR"), QStringLiteral("1"));
        m_shell.setProcessEnvironment(environment);
        m_shell.setChildProcessModifier([this] {
            ::setsid();
            ::ioctl(m_programEnd, TIOCSCTTY, 0);
            for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
                ::dup2(m_programEnd, descriptor);
        });
        const QString script = QStringLiteral("trap : INT TERM; \"$@\"; echo \"status $?\"; read rest");
        m_shell.start(QStringLiteral("/bin/sh"),
                      QStringList{QStringLiteral("-c"), script, QStringLiteral("sh")} + words);
    }

    ~PseudoTerminal()
    {
        m_shell.kill();
        m_shell.waitForFinished();
        ::close(m_programEnd);
        ::close(m_terminal);
    }

    bool type(const QByteArray& keys) const
    {
        return ::write(m_terminal, keys.constData(), std::size_t(keys.size())) == keys.size();
    }

    void terminate() const { ::kill(-pid_t(m_shell.processId()), SIGTERM); }

    /// Waits until \a rows are the last ones, the cursor in the last of them.
    bool shows(const QByteArrayList& rows)
    {
        const auto there = [&] {
            draw();
            return m_rows.mid(m_row + 1 - rows.size(), rows.size()) == rows;
        };
        if (QTest::qWaitFor(there, patience))
            return true;
        qWarning("the terminal shows:\n%s", m_rows.join('\n').constData());
        return false;
    }

    QByteArray line()
    {
        draw();
        return m_rows[m_row];
    }

    bool isBeingEdited() const
    {
        return QTest::qWaitFor([this] { return modes() != m_before; }, patience);
    }

    /// Whether the program ends with success and leaves the terminal as it was.
    bool isLeftInOrder() { return shows({"status 0", ""}) && modes() == m_before; }

private:
    static constexpr int patience = 20'000;
    static constexpr unsigned short columns = 64;

    QByteArray modes() const
    {
        termios state{};
        ::tcgetattr(m_terminal, &state);
        return QByteArray::number(state.c_lflag) + ' ' + QByteArray::number(state.c_iflag) + ' ' +
               QByteArray::number(state.c_oflag);
    }

    void draw()
    {
        char byte;
        for (pollfd waiting{m_terminal, POLLIN, 0}; ::poll(&waiting, 1, 0) > 0 && ::read(m_terminal, &byte, 1) == 1;) {
            if (!m_escape.isEmpty() || byte == '\033')
                escape(byte);
            else if (byte == '\r')
                m_column = 0;
            else if (byte == '\n')
                goToRow(m_row + 1);
            else if (byte == '\b')
                --m_column;
            else if (byte >= ' ')
                put(byte);
        }
    }

    void put(char byte)
    {
        if (m_column == columns) {
            goToRow(m_row + 1);
            m_column = 0;
        }
        QByteArray& row = m_rows[m_row];
        row = row.leftJustified(m_column);
        row.replace(m_column++, 1, QByteArray(1, byte));
    }

    void escape(char byte)
    {
        m_escape += byte;
        if (m_escape.size() < 3 || byte < '@')
            return;
        const int count = std::max(1, m_escape.mid(2, m_escape.size() - 3).toInt());
        m_escape.clear();
        if (byte == 'K')
            m_rows[m_row].truncate(m_column);
        else if (byte == 'A')
            m_row -= count;
        else if (byte == 'C')
            m_column += count;
    }

    void goToRow(qsizetype row)
    {
        m_row = row;
        m_rows.resize(std::max(m_rows.size(), row + 1));
    }

    const int m_terminal;
    int m_programEnd = -1;
    QProcess m_shell;
    QByteArray m_before;
    QByteArray m_escape;
    QByteArrayList m_rows{QByteArray("")};
    qsizetype m_row = 0;
    qsizetype m_column = 0;
};
