// SPDX-License-Identifier: Apache-2.0
// The control room of a simulated core service: a window over zelcore::Simulator.

#include "Desk.h"
#include "Options.h"

#include <common/QuitSignals.h>
#include <common/ReturnClicks.h>
#include <common/Screenshot.h>

#include <QtCore/QCommandLineParser>
#include <QtCore/QProcess>
#include <QtCore/QtPlugin>
#include <QtGui/QGuiApplication>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickWindow>
#include <QtQuickControls2/QQuickStyle>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <memory>

Q_IMPORT_PLUGIN(ZelCoreDeskPlugin)

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

/// Of nothing, nothing is said.
void complain(const QString& line)
{
    if (!line.isEmpty())
        std::fprintf(stderr, "zelcore-desk: %s\n", line.toUtf8().constData());
}

/// Runs an application beside the desk, which ends with 1 without one that \a isNeeded.
std::unique_ptr<QProcess> run(QStringList command, const QString& root, bool isNeeded)
{
    auto process = std::make_unique<QProcess>();
    auto environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"PPS_ROOT"_s, root);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(QProcess::ForwardedChannels);
    process->setChildProcessModifier([] {
        std::signal(SIGXFSZ, SIG_DFL);
        zeltools::QuitSignals::unblock();
    });
    const QString program = command.takeFirst();
    QObject::connect(process.get(), &QProcess::errorOccurred, process.get(), [=](QProcess::ProcessError error) {
        if (error != QProcess::FailedToStart)
            return;
        complain(program + u" cannot be run"_s);
        if (isNeeded) // from the loop, which may not have begun
            QMetaObject::invokeMethod(
                qApp, [] { QCoreApplication::exit(1); }, Qt::QueuedConnection);
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
    QString trouble;
    const bool isServing = desk.begin(options.service, &trouble);
    complain(trouble);
    if (!isServing)
        return 1;

    QQmlApplicationEngine engine;
    engine.setInitialProperties({{u"desk"_s, QVariant::fromValue(&desk)},
                                 {u"dark"_s, options.isDark},
                                 {u"page"_s, options.window.page},
                                 {u"look"_s, options.look},
                                 {u"width"_s, options.window.size.width()},
                                 {u"height"_s, options.window.size.height()}});
    engine.load(u"qrc:/qml/ZelCoreDesk/Main.qml"_s);
    auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    const zeltools::ReturnClicks returnClicks(*window);

    std::unique_ptr<zeltools::Screenshot> screenshot;
    if (!options.window.screenshot.isEmpty()) {
        screenshot = std::make_unique<zeltools::Screenshot>(*window, options.window.screenshot, 2s);
        QObject::connect(desk.wire(), &zeldesk::WireModel::countsChanged, screenshot.get(),
                         &zeltools::Screenshot::stir);
        QObject::connect(screenshot.get(), &zeltools::Screenshot::taken, &application, [window](QString problem) {
            const QString awaited = window->property("awaited").toString();
            if (problem.isEmpty() && !awaited.isEmpty())
                problem = u"no record of the type \"%1\" has passed"_s.arg(awaited);
            complain(problem);
            QCoreApplication::exit(problem.isEmpty() ? 0 : 1);
        });
    }
    std::unique_ptr<QProcess> beside;
    if (!options.application.isEmpty())
        beside = run(options.application, simulator.root(), screenshot != nullptr);
    const int status = QGuiApplication::exec();
    if (beside)
        end(*beside);
    return status;
}
