// SPDX-License-Identifier: Apache-2.0
#include "Shell.h"

#include "Commands.h"
#include "Output.h"
#include "Session.h"

#include <zelcore/Simulator.h>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

std::unique_ptr<zeltools::LineReader> readerOf(int input, Output::Format format)
{
    if (format == Output::Format::JsonLines || !isatty(input))
        return std::make_unique<zeltools::LineReader>(input);
    QStringList names{u"help"_s, u"quit"_s};
    for (const Command& command : commands())
        names += command.name;
    return zeltools::LineReader::forPerson(input, u"zelctl"_s, names);
}

} // namespace

Shell::Shell(Session& session, Output& output, int input, QObject* parent)
    : QObject(parent)
    , m_session(session)
    , m_output(output)
    , m_lines(readerOf(input, output.format()))
{
    connect(&m_session, &Session::signalled, this, [this](const Record& record) { m_output.signal(record); });
    connect(&m_session, &Session::saved, this, [this](const QString& text) { m_output.sentence(text); });
    connect(&m_session, &Session::saveFailed, this, [this](const QString& text) { m_output.diagnostic(text); });
}

void Shell::start()
{
    m_output.ready(stateRecord(m_session));
    connect(m_lines.get(), &zeltools::LineReader::ended, this, &Shell::quit);
    connect(m_lines.get(), &zeltools::LineReader::lineRead, this, &Shell::execute);
    m_lines->start();
}

void Shell::execute(const QString& line)
{
    QString error;
    const auto words = zelcore::Simulator::splitWords(line, &error);
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
    else if (words->size() <= 2 && name == "help"_L1)
        help(words->value(1));
    else if (words->size() == 2 && words->last() == "--help"_L1 && m_output.format() == Output::Format::People)
        help(name);
    else if (words->size() == 1 && name == "watch"_L1) // what a shell does anyway
        m_output.request(name, true);
    else
        runCommand(*words);
}

void Shell::runCommand(const QStringList& words)
{
    const Command* command = findCommand(words.value(0));
    if (!command) {
        m_output.error(words.isEmpty() ? u"an empty line is no command"_s : unknownCommand(words.first()));
        return;
    }
    QString error;
    const auto arguments = Arguments::parse(command->usage, words.mid(1), &error);
    if (!arguments) {
        m_output.error(u"%1; usage: %2 %3"_s.arg(error, command->name, command->usage).trimmed());
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

void Shell::help(const QString& name)
{
    if (!name.isEmpty()) {
        const QString text = helpOn(name, {});
        if (text.isEmpty())
            m_output.error(unknownCommand(name));
        else if (m_output.format() == Output::Format::People)
            m_output.sentence(text);
        else
            m_output.answer(u"help"_s, Record().add(u"text"_s, text));
        return;
    }
    QList<Record> rows;
    const auto add = [&rows](const QString& usage, const QString& summary) {
        rows += Record().add(u"command"_s, usage.trimmed()).add(u"summary"_s, summary);
    };
    for (const Command& command : commands())
        add(command.name + u' ' + command.usage, command.summary);
    add(u"help COMMAND"_s, u"one of them, with an example"_s);
    add(u"quit"_s, u"end"_s);
    m_output.answer(u"help"_s, Record().add(u"commands"_s, QVariant::fromValue(rows)));
}

void Shell::quit()
{
    if (m_done)
        return;
    m_done = true;
    m_lines->stop();
    QMetaObject::invokeMethod(
        this, [this] { Q_EMIT finished(0); }, Qt::QueuedConnection);
}

} // namespace zelctl
