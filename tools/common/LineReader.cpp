// SPDX-License-Identifier: Apache-2.0
#include <common/LineReader.h>

#include <cerrno>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

namespace zeltools {

LineReader::LineReader(int input, QObject* parent)
    : QObject(parent)
    , m_input(input)
    , m_notifier(QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, &LineReader::read);
}

void LineReader::start()
{
    if (fcntl(m_input, F_GETFD) < 0) { // started with a closed standard input
        QMetaObject::invokeMethod(this, &LineReader::end, Qt::QueuedConnection);
        return;
    }
    m_notifier.setSocket(m_input);
    m_notifier.setEnabled(true);
}

void LineReader::stop()
{
    m_stopped = true;
    m_notifier.setEnabled(false);
}

void LineReader::read()
{
    char buffer[65536];
    const ssize_t count = ::read(m_input, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count <= 0) {
        end();
        return;
    }
    m_pending.append(buffer, count);
    qsizetype from = 0;
    for (qsizetype end; !m_stopped && (end = m_pending.indexOf('\n', from)) >= 0; from = end + 1) {
        const bool isDos = end > from && m_pending.at(end - 1) == '\r';
        Q_EMIT lineRead(QString::fromUtf8(m_pending.constData() + from, end - from - (isDos ? 1 : 0)));
    }
    m_pending.remove(0, from);
}

void LineReader::end()
{
    m_notifier.setEnabled(false);
    if (!m_pending.isEmpty())
        Q_EMIT lineRead(QString::fromUtf8(std::exchange(m_pending, {})));
    if (!m_stopped)
        Q_EMIT ended();
}

} // namespace zeltools
