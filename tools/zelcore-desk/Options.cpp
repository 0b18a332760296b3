// SPDX-License-Identifier: Apache-2.0
#include "Options.h"

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

const QCommandLineOption darkOption(u"dark"_s, u"light on dark, whatever the desktop has"_s);
const QCommandLineOption lookOption(u"look"_s, u"begin with the first record of this type in full"_s, u"TYPE"_s);
const QStringList pages{u"contacts"_s, u"user"_s, u"box"_s, u"service"_s, u"wire"_s};

} // namespace

QList<QCommandLineOption> Options::all()
{
    return zeltools::ServiceOptions::all() + zeltools::WindowOptions::all(u"1180x760"_s, pages) +
           QList<QCommandLineOption>{darkOption, lookOption};
}

zeltools::Manual Options::manual()
{
    zeltools::Manual manual{
        .program = u"zelcore-desk"_s,
        .synopsis = u"[OPTION ...] [-- APPLICATION ...]"_s,
        .purpose = u"the control room of a simulated core service"_s,
        .more =
            u"The world of the service and all that passes, in a window. It serves applications that run with "
            "PPS_ROOT set to its folder; one that is named here runs beside it, and ends with it. Scenarios: %1."_s.arg(
                zelcore::Simulator::scenarioNames().join(", "_L1)),
        .options = zeltools::Manual::entriesOf(all()) + zeltools::Manual::ownOptions(),
        .statuses = {{u"0"_s, u"it was told to end"_s},
                     {u"1"_s,
                      u"it cannot serve, or a picture that was asked for failed or lacks what it was to show"_s},
                     {u"2"_s, u"wrong use"_s}},
        .environment = {{u"QT_QUICK_CONTROLS_STYLE"_s, u"how controls look, Fusion without it"_s}}};
    zeltools::ServiceOptions::describe(manual);
    return manual;
}

QString Options::read(const QCommandLineParser& parser)
{
    look = parser.value(lookOption);
    isDark = parser.isSet(darkOption);
    application = parser.positionalArguments();
    const QString problem = service.read(parser);
    return problem.isEmpty() ? window.read(parser, pages, {320, 480}) : problem;
}

} // namespace zeldesk
