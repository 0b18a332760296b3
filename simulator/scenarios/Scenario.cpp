// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/Scenario.h>

#include <simulator/scenarios/Commands.h>
#include <simulator/scenarios/MemberReader.h>
#include <simulator/scenarios/Words.h>
#include <simulator/world/World.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <algorithm>

using namespace Qt::StringLiterals;

// Its initialiser must be called by name from outside a namespace: the linker drops it from a static library else.
static void registerScenarioFiles()
{
    Q_INIT_RESOURCE(scenarios);
}

namespace zelcore {

namespace {

const QString shippedFolder = u":/zelcore/scenarios/"_s;

/// Makes commands of the members of a world.
class WorldReader
{
public:
    explicit WorldReader(QList<Scenario::Step>* steps)
        : m_steps(steps)
    {
    }

    void read(MemberReader& world)
    {
        world.object(u"profile"_s, [&](MemberReader& profile) {
            add(profile.place(), QStringList{u"profile"_s} + profile.fields());
        });
        addMembers(world, u"permissions"_s, u"permission"_s);
        if (world.has(u"registration"_s))
            add(world.placeOf(u"registration"_s),
                QStringList{u"registration"_s} + world.word(u"registration"_s).split(u' '));
        addWord(world, u"state"_s, {u"state"_s});
        addMembers(world, u"registered"_s, u"registered"_s);
        addWord(world, u"reading"_s, {u"reading"_s});
        addMembers(world, u"targets"_s, u"target"_s);
        readPeople(world);
        readPart(world);
        world.object(u"applications"_s, [this](MemberReader& applications) { readApplications(applications); });
        addMembers(world, u"ecoIds"_s, u"eco"_s);
        addMembers(world, u"ecoIdStatus"_s, u"eco-status"_s);
    }

private:
    void add(const QString& place, const QStringList& words) { m_steps->append({place, QString(), m_whose + words}); }

    void addWord(MemberReader& reader, const QString& key, const QStringList& command)
    {
        if (reader.has(key))
            add(reader.placeOf(key), command + QStringList{reader.word(key)});
    }

    /// One command for each member of an object.
    void addMembers(MemberReader& parent, const QString& key, const QString& command)
    {
        parent.object(key, [&](MemberReader& reader) {
            for (const QString& name : reader.keys())
                add(reader.placeOf(name), {command, name, reader.word(name)});
        });
    }

    void readPeople(MemberReader& world)
    {
        world.object(u"generate"_s, [&](MemberReader& generate) {
            add(generate.place(), {u"generate"_s, generate.word(u"count"_s), generate.word(u"seed"_s, u"1"_s)});
        });
        world.each(u"contacts"_s, [&](MemberReader& contact) {
            const QStringList words{u"contact"_s, u"add"_s, contact.word(u"handle"_s)};
            add(contact.place(), words + contact.fields());
        });
    }

    /// What there is for all applications, and for one.
    void readPart(MemberReader& part)
    {
        addWord(part, u"latency"_s, {u"latency"_s});
        addWord(part, u"requestLatency"_s, {u"request"_s, u"latency"_s});
        part.object(u"box"_s, [this](MemberReader& box) { readBox(box); });
    }

    void readBox(MemberReader& box)
    {
        addWord(box, u"limit"_s, {u"box"_s, u"limit"_s});
        box.each(u"icons"_s, [&](MemberReader& icon) {
            add(icon.place(), {u"box"_s, u"icon"_s, icon.word(u"id"_s), icon.word(u"size"_s)});
        });
        box.each(u"items"_s, [&](MemberReader& item) {
            add(item.place(), {u"box"_s, u"add"_s, item.word(u"text"_s), item.word(u"cookie"_s), item.word(u"icon"_s)});
        });
    }

    void readApplications(MemberReader& applications)
    {
        for (const QString& application : applications.keys()) {
            m_whose = {u"app"_s, application};
            applications.object(application, [this](MemberReader& one) { readPart(one); });
        }
        m_whose.clear();
    }

    QList<Scenario::Step>* const m_steps;
    QStringList m_whose; ///< Before the words of a command that is for one application.
};

void readStep(MemberReader& reader, QList<Scenario::Step>* steps)
{
    Scenario::Step step;
    step.place = reader.place();
    step.line = reader.word(u"command"_s);
    bool isNumber = false;
    step.at = reader.word(u"at"_s, u"0"_s).toInt(&isNumber);
    if (!isNumber || step.at < 0)
        reader.complain(u"at"_s, u"is no number from 0"_s);
    const QString after = reader.word(u"after"_s, u"start"_s);
    step.afterRegistration = after == "registered"_L1;
    if (!step.afterRegistration && after != "start"_L1)
        reader.complain(u"after"_s, u"is neither \"start\" nor \"registered\""_s);
    QString problem;
    step.words = Commands::split(step.line, &problem).value_or(QStringList());
    if (!problem.isEmpty())
        reader.complain(u"command"_s, u"cannot be read: "_s + problem);
    steps->append(step);
}

/// Empty, or what is wrong with \a text by its form, and where.
QString parse(const QByteArray& text, Scenario* scenario)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (error.error != QJsonParseError::NoError)
        return u"line %1: %2"_s.arg(1 + text.left(error.offset).count('\n')).arg(error.errorString());
    if (!document.isObject())
        return u"a scenario is one JSON object, not an array"_s;
    MemberProblem problem;
    MemberReader root(document.object(), QString(), &problem);
    root.word(u"description"_s);
    root.object(u"world"_s, [&](MemberReader& world) { WorldReader(&scenario->world).read(world); });
    root.each(u"timeline"_s, [&](MemberReader& step) { readStep(step, &scenario->timeline); });
    root.end();
    const MemberLines lines(text);
    if (problem.what.isEmpty() && !lines.twice().isEmpty())
        problem = {lines.twice(), u"stands there twice"_s};
    for (QList<Scenario::Step>* const steps : {&scenario->world, &scenario->timeline}) {
        for (Scenario::Step& step : *steps)
            step.place = u"line %1: %2"_s.arg(lines.of(step.place)).arg(step.place);
    }
    return problem.what.isEmpty() ? QString() : u"line %1: %2"_s.arg(lines.of(problem.member)).arg(problem.sentence());
}

/// The word for a picture, which as a file is found from the folder that the scenario is in.
QString foundFrom(const QDir& folder, const QString& picture)
{
    bool isSize = false;
    picture.toInt(&isSize);
    return isSize || picture.isEmpty() || picture == "none"_L1 ? picture : folder.filePath(picture);
}

void findPictures(const QDir& folder, Scenario::Step& step)
{
    const QString field = u"picture="_s;
    for (QString& word : step.words) {
        if (word.startsWith(field))
            word = field + foundFrom(folder, word.mid(field.size()));
    }
    if (step.command().mid(0, 2) == QStringList{u"box"_s, u"icon"_s})
        step.words.last() = foundFrom(folder, step.words.last());
}

} // namespace

std::optional<Scenario> Scenario::load(const QString& nameOrPath, QString* problem)
{
    registerScenarioFiles();
    problem->clear();
    const QString shipped = shippedFolder + nameOrPath + u".json"_s;
    QFile file(QFileInfo::exists(nameOrPath) || !QFileInfo::exists(shipped) ? nameOrPath : shipped);
    if (!file.open(QIODevice::ReadOnly)) {
        *problem =
            u"%1: %2; these ship with the simulator: %3"_s.arg(nameOrPath, file.errorString(), names().join(", "_L1));
        return std::nullopt;
    }
    Scenario scenario;
    scenario.name = nameOrPath;
    const QString wrong = parse(file.readAll(), &scenario);
    const QDir folder = QFileInfo(file.fileName()).dir();
    for (QList<Step>* const steps : {&scenario.world, &scenario.timeline}) {
        for (Step& step : *steps)
            findPictures(folder, step);
    }
    if (wrong.isEmpty())
        return scenario;
    *problem = nameOrPath + u": "_s + wrong;
    return std::nullopt;
}

QStringList Scenario::names()
{
    registerScenarioFiles();
    QStringList names = QDir(shippedFolder).entryList({u"*.json"_s}, QDir::Files, QDir::Name);
    for (QString& name : names)
        name.chop(5);
    return names;
}

QString Scenario::problemIn(const World& current) const
{
    World copy(current);
    QList<Step> steps = timeline;
    std::stable_sort(steps.begin(), steps.end(), [](const Step& one, const Step& other) { return one.at < other.at; });
    QString reply;
    for (const Step& step : world + steps) {
        if (!Commands(copy).run(step.words, &reply))
            return u"%1: %2: %3"_s.arg(name, step.place, reply);
    }
    return {};
}

} // namespace zelcore
