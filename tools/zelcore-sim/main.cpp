// SPDX-License-Identifier: Apache-2.0
// The core service on a desktop: serves applications until it is told to end, takes commands on standard input.

#include "Trace.h"

#include <common/LineReader.h>
#include <common/Manual.h>
#include <common/Printable.h>
#include <common/QuitSignals.h>
#include <common/ReplayLines.h>
#include <common/Root.h>
#include <common/ServiceOptions.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QRegularExpression>

#include <csignal>
#include <cstdio>
#include <optional>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

void print(const QString& line)
{
    zeltools::LineReader::makeRoom();
    std::fprintf(stdout, "%s\n", zeltools::printableLines(line).toUtf8().constData());
    std::fflush(stdout);
}

void complain(const QString& line)
{
    zeltools::LineReader::makeRoom();
    std::fprintf(stderr, "zelcore-sim: %s\n", zeltools::printableLines(line).toUtf8().constData());
}

/// What the command line asks for.
struct Options : zeltools::ServiceOptions
{
    QString remember;
    QString replay;
    zelcore::Simulator::ReplayPace pace = zelcore::Simulator::ReplayPace::AsThen;
};

const QCommandLineOption traceOption(u"trace"_s, u"show every message, both ways"_s);

const QCommandLineOption rememberOption(u"remember"_s,
                                        u"keep the UUIDs that were registered in this file, and register them at "
                                        "once the next time"_s,
                                        u"FILE"_s);
const QCommandLineOption replayOption(u"replay"_s,
                                      u"play the service's side of a recording, and tell what applications "
                                      "do otherwise than then"_s,
                                      u"FILE"_s);
const QCommandLineOption atOnceOption(u"at-once"_s, u"replay as fast as the application goes, not as then"_s);
const QCommandLineOption anonymiseOption(u"anonymise"_s,
                                         u"make the new file NEW of a recording, with names, messages, ids "
                                         "and pictures replaced, and end"_s,
                                         u"FILE"_s);

/// Nothing, with a line on standard error, for what cannot be meant.
std::optional<Options> optionsIn(const QCommandLineParser& parser)
{
    Options options;
    QString problem = options.read(parser);
    options.remember = parser.value(rememberOption);
    options.replay = parser.value(replayOption);
    if (parser.isSet(atOnceOption))
        options.pace = zelcore::Simulator::ReplayPace::AtOnce;
    if (!options.replay.isEmpty() && (!options.scenario.isEmpty() || options.contacts > 0))
        problem = u"a replay has no scenario and no contacts: what it plays is all in the recording."_s;
    if (options.replay.isEmpty() && parser.isSet(atOnceOption))
        problem = u"--at-once says how a recording is played: name one with --replay."_s;
    if (problem.isEmpty())
        problem = Options::emptyAmong({rememberOption, replayOption}, parser);
    if (problem.isEmpty())
        return options;
    complain(problem);
    return std::nullopt;
}

/// As what an application asks to be registered, and how.
QString askedFor(const QByteArray& json)
{
    const QJsonObject request = QJsonDocument::fromJson(json).object().value("registrationRequest"_L1).toObject();
    return request.value("uuid"_L1).toString() + (request.value("silent"_L1).toBool() ? u", silently"_s : QString());
}

void show(zelcore::Simulator& simulator, bool trace)
{
    using zelcore::Simulator;
    QObject::connect(&simulator, &Simulator::invocationReceived, &simulator,
                     [](const QString& target, const QString& action, const QString& mimeType, const QByteArray& data) {
                         print(u"invocation %1 %2 %3 %4"_s.arg(target, action, mimeType, QString::fromUtf8(data)));
                     });
    QObject::connect(&simulator, &Simulator::commandExecuted, &simulator,
                     [](const QString& command, const QString&) { print(u"scenario: "_s + command); });
    QObject::connect(&simulator, &Simulator::clientConnected, &simulator,
                     [](int client) { print(u"application %1 comes"_s.arg(client)); });
    QObject::connect(&simulator, &Simulator::clientDisconnected, &simulator,
                     [](int client) { print(u"application %1 goes"_s.arg(client)); });
    // Told when it comes, before the states that answer it.
    QObject::connect(&simulator, &Simulator::messageReceived, &simulator,
                     [](int client, const QString& type, const QByteArray& json) {
                         if (type == "registrationRequest"_L1)
                             print(u"application %1 asks to be registered as %2"_s.arg(client).arg(askedFor(json)));
                     });
    QObject::connect(&simulator, &Simulator::registrationStateChanged, &simulator,
                     [](const QString& state) { print(u"registration: "_s + state); });
    zeltools::tellOfReplay(simulator, &simulator, [](const QString& line, bool) { print(line); });
    if (trace)
        QObject::connect(&simulator, &Simulator::recordPassed, &simulator, [](const zelcore::WireRecord& record) {
            if (record.target.isEmpty())
                print(traceLine(record));
        });
}

/// With what the process ends.
int anonymise(const QString& from, const QStringList& names)
{
    QString problem;
    if (names.size() != 1)
        problem = u"--anonymise takes a recording and the name of the file to make of it"_s;
    else
        zelcore::Simulator::anonymise(from, names.first(), &problem);
    if (!problem.isEmpty())
        complain(problem);
    return problem.isEmpty() ? 0 : names.size() == 1 ? 1 : 2;
}

bool prepare(zelcore::Simulator& simulator, const Options& options)
{
    QString error;
    // Remembered behind the scenario, which may begin with a state that has it forget.
    const bool isDone = options.makeWorld(simulator, &error) &&
                        (options.remember.isEmpty() || simulator.rememberRegistrations(options.remember, &error)) &&
                        (options.replay.isEmpty() || simulator.replay(options.replay, &error, options.pace)) &&
                        options.serve(simulator, &error);
    if (!error.isEmpty())
        complain(error);
    return isDone;
}

/// The commands as the simulator describes them: what is typed, and what it does behind that or on the next line. What
/// follows them goes to \a rest.
QList<zeltools::Manual::Entry> describedCommands(QString* rest)
{
    static const QRegularExpression row(u"^  (\\S.*?)(?:   *(\\S.*))?$"_s);
    QList<zeltools::Manual::Entry> entries;
    const QStringList lines = zelcore::Simulator::commandHelp().split(u'\n');
    for (const QString& line : lines) {
        const QRegularExpressionMatch command = row.match(line);
        if (command.hasMatch())
            entries.append({command.captured(1), command.captured(2)});
        else if (line.startsWith(u' ') && !entries.isEmpty())
            entries.last().text = line.trimmed();
        else
            *rest += line + u' ';
    }
    return entries;
}

zeltools::Manual manualOf(const QList<QCommandLineOption>& options)
{
    zeltools::Manual manual{
        .program = u"zelcore-sim"_s,
        .synopsis = u"[OPTION ...]\n--replay FILE [--at-once] [OPTION ...]\n--anonymise FILE NEW"_s,
        .purpose = u"a core service of the messaging service, for the desktop"_s,
        .more =
            u"It serves applications that run with PPS_ROOT set to its folder, and takes commands on standard input: "
            "\"help\" lists them. Scenarios: %1."_s.arg(zelcore::Simulator::scenarioNames().join(", "_L1)),
        .options = zeltools::Manual::entriesOf(options) + zeltools::Manual::ownOptions(),
        .statuses = {{u"0"_s, u"it was told to end"_s},
                     {u"1"_s, u"it cannot serve, or a file cannot be read or written"_s},
                     {u"2"_s, u"wrong use"_s}},
        .environment = {{u"XDG_STATE_HOME"_s, u"where the lines are kept that are typed, ~/.local/state without it"_s}},
        .files = {
            {u"$XDG_STATE_HOME/zelplatform/zelcore-sim-history"_s, u"the lines that it was told at a terminal"_s}}};
    zeltools::ServiceOptions::describe(manual);
    manual.lines = describedCommands(&manual.aboutLines);
    return manual;
}

} // namespace

int main(int argc, char* argv[])
{
    zeltools::QuitSignals::block();
    // In the background of a terminal a read is answered by a signal that stops the program; ignored, the read fails.
    std::signal(SIGTTIN, SIG_IGN);
    // A recording that may not grow any more ends with a sentence, and the service goes on.
    std::signal(SIGXFSZ, SIG_IGN);
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(u"zelcore-sim"_s);
    const auto options =
        zeltools::ServiceOptions::all() +
        QList<QCommandLineOption>{traceOption, rememberOption, replayOption, atOnceOption, anonymiseOption};
    QCommandLineParser parser;
    parser.addOptions(options);
    zeltools::Manual::addOwnOptions(parser);
    const bool understood = parser.parse(QCoreApplication::arguments());
    if (!understood) {
        complain(parser.errorText() + u" See --help."_s);
        return 2;
    }
    if (manualOf(options).printAsked(parser, QStringLiteral(ZELCORE_SIM_VERSION)))
        return 0;
    if (parser.isSet(anonymiseOption))
        return anonymise(parser.value(anonymiseOption), parser.positionalArguments());
    if (!parser.positionalArguments().isEmpty()) {
        complain(u"\"%1\" is no option; see --help"_s.arg(parser.positionalArguments().first()));
        return 2;
    }
    const std::optional<Options> wanted = optionsIn(parser);
    if (!wanted)
        return 2;

    zeltools::QuitSignals ending;
    QObject::connect(&ending, &zeltools::QuitSignals::quitRequested, &application, &QCoreApplication::quit);
    zelcore::Simulator simulator;
    QObject::connect(&simulator, &zelcore::Simulator::quitRequested, &application, &QCoreApplication::quit);
    show(simulator, parser.isSet(traceOption));
    if (!prepare(simulator, *wanted))
        return 1;
    print(zeltools::exportLine(simulator.root()));

    using zeltools::LineReader;
    const bool isPerson = ::isatty(STDIN_FILENO) && ::isatty(STDOUT_FILENO);
    if (isPerson)
        print(u"Say that line in the shell of an application, or try: zelctl contacts\n"
              "\"help\" lists what can be said here, \"quit\" ends."_s);
    const auto lines = isPerson
                           ? LineReader::forPerson(STDIN_FILENO, u"zelcore-sim"_s, zelcore::Simulator::commandNames())
                           : std::make_unique<LineReader>(STDIN_FILENO);
    QObject::connect(&simulator, &zelcore::Simulator::quitRequested, lines.get(), &LineReader::stop);
    QObject::connect(lines.get(), &LineReader::lineRead, &simulator, [&](const QString& line) {
        QString reply;
        const bool done = simulator.execute(line, &reply);
        if (!done)
            complain(reply);
        else if (!reply.isEmpty())
            print(reply);
    });
    // The end of the input is only that: the program may well be meant to go on in the background.
    lines->start();
    return QCoreApplication::exec();
}
