// SPDX-License-Identifier: Apache-2.0
#include <common/ServiceOptions.h>

#include <common/Manual.h>
#include <common/Root.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCommandLineParser>

using namespace Qt::StringLiterals;

namespace zeltools {

namespace {

const QCommandLineOption rootOption(u"root"_s, u"serve below this folder"_s, u"DIR"_s);
const QCommandLineOption scenarioOption(u"scenario"_s,
                                        u"begin with this scenario: a file, or the name of one that ships with the "
                                        "simulator"_s,
                                        u"FILE"_s);
const QCommandLineOption contactsOption(u"contacts"_s, u"add so many made-up contacts"_s, u"N"_s, u"0"_s);
const QCommandLineOption seedOption(u"seed"_s, u"make them up from this number"_s, u"S"_s, u"1"_s);
const QCommandLineOption pausedOption(u"paused"_s, u"the scenario's timeline stands still until it is stepped"_s);
const QCommandLineOption recordOption(u"record"_s,
                                      u"write every record, both ways, into this new file. What is in it is personal: "
                                      "names, messages, pictures"_s,
                                      u"FILE"_s);

} // namespace

QList<QCommandLineOption> ServiceOptions::all()
{
    return {rootOption, scenarioOption, contactsOption, seedOption, pausedOption, recordOption};
}

void ServiceOptions::describe(Manual& manual)
{
    manual.values.insert(u"--scenario"_s, zelcore::Simulator::scenarioNames());
    manual.environment.prepend({u"XDG_RUNTIME_DIR"_s, u"without --root it serves below zelplatform in this folder, or "
                                                      "in ~/.cache without the variable"_s});
    manual.files =
        QList<Manual::Entry>{{u"DIR/services/zelcore/platform"_s, u"the socket for applications"_s},
                             {u"DIR/services/invocation/TARGET"_s, u"the sockets for invitations and chats"_s}} +
        manual.files;
}

QString ServiceOptions::emptyAmong(const QList<QCommandLineOption>& options, const QCommandLineParser& parser)
{
    for (const QCommandLineOption& option : options) {
        if (!option.valueName().isEmpty() && parser.isSet(option) && parser.value(option).isEmpty())
            return u"--%1 is empty."_s.arg(option.names().constFirst());
    }
    return {};
}

QString ServiceOptions::read(const QCommandLineParser& parser)
{
    const QString empty = emptyAmong(all(), parser);
    if (!empty.isEmpty())
        return empty;
    bool areContacts = false;
    bool isSeed = false;
    root = parser.isSet(rootOption) ? parser.value(rootOption) : usualRoot();
    scenario = parser.value(scenarioOption);
    contacts = parser.value(contactsOption).toInt(&areContacts);
    seed = parser.value(seedOption).toUInt(&isSeed);
    isPaused = parser.isSet(pausedOption);
    record = parser.value(recordOption);
    if (!areContacts || contacts < 0 || !isSeed)
        return u"--contacts and --seed take numbers from 0."_s;
    return {};
}

bool ServiceOptions::makeWorld(zelcore::Simulator& simulator, QString* error) const
{
    simulator.setRoot(root);
    simulator.setTimelinePaused(isPaused);
    return (scenario.isEmpty() || simulator.loadScenario(scenario, error)) &&
           simulator.generateContacts(contacts, seed);
}

bool ServiceOptions::serve(zelcore::Simulator& simulator, QString* error) const
{
    return (record.isEmpty() || simulator.record(record, error)) && simulator.start(error);
}

} // namespace zeltools
