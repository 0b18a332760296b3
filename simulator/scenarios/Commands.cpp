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
#include <QtCore/QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// What commands act on.
struct Target
{
    World& world;
    SimulatorPrivate* live; ///< Null when they are only tried.
};

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

/// A file, a made-up picture of so many bytes, or "none".
QString readPicture(const QString& word, QByteArray* data)
{
    bool isSize = false;
    const int size = word.toInt(&isSize);
    data->clear();
    if (isSize) {
        if (size < 0 || size > World::largestPicture)
            return u"a picture has 1 to %1 bytes"_s.arg(World::largestPicture);
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

Answer setState(const Target& target, const QStringList& args)
{
    if (target.live)
        target.live->service.setRegistrationState(args.first());
    return say(Simulator::registrationStates().contains(args.first())
                   ? QString()
                   : u"done, but applications do not know the state \"%1\""_s.arg(args.first()));
}

Answer setRegistration(const Target& target, const QStringList& args)
{
    using Policy = Simulator::RegistrationPolicy;
    const QString& name = args.first();
    const Policy policy = name == "auto"_L1 ? Policy::Automatic : name == "manual"_L1 ? Policy::Manual : Policy::Fixed;
    if (policy == Policy::Fixed && !Simulator::registrationStates().contains(name))
        return done(u"\"%1\" is none of auto, manual, %2"_s.arg(name, Simulator::registrationStates().join(", "_L1)));
    if (target.live)
        target.live->service.registrar().setPolicy(policy, name, args.value(1).toInt());
    return {};
}

Answer setPermission(const Target& target, const QStringList& args)
{
    Permissions permissions = target.world.permissions();
    bool& member = args.first() == "showAppBox"_L1   ? permissions.showAppBox
                   : args.first() == "zelInvites"_L1 ? permissions.zelInvites
                                                     : permissions.zelSetup;
    member = args.last() == "on"_L1;
    target.world.setPermissions(permissions);
    return {};
}

Answer showClients(const Target& target, const QStringList&)
{
    QList<QStringList> rows;
    if (target.live) {
        for (const auto& [client, session] : target.live->service.context().sessions)
            rows.append({u"application %1"_s.arg(client), session->state,
                         session->uuid.isEmpty() ? u"(no UUID yet)"_s : session->uuid});
    }
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

Answer changeProfile(const Target& target, const QStringList& fields)
{
    Person person = target.world.profile();
    const QString problem = readPerson(target.world, fields, person);
    return done(problem.isEmpty() ? target.world.setProfile(person) : problem);
}

Answer changeProfilePicture(const Target& target, const QStringList& args)
{
    QByteArray data;
    const QString problem = readPicture(args.first(), &data);
    return done(problem.isEmpty() ? target.world.setProfilePicture(data) : problem);
}

Answer addContact(const Target& target, const QStringList& args)
{
    Person person;
    person.handle = args.first();
    bool installed = true;
    const QString problem = readPerson(target.world, args.mid(1), person, &installed);
    return done(problem.isEmpty() ? target.world.addContact(person, installed) : problem);
}

Answer changeContact(const Target& target, const QStringList& args)
{
    QString problem;
    const Person* before = target.world.findContact(args.first(), &problem);
    if (!before)
        return done(problem);
    Person person = *before;
    problem = readPerson(target.world, args.mid(1), person);
    if (problem.isEmpty() && person.userId != before->userId)
        problem = u"a contact's userId never changes"_s;
    return done(problem.isEmpty() ? target.world.changeContact(person) : problem);
}

Answer changeContactPicture(const Target& target, const QStringList& args)
{
    QByteArray data;
    const QString problem = readPicture(args.last(), &data);
    return done(problem.isEmpty() ? target.world.setContactPicture(args.first(), data) : problem);
}

Answer showContact(const Target& target, const QStringList& args)
{
    QString problem;
    const Person* person = target.world.findContact(args.first(), &problem);
    return {problem, person ? table(describePerson(*person)).chopped(1) : QString()};
}

Answer showContacts(const Target& target, const QStringList&)
{
    QList<QStringList> rows;
    for (const QString& userId : target.world.everybody()) {
        const Person& person = *target.world.contact(userId);
        rows.append({person.handle, target.world.isInstalled(userId) ? u"installed"_s : u"not installed"_s,
                     person.displayName});
    }
    return say(table(rows) +
               u"%1 contacts, %2 of them run the application"_s.arg(rows.size()).arg(target.world.installed().size()));
}

Answer setRate(const Target& target, const QStringList& args)
{
    using Activity = Simulator::Activity;
    static const QHash<QString, Activity> activities{{u"mixed"_s, Activity::Mixed},
                                                     {u"changes"_s, Activity::Changes},
                                                     {u"installs"_s, Activity::Installs},
                                                     {u"uninstalls"_s, Activity::Uninstalls},
                                                     {u"invitations"_s, Activity::Invitations}};
    bool isNumber = false;
    const double perSecond = args.first().toDouble(&isNumber);
    if (!isNumber || !(perSecond >= 0 && perSecond <= 100000))
        return done(u"a rate is a number from 0 to 100000, not \"%1\""_s.arg(args.first()));
    if (target.live)
        target.live->activity.set(activities.value(args.value(1), Activity::Mixed), perSecond, 1);
    return {};
}

Answer invite(const Target& target, const QStringList& args)
{
    QString problem;
    const Person* person = target.world.findContact(args.first(), &problem);
    if (person && target.live)
        target.live->invite(QString(person->userId));
    return done(problem);
}

// --- The box and eco identifiers ---------------------------------------------------------------------------------

Answer showBox(const Target& target, const QStringList&)
{
    const World& world = target.world;
    QList<QStringList> rows;
    for (const BoxItem& item : world.boxItems())
        rows.append({item.id, u"icon "_s + (item.iconId.isEmpty() ? u"none"_s : item.iconId),
                     u"text=\"%1\" cookie=\"%2\""_s.arg(item.text, item.cookie)});
    for (const BoxIcon& icon : world.boxIcons())
        rows.append({u"icon "_s + icon.id, u"%1 bytes"_s.arg(world.picture(icon.hash).size()), icon.hash});
    return say(table(rows) + u"%1 items, %2 icons"_s.arg(world.boxItems().size()).arg(world.boxIcons().size()));
}

Answer addItem(const Target& target, const QStringList& args)
{
    BoxItem item{QString(), args.first(), args.value(1), args.value(2)};
    const QString problem = target.world.addBoxItem(item);
    return done(problem, item.id);
}

Answer changeItem(const Target& target, const QStringList& args)
{
    const BoxItem* before = target.world.boxItem(args.first());
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
    return done(before || target.live ? target.world.changeBoxItem(item) : QString());
}

Answer removeItem(const Target& target, const QStringList& args)
{
    const QString problem = target.world.removeBoxItem(args.first());
    return done(target.live ? problem : QString());
}

Answer clearBox(const Target& target, const QStringList&)
{
    target.world.clearBox();
    return {};
}

Answer setIcon(const Target& target, const QStringList& args)
{
    QByteArray data;
    QString problem;
    if (args.last() == "none"_L1) {
        problem = target.world.removeBoxIcon(args.first());
        return done(target.live ? problem : QString());
    }
    problem = readPicture(args.last(), &data);
    return done(problem.isEmpty() ? target.world.addBoxIcon(args.first(), data) : problem);
}

// --- Trouble -----------------------------------------------------------------------------------------------------

template <Simulator::Fault kind, bool hasAmount = false>
Answer fault(const Target& target, const QStringList& args)
{
    if (target.live)
        target.live->outbox.addFault(kind, hasAmount ? args.first().toInt() : 0, args.value(hasAmount ? 1 : 0));
    return {};
}

Answer sendMessage(const Target& target, const QStringList& args)
{
    const QJsonDocument body = QJsonDocument::fromJson(args.at(1).toUtf8());
    if (!body.isObject())
        return done(u"the body is no JSON object"_s);
    if (target.live)
        target.live->q->sendMessage(args.first(), body.object());
    return {};
}

Answer sendRecord(const Target& target, const QStringList& args)
{
    if (target.live)
        target.live->q->sendRecord(args.first().toUtf8());
    return {};
}

Answer comeBack(const Target& target, const QStringList&)
{
    QString problem;
    if (target.live)
        target.live->comeBack(&problem);
    return done(problem);
}

Answer goAway(const Target& target, const QStringList& args)
{
    SimulatorPrivate* const d = target.live;
    if (!d)
        return {};
    d->goAway();
    if (!args.isEmpty()) {
        QTimer::singleShot(args.first().toInt(), d->q, [d] {
            QString problem;
            if (d->running && !d->comeBack(&problem))
                d->refuse(problem);
        });
    }
    return {};
}

Answer quit(const Target& target, const QStringList&)
{
    if (target.live)
        Q_EMIT target.live->q->quitRequested();
    return {};
}

// --- The table ---------------------------------------------------------------------------------------------------

/// One form of a command. Arguments: [X] may be missing, X... may be many; MS, COUNT, SEED and BYTES are numbers from
/// 0, FIELD=VALUE says itself, and words of small letters with bars between them are the only ones that may stand.
struct Form
{
    const char16_t* name;
    const char16_t* arguments;
    const char16_t* what;
    Answer (*run)(const Target&, const QStringList&);
};

using Fault = Simulator::Fault;

const Form forms[] = {
    {u"help", u"", u"this text", [](const Target&, const QStringList&) { return say(Commands::help()); }},
    {u"state", u"", u"the registration of the application that connected last",
     [](const Target& t, const QStringList&) { return say(t.live ? t.live->service.registrationState() : QString()); }},
    {u"state", u"STATE", u"sets that of every application, as it stands on the wire: Success, ...", setState},
    {u"registration", u"auto|manual|STATE [MS]", u"what becomes of a request: Pending, and after MS the outcome",
     setRegistration},
    {u"permission", u"showAppBox|zelInvites|zelSetup on|off", u"what the user allows", setPermission},
    {u"clients", u"", u"the applications that are connected", showClients},
    {u"profile", u"", u"shows the device's own user",
     [](const Target& t, const QStringList&) { return say(table(describePerson(t.world.profile())).chopped(1)); }},
    {u"profile", u"FIELD=VALUE...", u"changes it", changeProfile},
    {u"profile", u"FIELD VALUE", u"changes one field",
     [](const Target& t, const QStringList& args) { return changeProfile(t, {args.join(u'=')}); }},
    {u"picture", u"FILE|SIZE|none", u"the own picture; SIZE makes one up", changeProfilePicture},
    {u"contact", u"HANDLE", u"shows a contact", showContact},
    {u"contact add", u"HANDLE [FIELD=VALUE]... [installed=off]", u"adds one, who runs the application or does not",
     addContact},
    {u"contact change", u"HANDLE FIELD=VALUE...", u"changes one", changeContact},
    {u"contact install", u"HANDLE", u"begins to run the application",
     [](const Target& t, const QStringList& args) { return done(t.world.setInstalled(args.first(), true)); }},
    {u"contact uninstall", u"HANDLE", u"ends to run the application",
     [](const Target& t, const QStringList& args) { return done(t.world.setInstalled(args.first(), false)); }},
    {u"contact remove", u"HANDLE", u"is a contact no more",
     [](const Target& t, const QStringList& args) { return done(t.world.removeContact(args.first())); }},
    {u"contact picture", u"HANDLE FILE|SIZE|none", u"changes the picture", changeContactPicture},
    {u"contacts", u"", u"all of them", showContacts},
    {u"generate", u"COUNT [SEED]", u"adds made-up contacts",
     [](const Target& t, const QStringList& args) {
         return done(addPeople(t.world, args.first().toInt(), args.value(1, u"1"_s).toUInt()));
     }},
    {u"rate", u"PER-SECOND [mixed|changes|installs|uninstalls|invitations]", u"lets contacts live; 0 stops it",
     setRate},
    {u"invite", u"HANDLE", u"this contact sends a connection invitation", invite},
    {u"box", u"", u"shows the profile box", showBox},
    {u"box add", u"TEXT [COOKIE] [ICON]", u"adds an item", addItem},
    {u"box change", u"ID text|cookie|icon=VALUE...", u"changes one", changeItem},
    {u"box remove", u"ID", u"removes one", removeItem},
    {u"box clear", u"", u"removes all", clearBox},
    {u"box icon", u"ID FILE|SIZE|none", u"registers an icon, or removes it", setIcon},
    {u"eco", u"PPID", u"the eco identifier of a ppId",
     [](const Target& t, const QStringList& args) { return say(t.world.ecoId(args.first())); }},
    {u"eco", u"PPID ECOID", u"sets it",
     [](const Target& t, const QStringList& args) {
         t.world.setEcoId(args.first(), args.last());
         return Answer();
     }},
    {u"eco-status", u"ECOID", u"how the user stands with its owner",
     [](const Target& t, const QStringList& args) { return say(t.world.ecoIdStatus(args.first())); }},
    {u"eco-status", u"ECOID Unknown|ContactExists|PendingContactExists", u"sets it",
     [](const Target& t, const QStringList& args) { return done(t.world.setEcoIdStatus(args.first(), args.last())); }},
    {u"drop", u"[TYPE]", u"the next message (of this type) is lost", fault<Fault::Drop>},
    {u"delay", u"MS [TYPE]", u"... comes late, after others", fault<Fault::Delay, true>},
    {u"duplicate", u"[TYPE]", u"... comes twice", fault<Fault::Duplicate>},
    {u"truncate", u"BYTES [TYPE]", u"... is cut", fault<Fault::Truncate, true>},
    {u"garble", u"[TYPE]", u"... is unreadable", fault<Fault::Garble>},
    {u"send", u"TYPE 'JSON'", u"sends any message to all applications", sendMessage},
    {u"raw", u"'TEXT'", u"sends any record", sendRecord},
    {u"away", u"[MS]", u"the service goes away (for so long)", goAway},
    {u"back", u"", u"it returns", comeBack},
    {u"quit", u"", u"ends the program", quit},
};

QString usageOf(const Form& form)
{
    return (QString::fromUtf16(form.name) + u' ' + QString::fromUtf16(form.arguments)).trimmed();
}

/// What is wrong with \a word as the argument \a name.
QString wordProblem(const QString& name, const QString& word)
{
    static const QStringList numbers{u"MS"_s, u"COUNT"_s, u"SEED"_s, u"BYTES"_s};
    bool isNumber = false;
    if (numbers.contains(name) && (word.toInt(&isNumber) < 0 || !isNumber))
        return u"%1 is a number from 0, not \"%2\""_s.arg(name, word);
    if (name.contains(u'='))
        return word.indexOf(u'=') < 1 ? u"fields are given as FIELD=VALUE"_s : QString();
    const QStringList choices = name.split(u'|');
    const bool isChoice =
        choices.size() > 1 &&
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

/// Why there is no form for these words.
QString usageProblem(const QStringList& words, const QString& argumentProblem)
{
    QStringList usages;
    QStringList actions;
    for (const Form& form : forms) {
        const QStringList name = QString::fromUtf16(form.name).split(u' ');
        if (name.first() != words.first())
            continue;
        usages.append(usageOf(form));
        if (name.size() > 1)
            actions.append(name.last());
    }
    if (usages.isEmpty())
        return u"\"%1\" is not a command; \"help\" lists them"_s.arg(words.first().left(60));
    if (actions.isEmpty() || actions.contains(words.value(1)) || words.size() < 2)
        return u"%1; usage: %2"_s.arg(argumentProblem, usages.join("; "_L1));
    return u"%1 has no action \"%2\"; there are: %3"_s.arg(words.first(), words.at(1).left(60), actions.join(", "_L1));
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
        *reply = words.isEmpty() ? u"no command"_s : usageProblem(words, problem);
        return false;
    }
    const Answer answer = fitting->run({m_world, m_simulator}, words.mid(longestName));
    *reply = answer.problem.isEmpty() ? answer.text : answer.problem;
    return answer.problem.isEmpty();
}

QString Commands::help()
{
    constexpr qsizetype column = 42;
    QString text;
    for (const Form& form : forms) {
        const QString usage = usageOf(form);
        // A long form has its explanation on a line of its own, in the same column.
        const QString gap = usage.size() > column ? u'\n' + QString(column + 2, u' ') : QString();
        text += u"  %1%2  %3\n"_s.arg(usage.leftJustified(column), gap, QString::fromUtf16(form.what));
    }
    return text + u"Fields of a person: %1, picture.\nBlanks separate words; \"quotes\" keep them together (\\n in "
                  "double ones is a line break); # begins a comment."_s.arg(personFieldNames().join(", "_L1));
}

} // namespace zelcore
