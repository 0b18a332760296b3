// SPDX-License-Identifier: Apache-2.0
#include "Advice.h"
#include "CommandLine.h"
#include "Commands.h"
#include "OneShot.h"
#include "Output.h"
#include "Session.h"
#include "Shell.h"
#include "Watch.h"

#include <common/LineReader.h>
#include <common/Manual.h>
#include <common/QuitSignals.h>

#include <zelcore/Simulator.h>

#ifdef ZELCTL_HAS_DESKTOP_LOG
#include <slog/terminal.h>
#endif

#include <QtCore/QCoreApplication>
#include <QtCore/QLoggingCategory>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace zelctl {

namespace {

constexpr int wrongUse = 2;

zeltools::Manual manual()
{
    using Entry = zeltools::Manual::Entry;
    zeltools::Manual manual{
        .program = u"zelctl"_s,
        .synopsis = u"[OPTION ...] COMMAND ..."_s,
        .purpose = u"an application of the messaging service, on the command line"_s,
        .more = u"What needs it registers the application first. Scenarios: %1."_s.arg(
            zelcore::Simulator::scenarioNames().join(", "_L1)),
        .options = {{u"--json"_s, u"JSON Lines on standard output, and nothing else there"_s},
                    {u"--all"_s, u"tables with everything, ids and versions, too"_s},
                    {u"--uuid UUID"_s, u"what the application calls itself (default %1)"_s.arg(
                                           CommandLine::defaultUuid().toString(QUuid::WithoutBraces))},
                    {u"--timeout S"_s, u"how many seconds a command may take (default 10)"_s},
                    {u"--simulate[=SCENARIO]"_s,
                     u"with a core service of its own, empty or with a scenario: a name or a file"_s}},
        .values = {{u"--simulate"_s, zelcore::Simulator::scenarioNames()}},
        .ending = u"'zelctl help COMMAND' shows one with an example."_s,
        .statuses = {{u"0"_s, u"done"_s}, {u"1"_s, u"the request failed or timed out"_s}, {u"2"_s, u"wrong use"_s}},
        .environment =
            zeltools::Manual::libraryEnvironment() +
            QList<Entry>{{u"NO_COLOR"_s, u"whatever it says, nothing is coloured"_s},
                         {u"TERM"_s, u"\"dumb\": nothing is coloured, and lines are not edited"_s},
                         {u"XDG_STATE_HOME"_s, u"where the shell keeps its lines, ~/.local/state without it"_s}},
        .files = {
            {u"$PPS_ROOT/services/zelcore/platform"_s, u"the core service"_s},
            {u"$XDG_STATE_HOME/zelplatform/zelctl-history"_s, u"the lines that the shell was told at a terminal"_s}}};
    manual.options += zeltools::Manual::ownOptions();
    for (const Command& command : commands())
        manual.commands += Entry{(command.name + u' ' + command.usage).trimmed(), command.summary};
    manual.commands += {
        Entry{u"watch"_s, u"register if allowed, and print every signal until interrupted"_s},
        Entry{u"shell"_s, u"take commands from standard input, a line each; 'help' lists them"_s},
    };
    return manual;
}

int complain(const QString& sentence, int exitStatus = wrongUse)
{
    Output(Output::Format::People).diagnostic(sentence);
    return exitStatus;
}

/// One run of the program, once its command line is known to be right.
class Run
{
public:
    Run(const CommandLine& line, const Command* command, const Arguments& arguments)
        : m_line(line)
        , m_command(command)
        , m_arguments(arguments)
        , m_output(line.json ? Output::Format::JsonLines : Output::Format::People)
    {
    }

    int execute()
    {
        if (m_line.simulate && !startSimulator())
            return 1;
        if (m_line.all)
            m_output.showAll();
        // That there is no service is said once, by us; the library's own line is for applications that say nothing.
        QLoggingCategory::setFilterRules(u"zel.platform.warning=false"_s);
        m_session = std::make_unique<Session>(m_line.uuid);
        QLoggingCategory::setFilterRules({});
        if (m_command)
            return executeOneShot();
        return m_line.words.first() == "watch"_L1 ? executeWatch() : executeShell();
    }

private:
    bool startSimulator()
    {
        m_simulator = std::make_unique<zelcore::Simulator>();
        QString error;
        const bool loaded = m_line.scenario.isEmpty() || m_simulator->loadScenario(m_line.scenario, &error);
        if (!loaded || !m_simulator->start(&error) || !m_simulator->exportRoot()) {
            m_output.diagnostic(u"The simulator cannot start: %1"_s.arg(error));
            return false;
        }
        QObject::connect(m_simulator.get(), &zelcore::Simulator::invocationReceived, m_simulator.get(),
                         [this](const QString& target, const QString& action, const QString&, const QByteArray& data) {
                             m_output.diagnostic(
                                 u"%1 was asked for %2: %3"_s.arg(target, action, QString::fromUtf8(data)));
                         });
        return true;
    }

    int executeOneShot()
    {
        OneShot run(*m_session, m_output, *m_command, m_arguments, m_line.timeout);
        if (m_simulator) {
            run.waitForDelivery();
            QLoggingCategory::setFilterRules(u"zelcore.warning=false"_s); // what concerns the command is said by it
            QObject::connect(m_simulator.get(), &zelcore::Simulator::refused, &run, [&run](const QString& line) {
                // A record that is not there is left out of a list; nobody asked for that one.
                if (line.startsWith("application "_L1) && !line.contains("requestListElements"_L1))
                    run.refuse(line.section(": "_L1, 2));
            });
            QObject::connect(m_simulator.get(), &zelcore::Simulator::invocationReceived, &run, &OneShot::delivered);
        }
        QObject::connect(&m_quit, &zeltools::QuitSignals::quitRequested, &run, &OneShot::interrupt);
        return loop(run);
    }

    int executeWatch()
    {
        Watch run(*m_session, m_output, m_line.timeout);
        QObject::connect(&m_quit, &zeltools::QuitSignals::quitRequested, &run, &Watch::quit);
        return loop(run);
    }

    int executeShell()
    {
        if (!m_session->hasService())
            m_output.diagnostic(whyNoService());
        Shell run(*m_session, m_output, STDIN_FILENO);
#ifdef ZELCTL_HAS_DESKTOP_LOG
        slog_before_line(&zeltools::LineReader::makeRoom);
#endif
        QObject::connect(&m_quit, &zeltools::QuitSignals::quitRequested, &run, &Shell::quit);
        return loop(run);
    }

    template <typename Runner>
    static int loop(Runner& run)
    {
        QObject::connect(&run, &Runner::finished, qApp, &QCoreApplication::exit);
        // From the loop, so that an end that comes at once finds a loop to end.
        QMetaObject::invokeMethod(&run, &Runner::start, Qt::QueuedConnection);
        return QCoreApplication::exec();
    }

    const CommandLine& m_line;
    const Command* const m_command;
    const Arguments& m_arguments;
    Output m_output;
    zeltools::QuitSignals m_quit;
    std::unique_ptr<zelcore::Simulator> m_simulator; // outlives the session, which is its client
    std::unique_ptr<Session> m_session;
};

int main(const QStringList& words)
{
    QString error;
    const auto line = CommandLine::parse(words, &error);
    if (!line)
        return complain(error + u"; zelctl --help shows what there is"_s);
    const QStringList& typed = line->words;
    const QString name = typed.value(0);
    QString about = line->about;
    if (typed == QStringList{u"help"_s})
        about = u"--help"_s;
    else if (typed.size() == 2 && typed.last() == "--version"_L1)
        about = typed.last();
    if (manual().print(about, QStringLiteral(ZELCTL_VERSION)))
        return 0;
    if (typed.isEmpty())
        return complain(u"no command; zelctl --help shows what there is"_s);
    const bool asksForHelp = typed.size() == 2 && (name == "help"_L1 || typed.last() == "--help"_L1);
    const QString described = asksForHelp && name == "help"_L1 ? typed.last() : name;
    const Command* command = findCommand(described);
    if (!command && described != "watch"_L1 && described != "shell"_L1)
        return complain(unknownCommand(described) + u"; zelctl --help shows what there is"_s);
    if (asksForHelp) {
        Output(Output::Format::People).sentence(u"Usage: "_s + helpOn(described, u"zelctl "_s));
        return 0;
    }
    const QString usage = command ? command->usage : QString();
    const auto arguments = Arguments::parse(usage, typed.mid(1), &error);
    if (!arguments) {
        const auto option = std::find_if(typed.cbegin(), typed.cend(), &CommandLine::isOption);
        if (option != typed.cend())
            error = u"%1 goes before the command"_s.arg(*option);
        return complain(u"%1; usage: zelctl %2 %3"_s.arg(error, name, usage).trimmed());
    }
    return Run(*line, command, *arguments).execute();
}

} // namespace

} // namespace zelctl

int main(int argc, char** argv)
{
    zeltools::QuitSignals::block();
    const QCoreApplication application(argc, argv);
    return zelctl::main(QCoreApplication::arguments().mid(1));
}
