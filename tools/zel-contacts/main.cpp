// SPDX-License-Identifier: Apache-2.0
// The user's profile, contacts and profile box in a window.

#include "Screenshot.h"
#include "Simulation.h"

#include <QtCore/QCommandLineParser>
#include <QtCore/QSize>
#include <QtGui/QGuiApplication>
#include <QtGui/QStyleHints>
#include <QtQml/QQmlApplicationEngine>
#include <QtQuick/QQuickWindow>

#include <algorithm>
#include <cstdio>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

const QCommandLineOption simulateOption(u"simulate"_s, u"Start a core service in this process, with people in it."_s);
const QCommandLineOption contactsOption(u"contacts"_s, u"How many, with --simulate."_s, u"N"_s, u"24"_s);
const QCommandLineOption stateOption(u"state"_s, u"Where the registration ends, with --simulate: Expired, ..."_s,
                                     u"STATE"_s);
const QCommandLineOption pageOption(u"page"_s, u"Begin with this page: contact, profile or box."_s, u"PAGE"_s);
const QCommandLineOption colorsOption(u"colors"_s, u"light or dark, whatever the desktop has."_s, u"WHICH"_s);
const QCommandLineOption sizeOption(u"size"_s, u"The size of the window."_s, u"WxH"_s, u"960x640"_s);
const QCommandLineOption screenshotOption(u"screenshot"_s,
                                          u"Save what the window shows when all is there, and end: "
                                          "with 1 if anything was wrong."_s,
                                          u"FILE"_s);

int complain(const QString& line)
{
    std::fprintf(stderr, "zel-contacts: %s\n", line.toUtf8().constData());
    return 2;
}

/// Empty for what is no size.
QSize sizeOf(const QString& text)
{
    const QStringList sides = text.split(u'x');
    return sides.size() == 2 ? QSize(sides.at(0).toInt(), sides.at(1).toInt()) : QSize();
}

/// What cannot be meant; empty when all is well.
QString mistakeIn(const QCommandLineParser& parser)
{
    bool isNumber = false;
    if (parser.value(contactsOption).toInt(&isNumber) < 0 || !isNumber)
        return u"--contacts takes a number from 0"_s;
    if (sizeOf(parser.value(sizeOption)).isEmpty())
        return u"--size takes a width and a height: 960x640"_s;
    if (!QStringList{{}, u"light"_s, u"dark"_s}.contains(parser.value(colorsOption)))
        return u"--colors takes light or dark"_s;
    if (!QStringList{{}, u"contact"_s, u"profile"_s, u"box"_s}.contains(parser.value(pageOption)))
        return u"--page takes contact, profile or box"_s;
    if (!parser.isSet(stateOption) || zelcore::Simulator::registrationStates().contains(parser.value(stateOption)))
        return {};
    return u"--state takes one of "_s + zelcore::Simulator::registrationStates().join(", "_L1);
}

QVariantMap propertiesFor(const QCommandLineParser& parser)
{
    const QSize size = sizeOf(parser.value(sizeOption));
    return {{u"width"_s, size.width()},
            {u"height"_s, size.height()},
            {u"firstPage"_s, parser.value(pageOption)},
            {u"colors"_s, parser.value(colorsOption)}};
}

/// Unless somebody says where.
void drawWithoutScreen()
{
    for (const auto& [name, value] :
         {std::pair("QT_QPA_PLATFORM", "offscreen"), std::pair("QT_QUICK_BACKEND", "software")})
        if (!qEnvironmentVariableIsSet(name))
            qputenv(name, value);
}

} // namespace

int main(int argc, char* argv[])
{
    if (std::any_of(argv, argv + argc,
                    [](const char* word) { return QByteArrayView(word).startsWith("--screenshot"); }))
        drawWithoutScreen();
    QGuiApplication application(argc, argv);
    QGuiApplication::setApplicationName(u"zel-contacts"_s);
    QGuiApplication::setApplicationVersion(QStringLiteral(ZEL_CONTACTS_VERSION));
    QCommandLineParser parser;
    parser.setApplicationDescription(u"Your profile, your contacts and your profile box in a window. It talks to the "
                                     "core service below PPS_ROOT,\nor to one of its own."_s);
    parser.addHelpOption();
    parser.addVersionOption();
    parser.addOptions(
        {simulateOption, contactsOption, stateOption, pageOption, colorsOption, sizeOption, screenshotOption});
    parser.process(application);
    if (const QString mistake = mistakeIn(parser); !mistake.isEmpty())
        return complain(mistake + u"; see --help"_s);

    Simulation simulation;
    const bool isScreenshot = parser.isSet(screenshotOption);
    QString error;
    if (parser.isSet(simulateOption) &&
        !simulation.start({parser.value(contactsOption).toInt(), parser.value(stateOption), !isScreenshot}, &error))
        return complain(error);

    QQmlApplicationEngine engine;
    const QStringList folders = QStringLiteral(ZEL_CONTACTS_IMPORTS).split(u':');
    for (const QString& folder : folders)
        engine.addImportPath(QGuiApplication::applicationDirPath() + u'/' + folder);
    bool hasWarned = false;
    QObject::connect(&engine, &QQmlEngine::warnings, &application, [&hasWarned] { hasWarned = true; });
    engine.setInitialProperties(propertiesFor(parser));
    engine.load(QUrl(u"qrc:/ZelContacts/Main.qml"_s));
    auto* const window =
        engine.rootObjects().isEmpty() ? nullptr : qobject_cast<QQuickWindow*>(engine.rootObjects().first());
    if (!window)
        return 1;
    if (isScreenshot) {
        QGuiApplication::styleHints()->setCursorFlashTime(0); // a cursor that blinks is never at rest
        auto* const screenshot = new Screenshot(window, parser.value(screenshotOption));
        QObject::connect(screenshot, &Screenshot::taken, &application,
                         [&](bool saved) { QGuiApplication::exit(saved && !hasWarned ? 0 : 1); });
    }
    return QGuiApplication::exec();
}
