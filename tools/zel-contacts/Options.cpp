// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

using namespace Qt::StringLiterals;

namespace {

const QCommandLineOption simulateOption(u"simulate"_s, u"with a core service in this process, and people in it"_s);
const QCommandLineOption contactsOption(u"contacts"_s, u"how many, with --simulate"_s, u"N"_s, u"24"_s);
const QCommandLineOption stateOption(u"state"_s, u"where the registration ends, with --simulate: Expired, ..."_s,
                                     u"STATE"_s);
const QStringList colorNames{u"light"_s, u"dark"_s};
const QCommandLineOption colorsOption(u"colors"_s, u"how it is painted, whatever the desktop has"_s,
                                      colorNames.join(u'|'));
const QStringList pages{u"contact"_s, u"profile"_s, u"box"_s};

} // namespace

QList<QCommandLineOption> Options::all()
{
    return QList<QCommandLineOption>{simulateOption, contactsOption, stateOption} +
           zeltools::WindowOptions::all(u"960x640"_s, pages) + QList<QCommandLineOption>{colorsOption};
}

zeltools::Manual Options::manual()
{
    return {.program = u"zel-contacts"_s,
            .synopsis = u"[OPTION ...]"_s,
            .purpose = u"your profile, your contacts and your profile box in a window"_s,
            .more = u"It talks to the core service below PPS_ROOT, or to one of its own."_s,
            .options = zeltools::Manual::entriesOf(all()) + zeltools::Manual::ownOptions(),
            .values = {{u"--state"_s, zelcore::Simulator::registrationStates()}},
            .statuses = {{u"0"_s, u"done"_s},
                         {u"1"_s, u"a picture that was asked for failed or shows what is wrong"_s},
                         {u"2"_s, u"wrong use"_s}},
            .environment = zeltools::Manual::libraryEnvironment(),
            .files = {{u"$PPS_ROOT/services/zelcore/platform"_s, u"the core service"_s}}};
}

QString Options::read(const QCommandLineParser& parser)
{
    bool isNumber = false;
    isSimulated = parser.isSet(simulateOption);
    world.contacts = parser.value(contactsOption).toInt(&isNumber);
    world.state = parser.value(stateOption);
    colors = parser.value(colorsOption);
    if (!parser.positionalArguments().isEmpty())
        return u"\"%1\" is no option."_s.arg(parser.positionalArguments().first());
    if (world.contacts < 0 || !isNumber)
        return u"--contacts takes a number from 0."_s;
    if (parser.isSet(colorsOption) && !colorNames.contains(colors))
        return u"--colors takes light or dark."_s;
    if (parser.isSet(stateOption) && !zelcore::Simulator::registrationStates().contains(world.state))
        return u"--state takes one of %1."_s.arg(zelcore::Simulator::registrationStates().join(", "_L1));
    const QString problem = window.read(parser, pages, {320, 400});
    world.isAlive = window.screenshot.isEmpty();
    return problem;
}
