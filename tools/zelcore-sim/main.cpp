// SPDX-License-Identifier: Apache-2.0
// The core service on a desktop: serves applications until it is told to end, takes commands on standard input.

#include "Console.h"
#include "Signals.h"
#include "Trace.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QCoreApplication>
#include <QtCore/QDir>

#include <algorithm>
#include <cstdio>

#include <unistd.h>

namespace {

void print(const QString& line)
{
    std::fprintf(stdout, "%s\n", line.toUtf8().constData());
    std::fflush(stdout);
}

void complain(const QString& line)
{
    std::fprintf(stderr, "zelcore-sim: %s\n", line.toUtf8().constData());
}

/// A folder of this user's, the same one each time.
QString usualRoot()
{
    const QString runtime = qEnvironmentVariable("XDG_RUNTIME_DIR");
    return runtime.isEmpty() ? QDir::tempPath() + QStringLiteral("/zelplatform-%1").arg(::getuid())
                             : runtime + QStringLiteral("/zelplatform");
}

/// A word as a shell takes it.
QString quoted(QString word)
{
    static const QString plain = QStringLiteral("/._-+,:=@");
    const bool needsNone = std::all_of(word.cbegin(), word.cend(), [](QChar c) {
        return (c.unicode() < 0x80 && c.isLetterOrNumber()) || plain.contains(c);
    });
    return needsNone ? word
                     : QLatin1Char('\'') + word.replace(QLatin1Char('\''), QLatin1String("'\\''")) + QLatin1Char('\'');
}

/// What the command line asks for.
struct Options
{
    QString root;
    QString scenario;
    int contacts = 0;
    quint32 seed = 1;
    bool trace = false;
};

const QCommandLineOption rootOption(QStringLiteral("root"), QStringLiteral("Serve below this folder."),
                                    QStringLiteral("DIR"));
const QCommandLineOption scenarioOption(QStringLiteral("scenario"),
                                        QStringLiteral("Begin with this scenario: a file, or the name of one that "
                                                       "ships with the simulator."),
                                        QStringLiteral("FILE"));
const QCommandLineOption contactsOption(QStringLiteral("contacts"), QStringLiteral("Add so many made-up contacts."),
                                        QStringLiteral("N"));
const QCommandLineOption seedOption(QStringLiteral("seed"), QStringLiteral("Make them up from this number."),
                                    QStringLiteral("S"), QStringLiteral("1"));
const QCommandLineOption traceOption(QStringLiteral("trace"), QStringLiteral("Show every message, both ways."));

/// False, with a line on standard error, for numbers that are none.
bool readOptions(const QCommandLineParser& parser, Options* options)
{
    bool contactsOk = true;
    bool seedOk = true;
    options->root = parser.isSet(rootOption) ? parser.value(rootOption) : usualRoot();
    options->scenario = parser.value(scenarioOption);
    if (parser.isSet(contactsOption))
        options->contacts = parser.value(contactsOption).toInt(&contactsOk);
    options->seed = parser.value(seedOption).toUInt(&seedOk);
    options->trace = parser.isSet(traceOption);
    if (!contactsOk || options->contacts < 0 || !seedOk)
        complain(QStringLiteral("--contacts and --seed take numbers from 0"));
    return contactsOk && options->contacts >= 0 && seedOk;
}

void show(zelcore::Simulator& simulator, bool trace)
{
    using zelcore::Simulator;
    QObject::connect(
        &simulator, &Simulator::invocationReceived, &simulator,
        [](const QString& target, const QString& action, const QString& mimeType, const QByteArray& data) {
            print(QStringLiteral("invocation %1 %2 %3 %4").arg(target, action, mimeType, QString::fromUtf8(data)));
        });
    QObject::connect(&simulator, &Simulator::commandExecuted, &simulator,
                     [](const QString& command, const QString&) { print(QStringLiteral("scenario: ") + command); });
    if (!trace)
        return;
    QObject::connect(
        &simulator, &Simulator::messageReceived, &simulator,
        [](int client, const QString& type, const QByteArray& json) { print(traceLine(true, client, type, json)); });
    QObject::connect(
        &simulator, &Simulator::messageSent, &simulator,
        [](int client, const QString& type, const QByteArray& json) { print(traceLine(false, client, type, json)); });
}

bool prepare(zelcore::Simulator& simulator, const Options& options)
{
    QString error;
    simulator.setRoot(options.root);
    if (!options.scenario.isEmpty() && !simulator.loadScenario(options.scenario, &error)) {
        complain(error);
        return false;
    }
    simulator.generateContacts(options.contacts, options.seed);
    if (!simulator.start(&error)) {
        complain(error);
        return false;
    }
    return true;
}

} // namespace

int main(int argc, char* argv[])
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("zelcore-sim"));
    QCommandLineParser parser;
    parser.setApplicationDescription(
        QStringLiteral("A core service for the desktop. It serves applications that run with PPS_ROOT set to its "
                       "folder,\nand takes commands on standard input (\"help\" lists them).\nScenarios: %1.")
            .arg(zelcore::Simulator::scenarioNames().join(QLatin1String(", "))));
    const QCommandLineOption help = parser.addHelpOption();
    parser.addOptions({rootOption, scenarioOption, contactsOption, seedOption, traceOption});
    const bool understood = parser.parse(QCoreApplication::arguments());
    Options options;
    if (!understood) {
        complain(parser.errorText() + QStringLiteral(" See --help."));
        return 2;
    }
    if (parser.isSet(help))
        parser.showHelp();
    if (!parser.positionalArguments().isEmpty()) {
        complain(QStringLiteral("\"%1\" is no option; see --help").arg(parser.positionalArguments().first()));
        return 2;
    }
    if (!readOptions(parser, &options))
        return 2;

    Signals ending;
    QObject::connect(&ending, &Signals::terminated, &application, &QCoreApplication::quit);
    zelcore::Simulator simulator;
    QObject::connect(&simulator, &zelcore::Simulator::quitRequested, &application, &QCoreApplication::quit);
    show(simulator, options.trace);
    if (!prepare(simulator, options))
        return 1;
    print(QStringLiteral("export PPS_ROOT=") + quoted(simulator.root()));

    Console console;
    QObject::connect(&console, &Console::lineRead, &simulator, [&simulator](const QString& line) {
        QString reply;
        const bool done = simulator.execute(line, &reply);
        if (!done)
            complain(reply);
        else if (!reply.isEmpty())
            print(reply);
    });
    return QCoreApplication::exec();
}
