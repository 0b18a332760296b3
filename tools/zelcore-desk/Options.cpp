// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <common/Root.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

#include <cstdio>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

const QCommandLineOption rootOption(u"root"_s, u"Serve below this folder."_s, u"DIR"_s);
const QCommandLineOption scenarioOption(u"scenario"_s,
                                        u"Begin with this scenario: a file, or the name of one that ships with the "
                                        "simulator."_s,
                                        u"FILE"_s);
const QCommandLineOption pausedOption(u"paused"_s, u"The scenario's timeline stands still until it is stepped."_s);
const QCommandLineOption contactsOption(u"contacts"_s, u"Add so many made-up contacts."_s, u"N"_s, u"0"_s);
const QCommandLineOption seedOption(u"seed"_s, u"Make them up from this number."_s, u"S"_s, u"1"_s);
const QCommandLineOption recordOption(u"record"_s,
                                      u"Write every record, both ways, into this new file. What is in it is personal: "
                                      "names, messages, pictures."_s,
                                      u"FILE"_s);
const QCommandLineOption darkOption(u"dark"_s, u"Light on dark, whatever the desktop has."_s);
const QCommandLineOption sizeOption(u"size"_s, u"The window's size."_s, u"WxH"_s);
const QCommandLineOption pageOption(u"page"_s, u"Begin with contacts, user, box, service or wire."_s, u"PAGE"_s);
const QCommandLineOption lookOption(u"look"_s, u"Begin with the first record of this type in full."_s, u"TYPE"_s);
const QCommandLineOption screenshotOption(u"screenshot"_s,
                                          u"Save a picture of the window when all is quiet, and end."_s, u"FILE"_s);

QString complaintAbout(const QCommandLineParser& parser, const Options& options)
{
    bool isContactsOk = false;
    bool isSeedOk = false;
    const bool isContactsNumber = parser.value(contactsOption).toInt(&isContactsOk) >= 0;
    parser.value(seedOption).toUInt(&isSeedOk);
    if (!isContactsOk || !isContactsNumber || !isSeedOk)
        return u"--contacts and --seed take numbers from 0"_s;
    if (options.size.width() < 320 || options.size.height() < 320)
        return u"--size takes a width and a height from 320, as in 1180x760"_s;
    static const QStringList pages{{}, u"contacts"_s, u"user"_s, u"box"_s, u"service"_s, u"wire"_s};
    if (!pages.contains(options.page))
        return u"there is no page \"%1\""_s.arg(options.page);
    return {};
}

} // namespace

std::optional<Options> readOptions(const QStringList& arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(
        u"The control room of a simulated core service: its world and what passes, in a window.\nIt serves "
        "applications that run with PPS_ROOT set to its folder; one that is named here\nruns beside it, and ends with "
        "it.\nScenarios: %1."_s.arg(zelcore::Simulator::scenarioNames().join(", "_L1)));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    parser.addOptions({rootOption, scenarioOption, pausedOption, contactsOption, seedOption, recordOption, darkOption,
                       sizeOption, pageOption, lookOption, screenshotOption});
    parser.addPositionalArgument(u"application"_s, u"An application and its arguments."_s, u"[-- APPLICATION...]"_s);
    parser.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    parser.process(arguments);

    Options options;
    options.root = parser.isSet(rootOption) ? parser.value(rootOption) : zeltools::usualRoot();
    options.scenario = parser.value(scenarioOption);
    options.record = parser.value(recordOption);
    options.screenshot = parser.value(screenshotOption);
    options.look = parser.value(lookOption);
    options.page = parser.value(pageOption);
    options.contacts = parser.value(contactsOption).toInt();
    options.seed = parser.value(seedOption).toUInt();
    options.isDark = parser.isSet(darkOption);
    options.isPaused = parser.isSet(pausedOption);
    options.application = parser.positionalArguments();
    if (parser.isSet(sizeOption)) {
        const QString size = parser.value(sizeOption);
        options.size = QSize(size.section(u'x', 0, 0).toInt(), size.section(u'x', 1).toInt());
    }
    const QString complaint = complaintAbout(parser, options);
    if (complaint.isEmpty())
        return options;
    std::fprintf(stderr, "zelcore-desk: %s\n", qPrintable(complaint));
    return std::nullopt;
}

} // namespace zeldesk
