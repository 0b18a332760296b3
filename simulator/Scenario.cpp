// SPDX-License-Identifier: Apache-2.0
#include <simulator/Scenario.h>

#include <simulator/Commands.h>
#include <simulator/People.h>
#include <simulator/PersonJson.h>
#include <simulator/World.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QTimer>

#include <functional>
#include <utility>

// Its initialiser must be called by name from outside a namespace: the linker drops it from a static library else.
static void registerScenarioFiles()
{
    Q_INIT_RESOURCE(scenarios);
}

namespace zelcore {

namespace {

const QString shippedFolder = QStringLiteral(":/zelcore/scenarios/");

/// Takes the members of an object one by one, and remembers the first thing that is wrong with any of them.
class Reader
{
public:
    Reader(const QJsonObject& object, const QString& place, QString* problem)
        : m_object(object)
        , m_place(place)
        , m_problem(problem)
    {
    }

    bool has(QLatin1String key) const { return m_object.contains(key); }

    QString text(QLatin1String key, const QString& preset = QString())
    {
        const QJsonValue value = take(key);
        if (!value.isUndefined() && !value.isString())
            complain(key, QStringLiteral("is no text"));
        return value.toString(preset);
    }

    int number(QLatin1String key, int preset = 0)
    {
        const QJsonValue value = take(key);
        if (!value.isUndefined() && (!value.isDouble() || value.toInt(-1) < 0))
            complain(key, QStringLiteral("is no number from 0"));
        return value.toInt(preset);
    }

    bool flag(QLatin1String key, bool preset)
    {
        const QJsonValue value = take(key);
        if (!value.isUndefined() && !value.isBool())
            complain(key, QStringLiteral("is neither true nor false"));
        return value.toBool(preset);
    }

    QJsonObject object(QLatin1String key)
    {
        const QJsonValue value = take(key);
        if (!value.isUndefined() && !value.isObject())
            complain(key, QStringLiteral("is no object"));
        return value.toObject();
    }

    /// Calls \a visit with each object of an array.
    void each(QLatin1String key, const std::function<void(const QJsonObject&, const QString& place)>& visit)
    {
        const QJsonValue value = take(key);
        if (!value.isUndefined() && !value.isArray())
            complain(key, QStringLiteral("is no array"));
        const QJsonArray array = value.toArray();
        for (qsizetype i = 0; i < array.size(); ++i) {
            const QString place = QStringLiteral("%1.%2[%3]").arg(m_place, key).arg(i);
            if (array.at(i).isObject())
                visit(array.at(i).toObject(), place);
            else
                complain(key, QStringLiteral("holds something that is no object"));
        }
    }

    /// Everything that nobody took, for objects with members of any name.
    QJsonObject rest() { return std::exchange(m_object, {}); }

    /// Whatever is left was misspelt.
    void end()
    {
        if (!m_object.isEmpty())
            complain(QLatin1String(), QStringLiteral("\"%1\" means nothing here").arg(m_object.begin().key()));
    }

    void complain(QLatin1String key, const QString& what)
    {
        if (m_problem->isEmpty())
            *m_problem = key.isEmpty() ? QStringLiteral("%1: %2").arg(m_place, what)
                                       : QStringLiteral("%1: \"%2\" %3").arg(m_place, key, what);
    }

private:
    QJsonValue take(QLatin1String key) { return m_object.take(key); }

    QJsonObject m_object;
    QString m_place;
    QString* m_problem;
};

Scenario::Picture readPicture(Reader& reader, QLatin1String key)
{
    const Scenario::Picture picture{reader.number(key)};
    if (picture.size > World::largestPicture)
        reader.complain(key, QStringLiteral("is more than %1 bytes").arg(World::largestPicture));
    return picture;
}

void readProfile(Reader reader, Scenario* scenario)
{
    if (reader.has(QLatin1String("picture")))
        scenario->profilePicture = readPicture(reader, QLatin1String("picture"));
    const QJsonObject fields = reader.rest();
    Person person;
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        const QString problem = setPersonField(field.key(), field.value().toVariant().toString(), person);
        if (!problem.isEmpty())
            reader.complain(QLatin1String(), problem);
    }
    scenario->profile = fields;
}

void readContact(Reader reader, Scenario* scenario)
{
    Scenario::Contact contact;
    contact.installed = reader.flag(QLatin1String("installed"), true);
    contact.picture = readPicture(reader, QLatin1String("picture"));
    const QJsonObject fields = reader.rest();
    for (auto field = fields.begin(); field != fields.end(); ++field) {
        const QString problem = setPersonField(field.key(), field.value().toVariant().toString(), contact.person);
        if (!problem.isEmpty())
            reader.complain(QLatin1String(), problem);
    }
    if (contact.person.handle.isEmpty() && contact.person.displayName.isEmpty())
        reader.complain(QLatin1String(), QStringLiteral("a contact needs a handle or a display name"));
    scenario->contacts.append(contact);
}

void readBox(Reader reader, Scenario* scenario, QString* problem)
{
    reader.each(QLatin1String("icons"), [&](const QJsonObject& object, const QString& place) {
        Reader icon(object, place, problem);
        scenario->icons.append({icon.number(QLatin1String("id")), readPicture(icon, QLatin1String("size"))});
        icon.end();
    });
    reader.each(QLatin1String("items"), [&](const QJsonObject& object, const QString& place) {
        Reader item(object, place, problem);
        BoxItem read;
        read.text = item.text(QLatin1String("text"));
        read.cookie = item.text(QLatin1String("cookie"));
        if (item.has(QLatin1String("icon")))
            read.iconId = QString::number(item.number(QLatin1String("icon")));
        scenario->items.append(read);
        item.end();
    });
    reader.end();
}

QHash<QString, QString> readTexts(Reader reader)
{
    QHash<QString, QString> texts;
    const QJsonObject object = reader.rest();
    for (auto member = object.begin(); member != object.end(); ++member) {
        if (!member.value().isString())
            reader.complain(QLatin1String(), QStringLiteral("\"%1\" is no text").arg(member.key()));
        texts.insert(member.key(), member.value().toString());
    }
    return texts;
}

void readWorld(Reader world, Scenario* scenario, QString* problem)
{
    const auto inner = [&](QLatin1String key) {
        return Reader(world.object(key), QStringLiteral("world.") + key, problem);
    };
    if (world.has(QLatin1String("profile")))
        readProfile(inner(QLatin1String("profile")), scenario);
    if (world.has(QLatin1String("permissions"))) {
        Reader permissions = inner(QLatin1String("permissions"));
        scenario->permissions = Permissions{permissions.flag(QLatin1String("showAppBox"), true),
                                            permissions.flag(QLatin1String("zelInvites"), true),
                                            permissions.flag(QLatin1String("zelSetup"), true)};
        permissions.end();
    }
    scenario->registration = world.text(QLatin1String("registration"));
    if (!scenario->registration.isEmpty()) {
        const QString wrong = Commands::problemWithRegistration(scenario->registration);
        if (!wrong.isEmpty())
            world.complain(QLatin1String("registration"), QStringLiteral("cannot be: ") + wrong);
    }
    Reader generate = inner(QLatin1String("generate"));
    scenario->generated = generate.number(QLatin1String("count"));
    scenario->seed = quint32(generate.number(QLatin1String("seed"), 1));
    generate.end();
    world.each(QLatin1String("contacts"), [&](const QJsonObject& object, const QString& place) {
        readContact(Reader(object, place, problem), scenario);
    });
    readBox(inner(QLatin1String("box")), scenario, problem);
    scenario->ecoIds = readTexts(inner(QLatin1String("ecoIds")));
    scenario->ecoIdStates = readTexts(inner(QLatin1String("ecoIdStatus")));
    world.end();
}

void readEntry(Reader reader, Scenario* scenario)
{
    Scenario::Entry entry;
    entry.at = reader.number(QLatin1String("at"));
    entry.command = reader.text(QLatin1String("command"));
    const QString after = reader.text(QLatin1String("after"), QStringLiteral("start"));
    entry.afterRegistration = after == QLatin1String("registered");
    if (!entry.afterRegistration && after != QLatin1String("start"))
        reader.complain(QLatin1String("after"), QStringLiteral("is neither \"start\" nor \"registered\""));
    const QString wrong = Commands::problemWith(entry.command);
    if (!wrong.isEmpty())
        reader.complain(QLatin1String("command"), QStringLiteral("cannot run: ") + wrong);
    reader.end();
    scenario->timeline.append(entry);
}

} // namespace

QByteArray Scenario::Picture::bytes() const
{
    return PeopleMaker::picture(size, quint32(size));
}

std::optional<Scenario> Scenario::parse(const QByteArray& text, QString* problem)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject()) {
        *problem = error.error == QJsonParseError::NoError
                       ? QStringLiteral("a scenario is one JSON object, not an array")
                       : QStringLiteral("no JSON: %1 at byte %2").arg(error.errorString()).arg(error.offset);
        return std::nullopt;
    }
    problem->clear();
    Scenario scenario;
    Reader root(document.object(), QStringLiteral("scenario"), problem);
    root.text(QLatin1String("description"));
    readWorld(Reader(root.object(QLatin1String("world")), QStringLiteral("world"), problem), &scenario, problem);
    root.each(QLatin1String("timeline"), [&](const QJsonObject& object, const QString& place) {
        readEntry(Reader(object, place, problem), &scenario);
    });
    root.end();
    return problem->isEmpty() ? std::optional(scenario) : std::nullopt;
}

std::optional<Scenario> Scenario::load(const QString& nameOrPath, QString* problem)
{
    registerScenarioFiles();
    const QString shipped = shippedFolder + nameOrPath + QStringLiteral(".json");
    QFile file(QFileInfo::exists(nameOrPath) || !QFileInfo::exists(shipped) ? nameOrPath : shipped);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem = QStringLiteral("%1: %2; these ship with the simulator: %3")
                       .arg(nameOrPath, file.errorString(), names().join(QLatin1String(", ")));
        return std::nullopt;
    }
    const std::optional<Scenario> scenario = parse(file.readAll(), problem);
    if (!scenario)
        problem->prepend(nameOrPath + QStringLiteral(": "));
    return scenario;
}

QStringList Scenario::names()
{
    registerScenarioFiles();
    QStringList names = QDir(shippedFolder).entryList({QStringLiteral("*.json")}, QDir::Files, QDir::Name);
    for (QString& name : names)
        name.chop(5);
    return names;
}

// --- Timeline ---------------------------------------------------------------------------------------------------

Timeline::Timeline(QObject* parent)
    : QObject(parent)
{
}

void Timeline::setEntries(const QList<Scenario::Entry>& entries)
{
    stop();
    m_entries = entries;
}

void Timeline::start()
{
    ++m_run;
    m_running = true;
    m_registered = false;
    schedule(false);
}

void Timeline::stop()
{
    ++m_run;
    m_running = false;
}

void Timeline::registered()
{
    if (m_running && !std::exchange(m_registered, true))
        schedule(true);
}

void Timeline::schedule(bool afterRegistration)
{
    for (const Scenario::Entry& entry : std::as_const(m_entries)) {
        if (entry.afterRegistration != afterRegistration)
            continue;
        QTimer::singleShot(entry.at, this, [this, command = entry.command, run = m_run] {
            if (run == m_run)
                Q_EMIT due(command);
        });
    }
}

} // namespace zelcore
