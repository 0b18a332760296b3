// SPDX-License-Identifier: Apache-2.0
// The whole command language in one place, long as it is: the table has a row for every form of every command, with the
// arguments it takes, its help and its action. How many words there are and of which kind is checked by the table; what
// cannot be done is for the world to say.
#include <simulator/scenarios/Commands.h>

#include <simulator/SimulatorPrivate.h>
#include <simulator/scenarios/Words.h>
#include <simulator/world/People.h>
#include <simulator/world/PersonJson.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QTimer>

#include <algorithm>
#include <variant>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// What a command answers: why it cannot be done, or else what there is to say.
struct Answer
{
    QString problem = {};
    QString text = {};
};

/// For the operations that answer an empty text or why not.
Answer done(const QString& problem, const QString& text = {})
{
    return {problem, text};
}

Answer say(const QString& text)
{
    return {QString(), text};
}

QJsonObject objectOf(const QString& json)
{
    return QJsonDocument::fromJson(json.toUtf8()).object();
}

/// Rows of words under each other. Names of people come last: how wide a script is, is for the terminal to know.
QString table(const QList<QStringList>& rows)
{
    QList<qsizetype> widths;
    for (const QStringList& row : rows) {
        widths.resize(qMax(widths.size(), row.size()));
        for (qsizetype i = 0; i < row.size(); ++i)
            widths[i] = qMax(widths.at(i), row.at(i).size());
    }
    QString text;
    for (const QStringList& row : rows) {
        for (qsizetype i = 0; i + 1 < row.size(); ++i)
            text += row.at(i).leftJustified(widths.at(i) + 2);
        text += row.last() + u'\n';
    }
    return text;
}

/// A file, or a made-up picture of so many bytes; none for "none".
QString readPicture(const QString& word, QByteArray* data)
{
    bool isSize = false;
    const int size = word.toInt(&isSize);
    data->clear();
    if (isSize && (size < 0 || size > World::largestPicture))
        return u"a picture has 1 to %1 bytes"_s.arg(World::largestPicture);
    if (isSize) {
        *data = PeopleMaker::picture(size, quint32(size));
    } else if (word != "none"_L1) {
        QFile file(word);
        if (!file.open(QIODevice::ReadOnly))
            return u"%1: %2"_s.arg(word, file.errorString());
        *data = file.read(World::largestPicture + 1);
    }
    return {};
}

// --- The application's registration ------------------------------------------------------------------------------

Answer setState(SimulatorPrivate& simulator, const QStringList& args)
{
    simulator.service.setRegistrationState(args.first());
    return say(Simulator::registrationStates().contains(args.first())
                   ? QString()
                   : u"done, but applications do not know the state \"%1\""_s.arg(args.first()));
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

Answer showClients(SimulatorPrivate& simulator, const QStringList&)
{
    QList<QStringList> rows;
    for (const auto& [client, session] : simulator.service.context().sessions)
        rows.append({u"application %1"_s.arg(client), session->state,
                     session->uuid.isEmpty() ? u"(no UUID yet)"_s : session->uuid});
    return say(table(rows) + u"%1 applications"_s.arg(rows.size()));
}

// --- People ------------------------------------------------------------------------------------------------------

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
    return done(problem.isEmpty() ? world.setProfile(person) : problem);
}

Answer addContact(World& world, const QStringList& args)
{
    Person person;
    person.handle = args.first();
    bool installed = true;
    const QString problem = readPerson(world, args.mid(1), person, &installed);
    return done(problem.isEmpty() ? world.addContact(person, installed) : problem);
}

Answer changeContact(World& world, const QStringList& args)
{
    QString problem;
    const Person* before = world.findContact(args.first(), &problem);
    if (!before)
        return done(problem);
    Person person = *before;
    problem = readPerson(world, args.mid(1), person);
    if (problem.isEmpty() && person.userId != before->userId)
        problem = u"a contact's userId never changes"_s;
    return done(problem.isEmpty() ? world.changeContact(person) : problem);
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
               u"%1 contacts, %2 of them run the application"_s.arg(rows.size()).arg(world.installed().size()));
}

Answer setRate(SimulatorPrivate& simulator, const QStringList& args)
{
    using Activity = Simulator::Activity;
    static const QHash<QString, Activity> activities{{u"changes"_s, Activity::Changes},
                                                     {u"installs"_s, Activity::Installs},
                                                     {u"uninstalls"_s, Activity::Uninstalls},
                                                     {u"invitations"_s, Activity::Invitations}};
    simulator.activity.set(activities.value(args.value(1), Activity::Mixed), args.first().toDouble(), 1);
    return {};
}

// --- The box and eco identifiers ---------------------------------------------------------------------------------

Answer showBox(World& world, const QStringList&)
{
    QList<QStringList> rows;
    for (const BoxItem& item : world.box().items())
        rows.append({item.id, u"icon "_s + (item.iconId.isEmpty() ? u"none"_s : item.iconId),
                     u"text=\"%1\" cookie=\"%2\""_s.arg(item.text, item.cookie)});
    for (const BoxIcon& icon : world.box().icons())
        rows.append({u"icon "_s + icon.id, u"%1 bytes"_s.arg(world.picture(icon.hash).size()), icon.hash});
    return say(table(rows) + u"%1 items, %2 icons"_s.arg(world.box().items().size()).arg(world.box().icons().size()));
}

Answer addItem(World& world, const QStringList& args)
{
    BoxItem item{QString(), args.first(), args.value(1), args.value(2)};
    const QString problem = world.addBoxItem(item);
    return done(problem, item.id);
}

Answer changeItem(World& world, const QStringList& args)
{
    const BoxItem* before = world.box().item(args.first());
    BoxItem item = before ? *before : BoxItem{args.first(), {}, {}, {}};
    for (const QString& field : args.mid(1)) {
        const QString name = field.section(u'=', 0, 0);
        QString BoxItem::*member = name == "text"_L1     ? &BoxItem::text
                                   : name == "cookie"_L1 ? &BoxItem::cookie
                                   : name == "icon"_L1   ? &BoxItem::iconId
                                                         : nullptr;
        if (!member)
            return done(u"no field \"%1\"; there are: text, cookie, icon"_s.arg(name));
        item.*member = field.section(u'=', 1);
    }
    return done(world.changeBoxItem(item));
}

Answer addIcon(World& world, const QStringList& args)
{
    QByteArray data;
    const QString problem = readPicture(args.last(), &data);
    return done(problem.isEmpty() ? world.addBoxIcon(args.first(), data) : problem);
}

// --- The timeline ------------------------------------------------------------------------------------------------

Answer showTimeline(SimulatorPrivate& simulator, const QStringList&)
{
    return say(
        u"%1 ms%2"_s.arg(simulator.timeline.time()).arg(simulator.timeline.isPaused() ? u", paused"_s : QString()));
}

Answer stepTimeline(SimulatorPrivate& simulator, const QStringList&)
{
    return done(simulator.timeline.step() ? QString()
                                          : u"no entry follows; those that wait for a registration do not before it"_s);
}

// --- Trouble -----------------------------------------------------------------------------------------------------

template <Simulator::Fault kind>
Answer orderFault(SimulatorPrivate& simulator, const QStringList& args)
{
    const bool hasAmount = kind == Simulator::Fault::Delay || kind == Simulator::Fault::Truncate;
    simulator.outbox.addFault(kind, hasAmount ? args.first().toInt() : 0, args.value(hasAmount ? 1 : 0));
    return {};
}

Answer comeBack(SimulatorPrivate& simulator, const QStringList&)
{
    QString problem;
    simulator.comeBack(&problem);
    return done(problem);
}

Answer goAway(SimulatorPrivate& simulator, const QStringList& args)
{
    simulator.goAway();
    if (!args.isEmpty()) {
        QTimer::singleShot(args.first().toInt(), simulator.q, [d = &simulator] {
            QString problem;
            if (d->running && !d->comeBack(&problem))
                d->refuse(problem);
        });
    }
    return {};
}

// --- The table ---------------------------------------------------------------------------------------------------

using InWorld = Answer (*)(World&, const QStringList&);
using InService = Answer (*)(SimulatorPrivate&, const QStringList&);

/// One form of a command. Arguments: [X] may be missing, X... may be many; wordProblem() says which names mean more
/// than any word. A row comes before those that take its words for something else.
struct Form
{
    const char16_t* name;
    const char16_t* arguments;
    const char16_t* what;
    std::variant<InWorld, InService> run;
    bool ofApplications = false; ///< About what applications may have made: there is nothing to try it on.
};

using Fault = Simulator::Fault;
using S = SimulatorPrivate;
using W = World;
using A = QStringList;

const Form forms[] = {
    {u"help", u"", u"this text", [](W&, const A&) { return say(Commands::help()); }},
    {u"state", u"", u"that of the application that came last",
     [](S& s, const A&) { return say(s.service.registrationState()); }},
    {u"state", u"STATE", u"sets that of all: Success, Expired, ...", setState},
    {u"registration", u"POLICY [MS]", u"auto, manual, or a state, after MS", setRegistration},
    {u"permission", u"showAppBox|zelInvites|zelSetup on|off", u"what the user allows", setPermission},
    {u"clients", u"", u"the applications that are connected", showClients},
    {u"profile", u"", u"shows the device's own user",
     [](W& w, const A&) { return say(table(describePerson(w.profile())).chopped(1)); }},
    {u"profile", u"FIELD=VALUE...", u"changes it", changeProfile},
    {u"profile", u"FIELD VALUE", u"changes one field",
     [](W& w, const A& args) { return changeProfile(w, {args.join(u'=')}); }},
    {u"picture", u"FILE|SIZE|none", u"the own picture; SIZE makes one up",
     [](W& w, const A& args) { return changeProfile(w, {u"picture="_s + args.first()}); }},
    {u"contact", u"HANDLE", u"shows a contact", showContact},
    {u"contact add", u"HANDLE [FIELD=VALUE]... [installed=off]", u"adds one, with the application or not", addContact},
    {u"contact change", u"HANDLE FIELD=VALUE...", u"changes one", changeContact},
    {u"contact install", u"HANDLE", u"begins to run the application",
     [](W& w, const A& args) { return done(w.setInstalled(args.first(), true)); }},
    {u"contact uninstall", u"HANDLE", u"ends to run the application",
     [](W& w, const A& args) { return done(w.setInstalled(args.first(), false)); }},
    {u"contact remove", u"HANDLE", u"is a contact no more",
     [](W& w, const A& args) { return done(w.removeContact(args.first())); }},
    {u"contact picture", u"HANDLE FILE|SIZE|none", u"changes the picture",
     [](W& w, const A& args) {
         return changeContact(w, {args.first(), u"picture="_s + args.last()});
     }},
    {u"contacts", u"", u"all of them", showContacts},
    {u"generate", u"COUNT [SEED]", u"adds made-up contacts",
     [](W& w, const A& args) { return done(addPeople(w, args.first().toInt(), args.value(1, u"1"_s).toUInt())); }},
    {u"rate", u"PER-SECOND [mixed|changes|installs|uninstalls|invitations]", u"lets contacts live; 0 stops it",
     setRate},
    {u"invite", u"HANDLE", u"sends a connection invitation",
     [](S& s, const A& args) { return done(s.invite(args.first())); }},
    {u"box", u"", u"shows the profile box", showBox},
    {u"box add", u"TEXT [COOKIE] [ICON]", u"adds an item", addItem},
    {u"box change", u"ID text|cookie|icon=VALUE...", u"changes one", changeItem, true},
    {u"box remove", u"ID", u"removes one", [](W& w, const A& args) { return done(w.removeBoxItem(args.first())); },
     true},
    {u"box clear", u"", u"removes all", [](W& w, const A&) { return w.clearBox(), Answer(); }},
    {u"box icon", u"ID none", u"removes an icon",
     [](W& w, const A& args) { return done(w.removeBoxIcon(args.first())); }, true},
    {u"box icon", u"ID FILE|SIZE", u"registers one", addIcon},
    {u"eco", u"PPID", u"the eco identifier of a ppId", [](W& w, const A& args) { return say(w.ecoId(args.first())); }},
    {u"eco", u"PPID ECOID", u"sets it",
     [](W& w, const A& args) { return w.setEcoId(args.first(), args.last()), Answer(); }},
    {u"eco-status", u"ECOID", u"how the user stands with its owner",
     [](W& w, const A& args) { return say(w.ecoIdStatus(args.first())); }},
    {u"eco-status", u"ECOID Unknown|ContactExists|PendingContactExists", u"sets it",
     [](W& w, const A& args) { return done(w.setEcoIdStatus(args.first(), args.last())); }},
    {u"timeline", u"", u"how far the scenario's timeline is", showTimeline},
    {u"timeline pause", u"", u"its clock stands still",
     [](S& s, const A&) { return s.timeline.setPaused(true), Answer(); }},
    {u"timeline step", u"", u"pauses, and runs the next entry", stepTimeline},
    {u"timeline until", u"MS", u"pauses, and runs all up to MS",
     [](S& s, const A& args) { return say(u"%1 entries"_s.arg(s.timeline.runUntil(args.first().toInt()))); }},
    {u"timeline go", u"", u"on by the clock", [](S& s, const A&) { return s.timeline.setPaused(false), Answer(); }},
    {u"drop", u"[TYPE]", u"the next message (of a type) is lost", orderFault<Fault::Drop>},
    {u"delay", u"MS [TYPE]", u"... comes late, after others", orderFault<Fault::Delay>},
    {u"duplicate", u"[TYPE]", u"... comes twice", orderFault<Fault::Duplicate>},
    {u"truncate", u"BYTES [TYPE]", u"... is cut", orderFault<Fault::Truncate>},
    {u"garble", u"[TYPE]", u"... is unreadable", orderFault<Fault::Garble>},
    {u"send", u"TYPE JSON", u"sends any message to all applications",
     [](S& s, const A& args) { return s.q->sendMessage(args.first(), objectOf(args.last())), Answer(); }},
    {u"raw", u"TEXT", u"sends any record",
     [](S& s, const A& args) { return s.q->sendRecord(args.first().toUtf8()), Answer(); }},
    {u"away", u"[MS]", u"the service goes away (for so long)", goAway},
    {u"back", u"", u"it returns", comeBack},
    {u"quit", u"", u"ends the program", [](S& s, const A&) { return s.q->quitRequested(), Answer(); }},
};

QString usageOf(const Form& form)
{
    return (QString::fromUtf16(form.name) + u' ' + QString::fromUtf16(form.arguments)).trimmed();
}

/// What is wrong with \a word as the argument \a name. Words of small letters, with bars between them, are the only
/// ones that may stand.
QString wordProblem(const QString& name, const QString& word)
{
    static const QStringList numbers{u"MS"_s, u"COUNT"_s, u"SEED"_s, u"BYTES"_s};
    static const QStringList policies = QStringList{u"auto"_s, u"manual"_s} + Simulator::registrationStates();
    bool isNumber = false;
    const double number = word.toDouble(&isNumber);
    if (numbers.contains(name) && (word.toInt(&isNumber) < 0 || !isNumber))
        return u"%1 is a number from 0, not \"%2\""_s.arg(name, word);
    if (name == "PER-SECOND"_L1 && !(isNumber && number >= 0 && number <= 100000))
        return u"%1 is a number from 0 to 100000, not \"%2\""_s.arg(name, word);
    if (name == "JSON"_L1 && objectOf(word).isEmpty() && word.simplified().remove(u' ') != "{}"_L1)
        return u"\"%1\" is no JSON object"_s.arg(word.left(60));
    if (name.contains(u'='))
        return word.indexOf(u'=') < 1 ? u"fields are given as FIELD=VALUE"_s : QString();
    const QStringList choices = name == "POLICY"_L1 ? policies : name.split(u'|');
    const bool isChoice =
        name == "POLICY"_L1 ||
        std::all_of(choices.cbegin(), choices.cend(), [](const QString& choice) { return choice.front().isLower(); });
    return isChoice && !choices.contains(word) ? u"\"%1\" is none of %2"_s.arg(word, choices.join(", "_L1)) : QString();
}

/// Whether the words behind a command are what a form of it takes; if not, why.
QString argumentProblem(const Form& form, const QStringList& words)
{
    qsizetype at = 0;
    for (QString name : QString::fromUtf16(form.arguments).split(u' ', Qt::SkipEmptyParts)) {
        const qsizetype end = name.endsWith("..."_L1) ? words.size() : qMin(at + 1, words.size());
        if (at == words.size() && !name.startsWith(u'['))
            return u"%1 is missing"_s.arg(name);
        name.remove(u'[').remove(u']').remove("..."_L1);
        for (; at < end; ++at) {
            const QString problem = wordProblem(name, words.at(at));
            if (!problem.isEmpty())
                return problem;
        }
    }
    return at < words.size() ? u"\"%1\" is one word too many"_s.arg(words.at(at)) : QString();
}

/// Why there is no form for these words, of which the first `nameLength` name a command.
QString usageProblem(const QStringList& words, qsizetype nameLength, const QString& argumentProblem)
{
    QStringList commands;
    QStringList actions;
    QStringList usages;
    for (const Form& form : forms) {
        const QStringList name = QString::fromUtf16(form.name).split(u' ');
        commands.append(name.first());
        if (name.first() == words.first() && name.size() > 1)
            actions.append(name.last());
        if (name.mid(0, nameLength) == words.mid(0, nameLength))
            usages.append(usageOf(form));
    }
    commands.removeDuplicates();
    actions.removeDuplicates();
    if (!commands.contains(words.first()))
        return u"\"%1\" is not a command; there are: %2"_s.arg(words.first().left(60), commands.join(", "_L1));
    const bool isAction = nameLength > 1 || words.size() < 2;
    if (!actions.isEmpty() && !isAction)
        return u"%1 has no action \"%2\"; there are: %3"_s.arg(words.first(), words.at(1).left(60),
                                                               actions.join(", "_L1));
    return u"%1; usage: %2"_s.arg(argumentProblem, usages.join("; "_L1));
}

} // namespace

Commands::Commands(SimulatorPrivate& simulator)
    : m_world(simulator.world)
    , m_simulator(&simulator)
{
}

std::optional<QStringList> Commands::split(const QString& line, QString* error)
{
    return splitWords(line, error, u'#');
}

bool Commands::run(const QString& line, QString* reply) const
{
    reply->clear();
    const std::optional<QStringList> words = split(line, reply);
    return words && (words->isEmpty() || run(*words, reply));
}

bool Commands::run(const QStringList& words, QString* reply) const
{
    QString problem;
    qsizetype longestName = 0;
    const Form* fitting = nullptr;
    for (const Form& form : forms) {
        const QStringList name = QString::fromUtf16(form.name).split(u' ');
        if (words.mid(0, name.size()) != name || name.size() < longestName)
            continue;
        // "contact add" is no contact of the name "add".
        if (name.size() > longestName || !fitting) {
            problem = argumentProblem(form, words.mid(name.size()));
            fitting = problem.isEmpty() ? &form : nullptr;
        }
        longestName = name.size();
    }
    if (!fitting) {
        *reply = words.isEmpty() ? u"no command"_s : usageProblem(words, longestName, problem);
        return false;
    }
    const QStringList args = words.mid(longestName);
    reply->clear();
    const bool isServices = std::holds_alternative<InService>(fitting->run);
    if (!m_simulator && (fitting->ofApplications || isServices)) {
        // Whoever is named must be there all the same.
        if (isServices && QStringView(fitting->arguments) == u"HANDLE")
            m_world.findContact(args.first(), reply);
        return reply->isEmpty();
    }
    const auto* inWorld = std::get_if<InWorld>(&fitting->run);
    const Answer answer = inWorld ? (*inWorld)(m_world, args) : std::get<InService>(fitting->run)(*m_simulator, args);
    *reply = answer.problem.isEmpty() ? answer.text : answer.problem;
    return answer.problem.isEmpty();
}

QString Commands::help()
{
    constexpr qsizetype column = 36;
    QString text;
    for (const Form& form : forms) {
        const QString usage = usageOf(form);
        // A long form has its explanation on a line of its own, in the same column.
        const QString gap = usage.size() > column ? u'\n' + QString(column + 2, u' ') : QString();
        text += u"  %1%2  %3\n"_s.arg(usage.leftJustified(column), gap, QString::fromUtf16(form.what));
    }
    const QStringList fields = personFieldNames();
    return text + u"A person has %1,\n%2,\n%3, picture.\nBlanks separate words; \"quotes\" keep them together (\\n in "
                  "double ones is a\nline break); # begins a comment."_s.arg(
                      fields.mid(0, 6).join(", "_L1), fields.mid(6, 5).join(", "_L1), fields.mid(11).join(", "_L1));
}

QStringList Commands::names()
{
    QStringList names;
    for (const Form& form : forms)
        names += QString::fromUtf16(form.name);
    names.removeDuplicates();
    return names;
}

} // namespace zelcore
