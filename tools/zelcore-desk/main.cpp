// SPDX-License-Identifier: Apache-2.0
// The control room of a simulated core service: a window over zelcore::Simulator.

#include "Desk.h"
#include "Options.h"
#include "Screenshot.h"

#include <common/QuitSignals.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QProcess>
#include <QtCore/QtPlugin>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickWindow>
#include <QtQuickControls2/QQuickStyle>

#include <csignal>
#include <cstdio>
#include <memory>

Q_IMPORT_PLUGIN(ZelCoreDeskPlugin)

using namespace Qt::StringLiterals;

namespace {

void complain(const QString& line)
{
    std::fprintf(stderr, "zelcore-desk: %s\n", line.toUtf8().constData());
}

bool prepare(zelcore::Simulator& simulator, zeldesk::Desk& desk, const zeltools::ServiceOptions& options)
{
    QString problem;
    simulator.setRoot(options.root);
    simulator.setTimelinePaused(options.isPaused);
    const bool isDone = (options.scenario.isEmpty() || desk.timeline()->open(options.scenario)) &&
                        (options.record.isEmpty() || desk.service()->record(QUrl::fromLocalFile(options.record)));
    simulator.generateContacts(options.contacts, options.seed);
    if (!isDone)
        complain(desk.service()->notices().first());
    else if (!simulator.start(&problem))
        complain(problem);
    return isDone && simulator.isRunning();
}

/// Runs an application beside the desk. It is told to end when this goes.
std::unique_ptr<QProcess> run(QStringList command, const QString& root)
{
    auto process = std::make_unique<QProcess>();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PPS_ROOT"_s, root);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->setChildProcessModifier([] { std::signal(SIGXFSZ, SIG_DFL); });
    const QString program = command.takeFirst();
    QObject::connect(process.get(), &QProcess::errorOccurred, process.get(), [program](QProcess::ProcessError error) {
        if (error == QProcess::FailedToStart)
            complain(program + u" cannot be run"_s);
    });
    process->start(program, command);
    return process;
}

void end(QProcess& process)
{
    process.terminate();
    if (!process.waitForFinished(3000))
        process.kill();
    process.waitForFinished();
}

} // namespace

int main(int argc, char* argv[])
{
    zeltools::QuitSignals::block();
    // A recording that may not grow any more ends with a sentence, and the service goes on.
    std::signal(SIGXFSZ, SIG_IGN);
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions(zeldesk::Options::all());
    if (zeltools::isAnswered(zeldesk::Options::manual(), parser, argc, argv, QStringLiteral(ZELCORE_DESK_VERSION)))
        return 0;
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"zelcore-desk"_s);
    zeldesk::Options options;
    const bool isUnderstood = parser.parse(QCoreApplication::arguments());
    const QString mistake = isUnderstood ? options.read(parser) : parser.errorText();
    if (!mistake.isEmpty()) {
        complain(mistake + u" See --help."_s);
        return 2;
    }
    if (!qEnvironmentVariableIsSet("QT_QUICK_CONTROLS_STYLE"))
        QQuickStyle::setStyle(u"Fusion"_s);

    zeltools::QuitSignals ending;
    QObject::connect(&ending, &zeltools::QuitSignals::quitRequested, &application, &QCoreApplication::quit);
    zelcore::Simulator simulator;
    QObject::connect(&simulator, &zelcore::Simulator::quitRequested, &application, &QCoreApplication::quit);
    zeldesk::Desk desk(simulator);
    if (!prepare(simulator, desk, options.service))
        return 1;

    QQmlApplicationEngine engine;
    engine.setInitialProperties({{u"desk"_s, QVariant::fromValue(&desk)},
                                 {u"dark"_s, options.isDark},
                                 {u"page"_s, options.window.page},
                                 {u"look"_s, options.look},
                                 {u"width"_s, options.window.size.width()},
                                 {u"height"_s, options.window.size.height()}});
    engine.load(u"qrc:/qml/ZelCoreDesk/Main.qml"_s);
    if (engine.rootObjects().isEmpty())
        return 1;
    auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());

    std::unique_ptr<zeldesk::Screenshot> screenshot;
    if (!options.window.screenshot.isEmpty()) {
        screenshot = std::make_unique<zeldesk::Screenshot>(*window, *desk.wire(), options.window.screenshot);
        QObject::connect(screenshot.get(), &zeldesk::Screenshot::taken, &application, [&](bool isSaved) {
            if (!isSaved)
                complain(u"%1 cannot be written"_s.arg(options.window.screenshot));
            QCoreApplication::exit(isSaved ? 0 : 1);
        });
    }
    std::unique_ptr<QProcess> beside;
    if (!options.application.isEmpty())
        beside = run(options.application, simulator.root());
    const int status = QGuiApplication::exec();
    if (beside)
        end(*beside);
    return status;
}
