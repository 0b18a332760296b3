// SPDX-License-Identifier: Apache-2.0
#include "Shell.h"

#include "Commands.h"
#include "Output.h"
#include "Requests.h"
#include "Session.h"
#include "Words.h"

#include <QtCore/QSocketNotifier>

#include <cerrno>
#include <cstdio>
#include <fcntl.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zelctl {

Shell::Shell(Session& session, Output& output, int input, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_output(output)
    , m_input(input)
    , m_prompts(output.format() == Output::Format::People && isatty(input))
{
    connect(&m_session, &Session::signalled, this, [this](const Record& record) { m_output.signal(record); });
    connect(&m_session, &Session::saveFailed, this, [this](const QString& text) { m_output.diagnostic(text); });
}

Shell::~Shell() = default;

void Shell::start()
{
    m_output.ready(stateRecord(m_session));
    if (fcntl(m_input, F_GETFD) < 0) { // started with a closed standard input
        QMetaObject::invokeMethod(this, &Shell::quit, Qt::QueuedConnection);
        return;
    }
    m_notifier = std::make_unique<QSocketNotifier>(m_input, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &Shell::readInput);
    prompt();
}

void Shell::readInput()
{
    char buffer[65536];
    const ssize_t count = read(m_input, buffer, sizeof buffer);
    if (count < 0 && (errno == EINTR || errno == EAGAIN))
        return;
    if (count > 0) {
        m_pending.append(buffer, count);
        takeLines();
        return;
    }
    if (!m_pending.isEmpty())
        execute(QString::fromUtf8(std::exchange(m_pending, {})));
    quit();
}

void Shell::takeLines()
{
    qsizetype from = 0;
    for (qsizetype end; !m_done && (end = m_pending.indexOf('\n', from)) >= 0; from = end + 1) {
        qsizetype length = end - from;
        if (length > 0 && m_pending.at(end - 1) == '\r')
            --length;
        execute(QString::fromUtf8(m_pending.constData() + from, length));
    }
    m_pending.remove(0, from);
    prompt();
}

void Shell::execute(const QString& line)
{
    QString error;
    const auto words = splitWords(line, &error);
    if (!words) {
        m_output.error(error);
        return;
    }
    // A program that sends an empty line waits for its answer; a person just pressed return.
    if (words->isEmpty() && m_output.format() == Output::Format::People)
        return;
    const QString name = words->value(0);
    if (words->size() == 1 && name == "quit"_L1)
        quit();
    else if (words->size() == 1 && name == "help"_L1)
        help();
    else if (words->size() == 1 && name == "watch"_L1) // what a shell does anyway
        m_output.request("watch"_L1, true);
    else
        runCommand(*words);
}

void Shell::runCommand(const QStringList& words)
{
    const Command* command = findCommand(words.value(0));
    if (!command) {
        m_output.error(words.isEmpty() ? u"an empty line is no command"_s
                                       : u"there is no command '%1'"_s.arg(words.first()));
        return;
    }
    QString error;
    const auto arguments = Arguments::parse(command->signature, words.mid(1), &error);
    if (!arguments) {
        const QString usage = usageOf(command->signature);
        m_output.error(u"%1; usage: %2%3"_s.arg(error, command->name, usage.isEmpty() ? usage : u' ' + usage));
        return;
    }
    const Answer answer = command->run(m_session, *arguments);
    if (!answer.failure.isEmpty())
        m_output.error(answer.failure);
    else if (answer.ok)
        m_output.request(command->name, *answer.ok);
    else
        m_output.answer(command->name, answer.record);
}

void Shell::help()
{
    QList<Record> rows;
    for (const Command& command : commands()) {
        const QString usage = usageOf(command.signature);
        rows += Record()
                    .text("command"_L1, usage.isEmpty() ? QString(command.name) : command.name + u' ' + usage)
                    .text("summary"_L1, command.summary);
    }
    rows += Record().text("command"_L1, u"quit"_s).text("summary"_L1, u"end"_s);
    m_output.answer("help"_L1, Record().list("commands"_L1, rows));
}

void Shell::prompt()
{
    if (!m_prompts || m_done)
        return;
    std::fputs("zelctl> ", stdout);
    std::fflush(stdout);
}

void Shell::quit()
{
    if (m_done)
        return;
    m_done = true;
    if (m_notifier)
        m_notifier->setEnabled(false);
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT finished(0); }, Qt::QueuedConnection);
}

} // namespace zelctl
