// SPDX-License-Identifier: Apache-2.0
#include <common/WindowOptions.h>

#include <QtCore/QCommandLineParser>

#include <span>
#include <utility>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

constexpr QSize largest(16'384, 16'384);
const QString sizeName = u"size"_s;
const QString pageName = u"page"_s;
const QString screenshotName = u"screenshot"_s;

/// Invalid for what is no size.
QSize sizeIn(const QString& text)
{
    const QStringList sides = text.split(u'x');
    return sides.size() == 2 ? QSize(sides.first().toInt(), sides.last().toInt()) : QSize();
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

QList<QCommandLineOption> WindowOptions::all(const QString& usualSize, const QStringList& pages)
{
    return {QCommandLineOption(sizeName, u"the window's size"_s, u"WxH"_s, usualSize),
            QCommandLineOption(pageName, u"begin with this page"_s, pages.join(u'|')),
            QCommandLineOption(screenshotName,
                               u"save a picture of the window when all is quiet, and end; needs no screen"_s,
                               u"FILE"_s)};
}

QString WindowOptions::read(const QCommandLineParser& parser, const QStringList& pages, QSize smallest)
{
    size = sizeIn(parser.value(sizeName));
    page = parser.value(pageName);
    screenshot = parser.value(screenshotName);
    if (size != size.boundedTo(largest).expandedTo(smallest))
        return u"--size takes a width and a height from %1x%2 to %3x%4, as in 960x640."_s.arg(smallest.width())
            .arg(smallest.height())
            .arg(largest.width())
            .arg(largest.height());
    if (parser.isSet(pageName) && !pages.contains(page))
        return u"there is no page \"%1\", but there are %2."_s.arg(page, pages.join(", "_L1));
    return {};
}

bool isAnswered(const Manual& manual, QCommandLineParser& parser, int argc, char* argv[], const QString& version)
{
    QStringList words;
    for (const char* word : std::span(argv, size_t(argc)))
        words.append(QString::fromLocal8Bit(word));
    Manual::addOwnOptions(parser);
    // -platformtheme, which is Qt's, has no "h" that asks for help.
    parser.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    parser.parse(words); // what is wrong is said when Qt has taken out its own options
    if (parser.isSet(screenshotName))
        drawWithoutScreen();
    return manual.printAsked(parser, version);
}

} // namespace zeltools
