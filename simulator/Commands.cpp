// SPDX-License-Identifier: Apache-2.0
// The whole command language in one place, long as it is: a short function for each command, then the table that gives
// each its name, its action and its help, then the way a line is cut into words.
#include <simulator/Commands.h>

#include <simulator/People.h>
#include <simulator/PersonJson.h>
#include <simulator/SimulatorPrivate.h>

#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimer>

#include <array>

namespace zelcore {

namespace {

/// What a command answers: whether it was done, and a text. A failure without a text shows how the command is used.
struct Outcome
{
    bool ok = true;
    QString text;
};

Outcome failure(const QString& why = QString())
{
    return {false, why};
}

/// From the operations that answer an empty text or why not.
Outcome outcome(const QString& problem, const QString& text = QString())
{
    return problem.isEmpty() ? Outcome{true, text} : failure(problem);
}

bool readSwitch(const QString& word, bool* on)
{
    *on = word == QLatin1String("on");
    return *on || word == QLatin1String("off");
}

bool readNumber(const QString& word, int* number)
{
    bool ok = false;
    *number = word.toInt(&ok);
    return ok && *number >= 0;
}

/// Words like NAME=VALUE, as a list of pairs.
bool readFields(const QStringList& words, QList<QPair<QString, QString>>* fields)
{
    for (const QString& word : words) {
        const qsizetype sign = word.indexOf(QLatin1Char('='));
        if (sign < 1)
            return false;
        fields->append({word.left(sign), word.mid(sign + 1)});
    }
    return true;
}

/// A file, a made-up picture of so many bytes, or "none".
QString readPicture(const QString& word, QByteArray* data)
{
    int size = 0;
    data->clear();
    if (word == QLatin1String("none"))
        return {};
    if (readNumber(word, &size)) {
        if (size > World::largestPicture)
            return QStringLiteral("a picture has 1 to %1 bytes").arg(World::largestPicture);
        *data = PeopleMaker::picture(size, quint32(size));
        return {};
    }
    QFile file(word);
    if (!file.open(QIODevice::ReadOnly))
        return QStringLiteral("%1: %2").arg(word, file.errorString());
    *data = file.read(World::largestPicture + 1);
    return {};
}

// --- The application's registration ------------------------------------------------------------------------------

Outcome state(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() > 1)
        return failure();
    if (args.isEmpty())
        return {true, d.service.registrationState()};
    d.service.setRegistrationState(args.first());
    return {true, Simulator::registrationStates().contains(args.first())
                      ? QString()
                      : QStringLiteral("done, but applications do not know the state \"%1\"").arg(args.first())};
}

using Policy = Simulator::RegistrationPolicy;

Outcome readPolicy(const QStringList& args, Policy* policy, int* delay)
{
    if (args.isEmpty() || args.size() > 2 || (args.size() == 2 && !readNumber(args.at(1), delay)))
        return failure();
    const QString& name = args.first();
    *policy = name == QLatin1String("auto")     ? Policy::Automatic
              : name == QLatin1String("manual") ? Policy::Manual
                                                : Policy::Fixed;
    if (*policy == Policy::Fixed && !Simulator::registrationStates().contains(name))
        return failure(QStringLiteral("\"%1\" is none of auto, manual, %2")
                           .arg(name, Simulator::registrationStates().join(QLatin1String(", "))));
    return {};
}

Outcome registration(SimulatorPrivate& d, const QStringList& args)
{
    Policy policy = Policy::Automatic;
    int delay = 0;
    const Outcome read = readPolicy(args, &policy, &delay);
    if (read.ok)
        d.service.registrar().setPolicy(policy, args.first(), delay);
    return read;
}

Outcome permission(SimulatorPrivate& d, const QStringList& args)
{
    Permissions permissions = d.world.permissions();
    bool on = false;
    if (args.size() != 2 || !readSwitch(args.at(1), &on))
        return failure();
    if (args.first() == QLatin1String("showAppBox"))
        permissions.showAppBox = on;
    else if (args.first() == QLatin1String("zelInvites"))
        permissions.zelInvites = on;
    else if (args.first() == QLatin1String("zelSetup"))
        permissions.zelSetup = on;
    else
        return failure();
    d.world.setPermissions(permissions);
    return {};
}

// --- People ------------------------------------------------------------------------------------------------------

/// FIELD=VALUE words into a person; "installed" is taken out for who adds.
QString readPerson(const QStringList& words, Person& person, bool* installed)
{
    QList<QPair<QString, QString>> fields;
    if (!readFields(words, &fields))
        return QStringLiteral("fields are given as FIELD=VALUE");
    for (const auto& [name, value] : fields) {
        if (installed && name == QLatin1String("installed")) {
            if (!readSwitch(value, installed))
                return QStringLiteral("installed is on or off");
            continue;
        }
        const QString problem = setPersonField(name, value, person);
        if (!problem.isEmpty())
            return problem;
    }
    return {};
}

Outcome profile(SimulatorPrivate& d, const QStringList& args)
{
    Person person = d.world.profile();
    if (args.isEmpty())
        return {true, describePerson(person)};
    // One field may stand as two words, too.
    const bool isPair = args.size() == 2 && !args.first().contains(QLatin1Char('='));
    const QString problem = isPair ? setPersonField(args.at(0), args.at(1), person) : readPerson(args, person, nullptr);
    return outcome(problem.isEmpty() ? d.world.setProfile(person) : problem);
}

Outcome picture(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() != 1)
        return failure();
    QByteArray data;
    const QString problem = readPicture(args.first(), &data);
    return outcome(problem.isEmpty() ? d.setPicture(d.world.profile(), data, false) : problem);
}

Outcome contactAdd(SimulatorPrivate& d, const QString& handle, const QStringList& fields)
{
    Person person;
    person.handle = handle;
    bool installed = true;
    const QString problem = readPerson(fields, person, &installed);
    return outcome(problem.isEmpty() ? d.world.addContact(person, installed) : problem);
}

Outcome contactChange(SimulatorPrivate& d, const Person& before, const QStringList& fields)
{
    Person person = before;
    const QString problem = readPerson(fields, person, nullptr);
    if (problem.isEmpty() && person.userId != before.userId)
        return failure(QStringLiteral("a contact's userId never changes"));
    return outcome(problem.isEmpty() ? d.world.changeContact(person) : problem);
}

Outcome contactPicture(SimulatorPrivate& d, const Person& person, const QString& word)
{
    QByteArray data;
    const QString problem = readPicture(word, &data);
    return outcome(problem.isEmpty() ? d.setPicture(person, data, true) : problem);
}

Outcome contact(SimulatorPrivate& d, const QStringList& args)
{
    const QString verb = args.value(0);
    const QString handle = args.value(args.size() == 1 ? 0 : 1);
    if (handle.isEmpty())
        return failure();
    if (verb == QLatin1String("add") && args.size() > 1)
        return contactAdd(d, handle, args.mid(2));

    QString problem;
    const Person* person = d.find(handle, &problem);
    if (!person)
        return failure(problem);
    if (args.size() == 1)
        return {true, describePerson(*person)};
    if (verb == QLatin1String("change") && args.size() > 2)
        return contactChange(d, *person, args.mid(2));
    if (verb == QLatin1String("picture") && args.size() == 3)
        return contactPicture(d, *person, args.at(2));
    if (args.size() != 2)
        return failure();
    if (verb == QLatin1String("remove"))
        return outcome(d.world.removeContact(person->userId));
    if (verb == QLatin1String("install"))
        return outcome(d.world.setInstalled(person->userId, true));
    if (verb == QLatin1String("uninstall"))
        return outcome(d.world.setInstalled(person->userId, false));
    return failure();
}

Outcome contacts(SimulatorPrivate& d, const QStringList& args)
{
    if (!args.isEmpty())
        return failure();
    QStringList lines;
    for (const QString& userId : d.world.everybody()) {
        const Person& person = *d.world.contact(userId);
        const QString mark = d.world.isInstalled(userId) ? QString() : QStringLiteral(" (not installed)");
        lines.append(QStringLiteral("%1  %2%3").arg(person.handle, person.displayName, mark));
    }
    lines.append(QStringLiteral("%1 contacts, %2 of them run the application")
                     .arg(d.world.everybody().size())
                     .arg(d.world.installed().size()));
    return {true, lines.join(QLatin1Char('\n'))};
}

Outcome generate(SimulatorPrivate& d, const QStringList& args)
{
    int count = 0;
    int seed = 1;
    const bool ok = !args.isEmpty() && args.size() <= 2 && readNumber(args.first(), &count) &&
                    (args.size() < 2 || readNumber(args.at(1), &seed));
    return ok ? outcome(d.generate(count, quint32(seed))) : failure();
}

Outcome rate(SimulatorPrivate& d, const QStringList& args)
{
    using Activity = Simulator::Activity;
    static const QList<QPair<QString, Activity>> activities{
        {QStringLiteral("mixed"), Activity::Mixed},
        {QStringLiteral("changes"), Activity::Changes},
        {QStringLiteral("installs"), Activity::Installs},
        {QStringLiteral("uninstalls"), Activity::Uninstalls},
        {QStringLiteral("invitations"), Activity::Invitations},
    };
    bool isNumber = false;
    const double perSecond = args.value(0).toDouble(&isNumber);
    if (!isNumber || perSecond < 0 || perSecond > 100000 || args.size() > 2)
        return failure();
    const QString wanted = args.value(1, QStringLiteral("mixed"));
    for (const auto& [name, activity] : activities) {
        if (name == wanted) {
            d.activity.set(activity, perSecond, 1);
            return {};
        }
    }
    return failure();
}

Outcome invite(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() != 1)
        return failure();
    QString problem;
    const Person* person = d.find(args.first(), &problem);
    return person ? outcome(d.invite(QString(person->userId))) : failure(problem);
}

// --- The box and eco identifiers ---------------------------------------------------------------------------------

QString describeBox(const World& world)
{
    QStringList lines;
    for (const BoxItem& item : world.boxItems())
        lines.append(
            QStringLiteral("%1  text=\"%2\" cookie=\"%3\" icon=%4")
                .arg(item.id, item.text, item.cookie, item.iconId.isEmpty() ? QStringLiteral("none") : item.iconId));
    for (const BoxIcon& icon : world.boxIcons())
        lines.append(
            QStringLiteral("icon %1  %2 bytes, %3").arg(icon.id).arg(world.picture(icon.hash).size()).arg(icon.hash));
    lines.append(QStringLiteral("%1 items, %2 icons").arg(world.boxItems().size()).arg(world.boxIcons().size()));
    return lines.join(QLatin1Char('\n'));
}

Outcome boxChange(SimulatorPrivate& d, const QString& id, const QStringList& words)
{
    QList<QPair<QString, QString>> fields;
    if (words.isEmpty() || !readFields(words, &fields))
        return failure();
    for (BoxItem item : d.world.boxItems()) {
        if (item.id != id)
            continue;
        for (const auto& [name, value] : fields) {
            if (name == QLatin1String("text"))
                item.text = value;
            else if (name == QLatin1String("cookie"))
                item.cookie = value;
            else if (name == QLatin1String("icon"))
                item.iconId = value;
            else
                return failure(QStringLiteral("no field \"%1\"; there are: text, cookie, icon").arg(name));
        }
        return outcome(d.world.changeBoxItem(item));
    }
    return failure(QStringLiteral("no item has the id \"%1\"").arg(id));
}

Outcome box(SimulatorPrivate& d, const QStringList& args)
{
    const QString verb = args.value(0);
    if (args.isEmpty())
        return {true, describeBox(d.world)};
    if (verb == QLatin1String("clear") && args.size() == 1) {
        d.q->clearBox();
        return {};
    }
    if (verb == QLatin1String("add") && args.size() >= 2 && args.size() <= 4) {
        BoxItem item{QString(), args.at(1), args.value(2), args.value(3)};
        const QString problem = d.world.addBoxItem(item);
        return outcome(problem, item.id);
    }
    if (verb == QLatin1String("change") && args.size() > 2)
        return boxChange(d, args.at(1), args.mid(2));
    if (verb == QLatin1String("remove") && args.size() == 2)
        return outcome(d.world.removeBoxItem(args.at(1)));
    if (verb == QLatin1String("icon") && args.size() == 3 && args.at(2) == QLatin1String("none"))
        return outcome(d.world.removeBoxIcon(args.at(1)));
    if (verb == QLatin1String("icon") && args.size() == 3) {
        QByteArray data;
        const QString problem = readPicture(args.at(2), &data);
        return outcome(problem.isEmpty() ? d.world.addBoxIcon(args.at(1), data) : problem);
    }
    return failure();
}

Outcome eco(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() == 2)
        d.world.setEcoId(args.at(0), args.at(1));
    else if (args.size() == 1)
        return {true, d.world.ecoId(args.first())};
    return args.size() == 2 ? Outcome() : failure();
}

Outcome ecoStatus(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() == 2)
        d.world.setEcoIdStatus(args.at(0), args.at(1));
    else if (args.size() == 1)
        return {true, d.world.ecoIdStatus(args.first())};
    return args.size() == 2 ? Outcome() : failure();
}

// --- Trouble -----------------------------------------------------------------------------------------------------

Outcome fault(SimulatorPrivate& d, Simulator::Fault kind, bool hasAmount, const QStringList& args)
{
    int amount = 0;
    const int words = hasAmount ? 1 : 0;
    if (args.size() < words || args.size() > words + 1 || (hasAmount && !readNumber(args.first(), &amount)))
        return failure();
    d.outbox.addFault(kind, amount, args.value(words));
    return {};
}

Outcome drop(SimulatorPrivate& d, const QStringList& args)
{
    return fault(d, Simulator::Fault::Drop, false, args);
}

Outcome delay(SimulatorPrivate& d, const QStringList& args)
{
    return fault(d, Simulator::Fault::Delay, true, args);
}

Outcome duplicate(SimulatorPrivate& d, const QStringList& args)
{
    return fault(d, Simulator::Fault::Duplicate, false, args);
}

Outcome truncate(SimulatorPrivate& d, const QStringList& args)
{
    return fault(d, Simulator::Fault::Truncate, true, args);
}

Outcome garble(SimulatorPrivate& d, const QStringList& args)
{
    return fault(d, Simulator::Fault::Garble, false, args);
}

Outcome sendMessage(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() != 2)
        return failure();
    const QJsonDocument body = QJsonDocument::fromJson(args.at(1).toUtf8());
    if (!body.isObject())
        return failure(QStringLiteral("the body is no JSON object"));
    d.q->sendMessage(args.first(), body.object());
    return {};
}

Outcome raw(SimulatorPrivate& d, const QStringList& args)
{
    if (args.size() != 1)
        return failure();
    d.q->sendRecord(args.first().toUtf8());
    return {};
}

Outcome back(SimulatorPrivate& d, const QStringList& args)
{
    QString problem;
    if (!args.isEmpty())
        return failure();
    return d.comeBack(&problem) ? Outcome() : failure(problem);
}

Outcome away(SimulatorPrivate& d, const QStringList& args)
{
    int duration = 0;
    if (args.size() > 1 || (!args.isEmpty() && !readNumber(args.first(), &duration)))
        return failure();
    d.goAway();
    if (!args.isEmpty()) {
        QTimer::singleShot(duration, d.q, [&d] {
            QString problem;
            if (d.running && !d.comeBack(&problem))
                d.refuse(problem);
        });
    }
    return {};
}

Outcome clients(SimulatorPrivate& d, const QStringList& args)
{
    if (!args.isEmpty())
        return failure();
    QStringList lines;
    for (const auto& [client, session] : d.service.desk().sessions)
        lines.append(QStringLiteral("application %1  %2  %3")
                         .arg(QString::number(client), session->state,
                              session->uuid.isEmpty() ? QStringLiteral("(no UUID yet)") : session->uuid));
    lines.append(QStringLiteral("%1 applications").arg(lines.size()));
    return {true, lines.join(QLatin1Char('\n'))};
}

Outcome help(SimulatorPrivate&, const QStringList&)
{
    return {true, Commands::help()};
}

Outcome quit(SimulatorPrivate& d, const QStringList& args)
{
    if (!args.isEmpty())
        return failure();
    Q_EMIT d.q->quitRequested();
    return {};
}

/// One command; a line of help per form, the way it is used before the two blanks.
struct Command
{
    const char16_t* name;
    Outcome (*run)(SimulatorPrivate&, const QStringList&);
    const char16_t* forms;
};

constexpr qsizetype helpColumn = 42;

constexpr std::array<Command, 25> commands{{
    {u"help", help, u"help  this text"},
    {u"state", state, u"state [STATE]  the registration of every application, as it stands on the wire: Success, ..."},
    {u"registration", registration,
     u"registration auto|manual|STATE [MS]  what becomes of a request: Pending, and after MS the outcome"},
    {u"permission", permission, u"permission showAppBox|zelInvites|zelSetup on|off  what the user allows"},
    {u"clients", clients, u"clients  the applications that are connected"},
    {u"profile", profile, u"profile [FIELD=VALUE]...  shows or changes the device's own user"},
    {u"picture", picture, u"picture FILE|SIZE|none  the own picture; SIZE makes one up"},
    {u"contact", contact,
     u"contact HANDLE  shows a contact\n"
     u"contact add HANDLE [FIELD=VALUE]... [installed=off]  adds one, who runs the application or does not\n"
     u"contact change HANDLE FIELD=VALUE...  changes one\n"
     u"contact install|uninstall HANDLE  begins or ends to run the application\n"
     u"contact remove HANDLE  is a contact no more\n"
     u"contact picture HANDLE FILE|SIZE|none  changes the picture"},
    {u"contacts", contacts, u"contacts  all of them"},
    {u"generate", generate, u"generate COUNT [SEED]  adds made-up contacts"},
    {u"rate", rate, u"rate PER-SECOND [mixed|changes|installs|uninstalls|invitations]  lets contacts live; 0 stops it"},
    {u"invite", invite, u"invite HANDLE  this contact sends a connection invitation"},
    {u"box", box,
     u"box  shows the profile box\n"
     u"box add TEXT [COOKIE [ICON]]  adds an item\n"
     u"box change ID text|cookie|icon=VALUE...  changes one\n"
     u"box remove ID  removes one\n"
     u"box clear  removes all\n"
     u"box icon ID FILE|SIZE|none  registers an icon, or removes it"},
    {u"eco", eco, u"eco PPID [ECOID]  the eco identifier of a ppId"},
    {u"eco-status", ecoStatus,
     u"eco-status ECOID [Unknown|ContactExists|PendingContactExists]  how the user stands with its owner"},
    {u"drop", drop, u"drop [TYPE]  the next message (of this type) is lost"},
    {u"delay", delay, u"delay MS [TYPE]  ... comes late, after others"},
    {u"duplicate", duplicate, u"duplicate [TYPE]  ... comes twice"},
    {u"truncate", truncate, u"truncate BYTES [TYPE]  ... is cut"},
    {u"garble", garble, u"garble [TYPE]  ... is unreadable"},
    {u"send", sendMessage, u"send TYPE 'JSON'  sends any message to all applications"},
    {u"raw", raw, u"raw 'TEXT'  sends any record"},
    {u"away", away, u"away [MS]  the service goes away (for so long)"},
    {u"back", back, u"back  it returns"},
    {u"quit", quit, u"quit  ends the program"},
}};

QString usage(const Command& command)
{
    QStringList forms;
    for (const QString& form : QString::fromUtf16(command.forms).split(QLatin1Char('\n')))
        forms.append(form.section(QLatin1String("  "), 0, 0));
    return QStringLiteral("usage: ") + forms.join(QLatin1String("; "));
}

const Command* findCommand(const QString& name)
{
    for (const Command& command : commands) {
        if (name == QString::fromUtf16(command.name))
            return &command;
    }
    return nullptr;
}

QString unknown(const QString& name)
{
    return QStringLiteral("\"%1\" is not a command; \"help\" lists them").arg(name.left(60));
}

} // namespace

bool Commands::split(const QString& line, QStringList* words)
{
    QString word;
    bool inWord = false;
    QChar quote;
    for (qsizetype i = 0; i < line.size(); ++i) {
        const QChar c = line.at(i);
        const bool escapes = c == QLatin1Char('\\') && quote != QLatin1Char('\'') && i + 1 < line.size();
        if (escapes) {
            const QChar next = line.at(++i);
            word += !quote.isNull() && next == QLatin1Char('n') ? QLatin1Char('\n') : next;
            inWord = true;
        } else if (!quote.isNull()) {
            if (c == quote)
                quote = QChar();
            else
                word += c;
        } else if (c == QLatin1Char('"') || c == QLatin1Char('\'')) {
            quote = c;
            inWord = true;
        } else if (c.isSpace()) {
            if (inWord)
                words->append(word);
            word.clear();
            inWord = false;
        } else if (c == QLatin1Char('#') && !inWord) {
            break;
        } else {
            word += c;
            inWord = true;
        }
    }
    if (inWord)
        words->append(word);
    return quote.isNull();
}

QString Commands::problemWith(const QString& line)
{
    QStringList words;
    if (!split(line, &words))
        return QStringLiteral("a quote is not closed");
    return words.isEmpty() || findCommand(words.first()) ? QString() : unknown(words.first());
}

QString Commands::problemWithRegistration(const QString& words)
{
    Policy policy = Policy::Automatic;
    int delay = 0;
    QStringList args;
    const Outcome read = split(words, &args) ? readPolicy(args, &policy, &delay) : failure();
    return read.ok || !read.text.isEmpty() ? read.text : usage(*findCommand(QStringLiteral("registration")));
}

bool Commands::run(const QString& line, QString* reply)
{
    *reply = problemWith(line);
    if (!reply->isEmpty())
        return false;
    QStringList words;
    split(line, &words);
    if (words.isEmpty())
        return true;
    const Command& command = *findCommand(words.takeFirst());
    const Outcome outcome = command.run(m_simulator, words);
    *reply = !outcome.ok && outcome.text.isEmpty() ? usage(command) : outcome.text;
    return outcome.ok;
}

QString Commands::help()
{
    QString text;
    for (const Command& command : commands) {
        for (const QString& form : QString::fromUtf16(command.forms).split(QLatin1Char('\n'))) {
            const QString usedAs = form.section(QLatin1String("  "), 0, 0);
            const QString what = form.section(QLatin1String("  "), 1);
            // A long form has its explanation on a line of its own, in the same column.
            const QString gap =
                usedAs.size() > helpColumn ? QLatin1Char('\n') + QString(helpColumn + 2, QLatin1Char(' ')) : QString();
            text += QStringLiteral("  %1%2  %3\n").arg(usedAs.leftJustified(helpColumn), gap, what);
        }
    }
    return text +
           QStringLiteral("Fields of a person: %1.\nBlanks separate words; \"quotes\" keep them together (\\n in them "
                          "is a line break); # begins a comment.")
               .arg(personFieldNames().join(QLatin1String(", ")));
}

} // namespace zelcore
