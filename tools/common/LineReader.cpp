// SPDX-License-Identifier: Apache-2.0
#include <common/LineReader.h>

#ifdef ZEL_HAVE_LIBEDIT
#include <common/LineEditor.h>
#endif

#include <QtCore/QThread>

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

LineReader* readerAtTerminal = nullptr;

}

LineReader::LineReader(int input, const QString& prompt, QObject* parent)
    : QObject(parent)
    , m_input(input)
    , m_prompt(prompt.toUtf8())
    , m_notifier(QSocketNotifier::Read)
{
    connect(&m_notifier, &QSocketNotifier::activated, this, [this] { read(); });
}

std::unique_ptr<LineReader> LineReader::forPerson(int input, const QString& program, const QStringList& commands)
{
    const QString prompt = program + u"> "_s;
#ifdef ZEL_HAVE_LIBEDIT
    if (LineEditor::isPossible(input))
        return std::make_unique<LineEditor>(input, program, prompt, commands);
#else
    Q_UNUSED(commands)
#endif
    return std::make_unique<LineReader>(input, prompt);
}

void LineReader::makeRoom()
{
    if (readerAtTerminal && readerAtTerminal->thread() == QThread::currentThread())
        readerAtTerminal->hideLine();
}

void LineReader::setAtTerminal(LineReader* reader)
{
    readerAtTerminal = reader;
}

void LineReader::start()
{
    if (fcntl(m_input, F_GETFD) < 0) { // started with a closed standard input
        QMetaObject::invokeMethod(this, &LineReader::end, Qt::QueuedConnection);
        return;
    }
    m_notifier.setSocket(m_input);
    m_notifier.setEnabled(true);
    invite();
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
        take(QString::fromUtf8(m_pending.constData() + from, end - from - (isDos ? 1 : 0)));
    }
    m_pending.remove(0, from);
}

void LineReader::invite()
{
    std::fwrite(m_prompt.constData(), 1, static_cast<std::size_t>(m_prompt.size()), stdout);
    std::fflush(stdout);
}

void LineReader::take(const QString& line)
{
    Q_EMIT lineRead(line);
    if (!m_stopped)
        invite();
}

void LineReader::end()
{
    m_notifier.setEnabled(false);
    if (!m_pending.isEmpty())
        Q_EMIT lineRead(QString::fromUtf8(std::exchange(m_pending, {})));
    if (!std::exchange(m_stopped, true))
        Q_EMIT ended();
}

} // namespace zeltools
