// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/CommandForms.h>

#include <simulator/SimulatorPrivate.h>
#include <simulator/scenarios/Commands.h>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

Answer setState(SimulatorPrivate& simulator, const Addressee& whose, const QStringList& args)
{
    const QString problem = simulator.service.setRegistrationState(args.first(), whose);
    const QString remark = SimulatorPrivate::remarkOn(args.first());
    return outcomeOf(problem, remark.isEmpty() ? remark : u"done, but "_s + remark);
}

Answer setRegistration(SimulatorPrivate& simulator, const QStringList& args)
{
    using Policy = Simulator::RegistrationPolicy;
    const QString& name = args.first();
    const Policy policy = name == "auto"_L1 ? Policy::Automatic : name == "manual"_L1 ? Policy::Manual : Policy::Fixed;
    simulator.service.registrar().setPolicy(policy, name, args.value(1).toInt());
    return {};
}

Answer setPermission(World& world, const QStringList& args)
{
    Permissions permissions = world.permissions();
    bool& member = args.first() == "showAppBox"_L1   ? permissions.showAppBox
                   : args.first() == "zelInvites"_L1 ? permissions.zelInvites
                                                     : permissions.zelSetup;
    member = args.last() == "on"_L1;
    world.setPermissions(permissions);
    return {};
}

Answer showPermissions(World& world, const QStringList&)
{
    const Permissions permissions = world.permissions();
    const auto word = [](bool isAllowed) { return isAllowed ? u"on"_s : u"off"_s; };
    return say(table({{u"showAppBox"_s, word(permissions.showAppBox)},
                      {u"zelInvites"_s, word(permissions.zelInvites)},
                      {u"zelSetup"_s, word(permissions.zelSetup)}})
                   .chopped(1));
}

Answer showRegistration(SimulatorPrivate& simulator, const QStringList&)
{
    using Policy = Simulator::RegistrationPolicy;
    const Registrar& registrar = simulator.service.registrar();
    const QString policy = registrar.policy() == Policy::Automatic ? u"auto"_s
                           : registrar.policy() == Policy::Manual  ? u"manual"_s
                                                                   : registrar.outcome();
    return say(u"%1 %2"_s.arg(policy).arg(registrar.delay()));
}

Answer showClients(SimulatorPrivate& simulator, const QStringList&)
{
    QList<QStringList> rows;
    for (const Client& client : simulator.q->clients())
        rows.append({u"application %1"_s.arg(client.number), client.state,
                     client.uuid.isEmpty() ? u"(no UUID yet)"_s : client.uuid});
    return say(table(rows) + u"applications: %1"_s.arg(rows.size()));
}

using S = SimulatorPrivate;
using W = World;
using A = QStringList;

const Form forms[] = {
    {u"help", u"", u"this text", [](W&, const A&) { return say(Commands::help()); }},
    {u"state", u"", u"that of the application that came last",
     [](S& s, const Addressee& whose, const A&) {
         QString problem;
         const QString state = s.service.registrationState(whose, &problem);
         return outcomeOf(problem, state);
     }},
    {u"state", u"STATE", u"sets that of all: Success, Expired, ...", setState},
    {u"registration", u"", u"how requests are met, and after how long", showRegistration},
    {u"registration", u"POLICY [MS]", u"auto, manual, or a state, after MS", setRegistration},
    {u"registered", u"", u"the UUIDs that are registered at once",
     [](S& s, const A&) { return say(s.service.registrar().registered().join(u'\n')); }},
    {u"registered", u"UUID on|off", u"one of them, or no longer",
     [](S& s, const A& args) {
         return outcomeOf(s.service.registrar().setRegistered(args.first(), args.last() == "on"_L1));
     }},
    {u"permission", u"", u"all of them", showPermissions},
    {u"permission", u"showAppBox|zelInvites|zelSetup on|off", u"what the user allows", setPermission},
    {u"clients", u"", u"the applications that are connected", showClients},
};

} // namespace

std::span<const Form> registrationForms()
{
    return forms;
}

} // namespace zelcore
