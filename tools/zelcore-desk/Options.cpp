// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <common/Manual.h>
#include <common/Root.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

#include <cstdio>
#include <optional>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

constexpr int smallestSide = 320;

const QCommandLineOption rootOption(u"root"_s, u"serve below this folder"_s, u"DIR"_s);
const QCommandLineOption scenarioOption(u"scenario"_s,
                                        u"begin with this scenario: a file, or the name of one that ships with the "
                                        "simulator"_s,
                                        u"FILE"_s);
const QCommandLineOption pausedOption(u"paused"_s, u"the scenario's timeline stands still until it is stepped"_s);
const QCommandLineOption contactsOption(u"contacts"_s, u"add so many made-up contacts"_s, u"N"_s, u"0"_s);
const QCommandLineOption seedOption(u"seed"_s, u"make them up from this number"_s, u"S"_s, u"1"_s);
const QCommandLineOption recordOption(u"record"_s,
                                      u"write every record, both ways, into this new file. What is in it is personal: "
                                      "names, messages, pictures"_s,
                                      u"FILE"_s);
const QCommandLineOption darkOption(u"dark"_s, u"light on dark, whatever the desktop has"_s);
const QCommandLineOption sizeOption(u"size"_s, u"the window's size"_s, u"WxH"_s, u"1180x760"_s);
const QCommandLineOption pageOption(u"page"_s, u"begin with contacts, user, box, service or wire"_s, u"PAGE"_s);
const QCommandLineOption lookOption(u"look"_s, u"begin with the first record of this type in full"_s, u"TYPE"_s);
const QCommandLineOption screenshotOption(u"screenshot"_s, u"save a picture of the window when all is quiet, and end"_s,
                                          u"FILE"_s);

/// A number from 0; nothing for anything else.
std::optional<int> numberIn(const QString& word)
{
    bool isNumber = false;
    const int number = word.toInt(&isNumber);
    return isNumber && number >= 0 ? std::optional(number) : std::nullopt;
}

QSize sizeIn(const QString& word)
{
    const QStringList sides = word.split(u'x');
    return sides.size() == 2 ? QSize(sides.first().toInt(), sides.last().toInt()) : QSize();
}

QString complaintAbout(const QCommandLineParser& parser)
{
    if (!numberIn(parser.value(contactsOption)) || !numberIn(parser.value(seedOption)))
        return u"--contacts and --seed take numbers from 0"_s;
    const QSize size = sizeIn(parser.value(sizeOption));
    if (size.width() < smallestSide || size.height() < smallestSide)
        return u"--size takes a width and a height from %1, as in 1180x760"_s.arg(smallestSide);
    static const QStringList pages{{}, u"contacts"_s, u"user"_s, u"box"_s, u"service"_s, u"wire"_s};
    if (!pages.contains(parser.value(pageOption)))
        return u"there is no page \"%1\""_s.arg(parser.value(pageOption));
    return {};
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

Options optionsIn(const QCommandLineParser& parser)
{
    Options options;
    options.root = parser.isSet(rootOption) ? parser.value(rootOption) : zeltools::usualRoot();
    options.scenario = parser.value(scenarioOption);
    options.record = parser.value(recordOption);
    options.screenshot = parser.value(screenshotOption);
    options.page = parser.value(pageOption);
    options.look = parser.value(lookOption);
    options.size = sizeIn(parser.value(sizeOption));
    options.contacts = *numberIn(parser.value(contactsOption));
    options.seed = quint32(*numberIn(parser.value(seedOption)));
    options.isDark = parser.isSet(darkOption);
    options.isPaused = parser.isSet(pausedOption);
    options.application = parser.positionalArguments();
    return options;
}

} // namespace

std::variant<Options, int> readOptions(const QStringList& arguments)
{
    const QList<QCommandLineOption> options{rootOption, scenarioOption, pausedOption,    contactsOption,
                                            seedOption, recordOption,   darkOption,      sizeOption,
                                            pageOption, lookOption,     screenshotOption};
    const zeltools::Manual manual = manualOf(options);
    QCommandLineParser parser;
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.addOptions(options);
    parser.addOption(QCommandLineOption(u"h"_s));
    for (const zeltools::Manual::Entry& own : zeltools::Manual::ownOptions())
        parser.addOption(QCommandLineOption(own.usage.mid(2)));
    const bool isUnderstood = parser.parse(arguments);
    for (const QString& asked : parser.optionNames()) {
        if (manual.print((asked.size() == 1 ? "-"_L1 : "--"_L1) + asked, QStringLiteral(ZELCORE_DESK_VERSION)))
            return 0;
    }
    if (isUnderstood && parser.isSet(u"version"_s)) {
        std::printf("zelcore-desk %s\n", ZELCORE_DESK_VERSION);
        return 0;
    }
    const QString complaint = isUnderstood ? complaintAbout(parser) : parser.errorText() + u" See --help."_s;
    if (complaint.isEmpty())
        return optionsIn(parser);
    std::fprintf(stderr, "zelcore-desk: %s\n", qPrintable(complaint));
    return 2;
}

} // namespace zeldesk
