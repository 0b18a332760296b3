// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/CommandForms.h>

#include <simulator/SimulatorPrivate.h>
#include <simulator/world/People.h>
#include <simulator/world/PersonJson.h>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// FIELD=VALUE words into a person: what a person has, a picture, and "installed" for who adds.
QString readPerson(World& world, const QStringList& fields, Person& person, bool* installed = nullptr)
{
    QString problem;
    for (const QString& field : fields) {
        const QString name = field.section(u'=', 0, 0);
        const QString value = field.section(u'=', 1);
        QByteArray data;
        if (installed && name == "installed"_L1) {
            *installed = value == "on"_L1;
            problem = *installed || value == "off"_L1 ? QString() : u"installed is on or off"_s;
        } else if (name == "picture"_L1) {
            problem = readPicture(value, &data);
            problem = problem.isEmpty() ? world.givePicture(person, data) : problem;
        } else {
            problem = setPersonField(name, value, person);
        }
        if (!problem.isEmpty())
            break;
    }
    return problem;
}

Answer changeProfile(World& world, const QStringList& fields)
{
    Person person = world.profile();
    const QString problem = readPerson(world, fields, person);
    return outcomeOf(problem.isEmpty() ? world.setProfile(person) : problem);
}

Answer addContact(World& world, const QStringList& args)
{
    Person person;
    person.handle = args.first();
    bool installed = true;
    const QString problem = readPerson(world, args.mid(1), person, &installed);
    return outcomeOf(problem.isEmpty() ? world.addContact(person, installed) : problem);
}

Answer changeContact(World& world, const QStringList& args)
{
    QString problem;
    const Person* before = world.findContact(args.first(), &problem);
    if (!before)
        return {problem};
    Person person = *before;
    problem = readPerson(world, args.mid(1), person);
    if (problem.isEmpty() && person.userId != before->userId)
        problem = u"a contact's userId never changes"_s;
    return outcomeOf(problem.isEmpty() ? world.changeContact(person) : problem);
}

Answer showContact(World& world, const QStringList& args)
{
    QString problem;
    const Person* person = world.findContact(args.first(), &problem);
    return {problem, person ? table(describePerson(*person)).chopped(1) : QString()};
}

Answer showContacts(World& world, const QStringList&)
{
    QList<QStringList> rows;
    for (const QString& userId : world.everybody()) {
        const Person& person = *world.contact(userId);
        rows.append(
            {person.handle, world.isInstalled(userId) ? u"installed"_s : u"not installed"_s, person.displayName});
    }
    return say(table(rows) +
               u"contacts: %1, with the application: %2"_s.arg(rows.size()).arg(world.installed().size()));
}

Answer setRate(SimulatorPrivate& simulator, const QStringList& args)
{
    using Activity = Simulator::Activity;
    static const QHash<QString, Activity> activities{{u"changes"_s, Activity::Changes},
                                                     {u"installs"_s, Activity::Installs},
                                                     {u"uninstalls"_s, Activity::Uninstalls},
                                                     {u"invitations"_s, Activity::Invitations}};
    simulator.activity.set(activities.value(args.value(1), Activity::Mixed), args.first().toDouble());
    return {};
}

using S = SimulatorPrivate;
using W = World;
using A = QStringList;

const Form forms[] = {
    {u"profile", u"", u"shows the device's own user",
     [](W& w, const A&) { return say(table(describePerson(w.profile())).chopped(1)); }},
    {u"profile", u"FIELD=VALUE...", u"changes it", changeProfile},
    {u"profile", u"FIELD VALUE", u"changes one field",
     [](W& w, const A& args) { return changeProfile(w, {args.join(u'=')}); }},
    {u"picture", u"FILE|SIZE|none", u"the own picture; SIZE makes one up",
     [](W& w, const A& args) {
         return withPicture(args.first(), [&](const QByteArray& data) { return w.setProfilePicture(data); });
     }},
    {u"contact", u"HANDLE", u"shows a contact", showContact},
    {u"contact add", u"HANDLE [FIELD=VALUE]... [installed=off]", u"adds one, with the application or not", addContact},
    {u"contact change", u"HANDLE FIELD=VALUE...", u"changes one", changeContact},
    {u"contact install", u"HANDLE", u"begins to run the application",
     [](W& w, const A& args) { return outcomeOf(w.setInstalled(args.first(), true)); }},
    {u"contact uninstall", u"HANDLE", u"ends to run the application",
     [](W& w, const A& args) { return outcomeOf(w.setInstalled(args.first(), false)); }},
    {u"contact remove", u"HANDLE", u"is a contact no more",
     [](W& w, const A& args) { return outcomeOf(w.removeContact(args.first())); }},
    {u"contact picture", u"HANDLE FILE|SIZE|none", u"changes the picture",
     [](W& w, const A& args) {
         return withPicture(args.last(),
                            [&](const QByteArray& data) { return w.setContactPicture(args.first(), data); });
     }},
    {u"contacts", u"", u"all of them", showContacts},
    {u"generate", u"COUNT [SEED]", u"adds made-up contacts",
     [](W& w, const A& args) { return outcomeOf(addPeople(w, args.first().toInt(), args.value(1, u"1"_s).toUInt())); }},
    {u"rate", u"PER-SECOND [mixed|changes|installs|uninstalls|invitations]", u"lets contacts live; 0 stops it",
     setRate},
    {u"invite", u"HANDLE", u"sends a connection invitation",
     [](S& s, const A& args) { return outcomeOf(s.invite(args.first())); }},
};

} // namespace

std::span<const Form> peopleForms()
{
    return forms;
}

} // namespace zelcore
