// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <common/Manual.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

constexpr int smallestSide = 320;

const QCommandLineOption darkOption(u"dark"_s, u"light on dark, whatever the desktop has"_s);
const QCommandLineOption sizeOption(u"size"_s, u"the window's size"_s, u"WxH"_s, u"1180x760"_s);
const QCommandLineOption pageOption(u"page"_s, u"begin with contacts, user, box, service or wire"_s, u"PAGE"_s);
const QCommandLineOption lookOption(u"look"_s, u"begin with the first record of this type in full"_s, u"TYPE"_s);
const QCommandLineOption screenshotOption(u"screenshot"_s, u"save a picture of the window when all is quiet, and end"_s,
                                          u"FILE"_s);

QSize sizeIn(const QString& word)
{
    const QStringList sides = word.split(u'x');
    return sides.size() == 2 ? QSize(sides.first().toInt(), sides.last().toInt()) : QSize();
}

zeltools::Manual manualOf(const QList<QCommandLineOption>& options)
{
    zeltools::Manual manual{
        .program = u"zelcore-desk"_s,
        .synopsis = u"[OPTION ...] [-- APPLICATION ...]"_s,
        .purpose = u"the control room of a simulated core service"_s,
        .more =
            u"The world of the service and all that passes, in a window. It serves applications that run with PPS_ROOT "
            "set to its folder; one that is named here runs beside it, and ends with it. Scenarios: %1."_s.arg(
                zelcore::Simulator::scenarioNames().join(", "_L1))};
    manual.options = zeltools::Manual::entriesOf(options) + zeltools::Manual::ownOptions();
    return manual;
}

/// A sentence for what cannot be meant; empty if all can.
QString read(const QCommandLineParser& parser, Options* options)
{
    static const QStringList pages{{}, u"contacts"_s, u"user"_s, u"box"_s, u"service"_s, u"wire"_s};
    const QString problem = options->read(parser);
    options->screenshot = parser.value(screenshotOption);
    options->page = parser.value(pageOption);
    options->look = parser.value(lookOption);
    options->size = sizeIn(parser.value(sizeOption));
    options->isDark = parser.isSet(darkOption);
    options->application = parser.positionalArguments();
    if (options->size.width() < smallestSide || options->size.height() < smallestSide)
        return u"--size takes a width and a height from %1, as in 1180x760"_s.arg(smallestSide);
    if (!pages.contains(options->page))
        return u"there is no page \"%1\""_s.arg(options->page);
    return problem;
}

} // namespace

std::variant<Options, int> readOptions(const QStringList& arguments)
{
    const auto options = zeltools::ServiceOptions::all() +
                         QList<QCommandLineOption>{darkOption, sizeOption, pageOption, lookOption, screenshotOption};
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions(options);
    zeltools::Manual::addOwnOptions(parser);
    const bool isUnderstood = parser.parse(arguments);
    if (manualOf(options).printAsked(parser, QStringLiteral(ZELCORE_DESK_VERSION)))
        return 0;
    Options wanted;
    const QString problem = isUnderstood ? read(parser, &wanted) : parser.errorText() + u" See --help."_s;
    if (problem.isEmpty())
        return wanted;
    std::fprintf(stderr, "zelcore-desk: %s\n", qPrintable(problem));
    return 2;
}

} // namespace zeldesk
