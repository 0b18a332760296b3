// SPDX-License-Identifier: Apache-2.0
// The user's profile, contacts and profile box in a window.

#include "Options.h"
#include "Simulation.h"

#include <common/ReturnClicks.h>
#include <common/Screenshot.h>

#include <QtCore/QCommandLineParser>
#include <QtGui/QGuiApplication>
#include <QtGui/QStyleHints>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickWindow>

#include <chrono>
#include <cstdio>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

int complain(const QString& line)
{
    std::fprintf(stderr, "zel-contacts: %s\n", line.toUtf8().constData());
    return 2;
}

QVariantMap propertiesFor(const Options& options)
{
    return {{u"width"_s, options.window.size.width()},
            {u"height"_s, options.window.size.height()},
            {u"firstPage"_s, options.window.page},
            {u"colors"_s, options.colors}};
}

} // namespace

int main(int argc, char* argv[])
{
    QCommandLineParser parser;
    parser.addOptions(Options::all());
    if (zeltools::isAnswered(Options::manual(), parser, argc, argv, QStringLiteral(ZEL_CONTACTS_VERSION)))
        return 0;
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"zel-contacts"_s);
    Options options;
    const bool isUnderstood = parser.parse(QGuiApplication::arguments());
    const QString mistake = isUnderstood ? options.read(parser) : parser.errorText();
    if (!mistake.isEmpty())
        return complain(mistake + u" See --help."_s);

    zelcore::Simulator service;
    Simulation simulation(service);
    QString error;
    if (options.isSimulated && !simulation.start(options.world, &error))
        return complain(error);

    QQmlApplicationEngine engine;
    const QStringList folders = QStringLiteral(ZEL_CONTACTS_IMPORTS).split(u':');
    for (const QString& folder : folders)
        engine.addImportPath(QGuiApplication::applicationDirPath() + u'/' + folder);
    bool hasWarned = false;
    QObject::connect(&engine, &QQmlEngine::warnings, &application, [&hasWarned] { hasWarned = true; });
    engine.setInitialProperties(propertiesFor(options));
    engine.load(QUrl(u"qrc:/ZelContacts/Main.qml"_s));
    auto* const window = qobject_cast<QQuickWindow*>(engine.rootObjects().value(0));
    if (!window)
        return 1;
    const zeltools::ReturnClicks returnClicks(*window);
    if (!options.window.screenshot.isEmpty()) {
        QGuiApplication::styleHints()->setCursorFlashTime(0); // a cursor that blinks is never at rest
        auto* const screenshot = new zeltools::Screenshot(*window, options.window.screenshot, 400ms, window);
        screenshot->giveUpAfter(20s);
        QObject::connect(window, &QQuickWindow::afterRendering, screenshot, &zeltools::Screenshot::stir,
                         Qt::QueuedConnection);
        QObject::connect(screenshot, &zeltools::Screenshot::taken, &application, [&](const QString& problem) {
            if (!problem.isEmpty())
                complain(problem);
            QGuiApplication::exit(problem.isEmpty() && !hasWarned ? 0 : 1);
        });
    }
    return QGuiApplication::exec();
}
