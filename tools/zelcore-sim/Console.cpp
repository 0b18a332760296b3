// SPDX-License-Identifier: Apache-2.0
#include "Console.h"

#include <csignal>
#include <utility>

#include <unistd.h>

Console::Console(QObject* parent)
    : QObject(parent)
    , m_notifier(STDIN_FILENO, QSocketNotifier::Read)
{
    // In the background of a terminal a read is answered by a signal that stops the program; ignored, the read fails.
    std::signal(SIGTTIN, SIG_IGN);
    connect(&m_notifier, &QSocketNotifier::activated, this, &Console::read);
}

void Console::read()
{
    char buffer[4096];
    const ssize_t count = ::read(STDIN_FILENO, buffer, sizeof buffer);
    if (count <= 0) {
        m_notifier.setEnabled(false);
        if (!m_text.isEmpty())
            Q_EMIT lineRead(QString::fromUtf8(std::exchange(m_text, {})));
        return;
    }
    m_text.append(buffer, count);
    for (qsizetype end = m_text.indexOf('\n'); end >= 0; end = m_text.indexOf('\n')) {
        const QString line = QString::fromUtf8(m_text.left(end));
        m_text.remove(0, end + 1);
        Q_EMIT lineRead(line);
    }
}
