// SPDX-License-Identifier: Apache-2.0
#include <zelcore/Simulator.h>

#include <simulator/Commands.h>
#include <simulator/PersonJson.h>
#include <simulator/SimulatorPrivate.h>
#include <simulator/Wire.h>

#include <QtCore/QDir>

namespace zelcore {

Simulator::Simulator(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<SimulatorPrivate>(this))
{
}

Simulator::~Simulator() = default;

// --- Life -------------------------------------------------------------------------------------------------------

void Simulator::setRoot(const QString& folder)
{
    if (d->running)
        d->refuse(QStringLiteral("the folder cannot change while the service runs"));
    else
        d->root = QDir(folder).absolutePath();
}

QString Simulator::root() const
{
    return d->root;
}

bool Simulator::exportRoot() const
{
    return !d->root.isEmpty() && qputenv("PPS_ROOT", QFile::encodeName(d->root));
}

bool Simulator::start(QString* error)
{
    QString problem;
    const bool started = d->start(&problem);
    if (error)
        *error = problem;
    return started;
}

void Simulator::stop()
{
    d->stop();
}

bool Simulator::isRunning() const
{
    return d->running;
}

void Simulator::goAway()
{
    d->goAway();
}

bool Simulator::comeBack(QString* error)
{
    QString problem;
    const bool back = d->comeBack(&problem);
    if (error)
        *error = problem;
    return back;
}

int Simulator::clientCount() const
{
    return int(d->service.desk().sessions.size());
}

// --- Registration and permissions -------------------------------------------------------------------------------

void Simulator::setRegistrationPolicy(RegistrationPolicy policy, const QString& fixedState, int delay)
{
    d->service.registrar().setPolicy(policy, fixedState, delay);
}

void Simulator::setRegistrationState(const QString& state)
{
    d->service.setRegistrationState(state);
}

QString Simulator::registrationState() const
{
    return d->service.registrationState();
}

QStringList Simulator::registrationStates()
{
    static const QStringList states{QStringLiteral("Success"),
                                    QStringLiteral("Unknown"),
                                    QStringLiteral("Unregistered"),
                                    QStringLiteral("Pending"),
                                    QStringLiteral("BlockedByUser"),
                                    QStringLiteral("BlockedByTov"),
                                    QStringLiteral("NoDataConnection"),
                                    QStringLiteral("UnexpectedError"),
                                    QStringLiteral("InvalidUuid"),
                                    QStringLiteral("TemporaryError"),
                                    QStringLiteral("MaximumUsersReached"),
                                    QStringLiteral("Expired"),
                                    QStringLiteral("CancelledByUser"),
                                    QStringLiteral("MaximumAppsReached"),
                                    QStringLiteral("ZelDisabled"),
                                    QStringLiteral("BlockedEnterprisePerimeter")};
    return states;
}

Permissions Simulator::permissions() const
{
    return d->world.permissions();
}

void Simulator::setPermissions(const Permissions& permissions)
{
    d->world.setPermissions(permissions);
}

// --- The device's own user --------------------------------------------------------------------------------------

Person Simulator::profile() const
{
    return d->world.profile();
}

void Simulator::setProfile(const Person& profile)
{
    Person complete = profile;
    complete.avatarId = d->world.profile().avatarId;
    complete.avatarMimeType = d->world.profile().avatarMimeType;
    d->done(d->world.setProfile(complete));
}

void Simulator::setProfilePicture(const QByteArray& data)
{
    d->done(d->setPicture(d->world.profile(), data, false));
}

QByteArray Simulator::picture(const QString& hash) const
{
    return d->world.picture(hash);
}

// --- Contacts ---------------------------------------------------------------------------------------------------

QString Simulator::addContact(const Person& contact, bool installed)
{
    Person complete = contact;
    return d->done(d->world.addContact(complete, installed)) ? complete.userId : QString();
}

QString Simulator::addContact(const QString& displayName)
{
    Person contact;
    contact.displayName = displayName;
    return addContact(contact);
}

void Simulator::generateContacts(int count, quint32 seed)
{
    d->done(d->generate(count, seed));
}

bool Simulator::changeContact(const Person& contact)
{
    return d->done(d->world.changeContact(contact));
}

bool Simulator::removeContact(const QString& handle)
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return d->done(person ? d->world.removeContact(person->userId) : problem);
}

bool Simulator::installApplication(const QString& handle)
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return d->done(person ? d->world.setInstalled(person->userId, true) : problem);
}

bool Simulator::uninstallApplication(const QString& handle)
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return d->done(person ? d->world.setInstalled(person->userId, false) : problem);
}

bool Simulator::setContactPicture(const QString& handle, const QByteArray& data)
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return d->done(person ? d->setPicture(*person, data, true) : problem);
}

Person Simulator::contact(const QString& handle) const
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return person ? *person : Person();
}

QList<Person> Simulator::contacts() const
{
    QList<Person> people;
    people.reserve(d->world.installed().size());
    for (const QString& userId : d->world.installed())
        people.append(*d->world.contact(userId));
    return people;
}

int Simulator::contactCount() const
{
    return int(d->world.everybody().size());
}

bool Simulator::sendInvitation(const QString& handle)
{
    QString problem;
    const Person* person = d->find(handle, &problem);
    return d->done(person ? d->invite(person->userId) : problem);
}

void Simulator::setActivity(Activity activity, double perSecond, quint32 seed)
{
    d->activity.set(activity, perSecond, seed);
}

// --- Profile box ------------------------------------------------------------------------------------------------

QList<BoxItem> Simulator::boxItems() const
{
    return d->world.boxItems();
}

QList<BoxIcon> Simulator::boxIcons() const
{
    return d->world.boxIcons();
}

QString Simulator::addBoxItem(const QString& text, const QString& cookie, const QString& iconId)
{
    BoxItem item{QString(), text, cookie, iconId};
    return d->done(d->world.addBoxItem(item)) ? item.id : QString();
}

bool Simulator::changeBoxItem(const BoxItem& item)
{
    return d->done(d->world.changeBoxItem(item));
}

bool Simulator::removeBoxItem(const QString& itemId)
{
    return d->done(d->world.removeBoxItem(itemId));
}

void Simulator::clearBox()
{
    const QList<BoxItem> items = d->world.boxItems();
    for (const BoxItem& item : items)
        d->world.removeBoxItem(item.id);
}

bool Simulator::addBoxIcon(int iconId, const QByteArray& data)
{
    return d->done(d->world.addBoxIcon(QString::number(iconId), data));
}

bool Simulator::removeBoxIcon(int iconId)
{
    return d->done(d->world.removeBoxIcon(QString::number(iconId)));
}

// --- Eco identifiers --------------------------------------------------------------------------------------------

void Simulator::setEcoId(const QString& ppId, const QString& ecoId)
{
    d->world.setEcoId(ppId, ecoId);
}

void Simulator::setEcoIdStatus(const QString& ecoId, const QString& status)
{
    d->world.setEcoIdStatus(ecoId, status);
}

// --- Trouble and curiosity --------------------------------------------------------------------------------------

void Simulator::injectFault(Fault fault, int amount, const QString& type)
{
    d->outbox.addFault(fault, amount, type);
}

void Simulator::sendMessage(const QString& type, const QJsonObject& body)
{
    const QByteArray json = wire::text(QJsonObject{{type, body}});
    const auto everyone = d->service.desk().sessions;
    for (const auto& [client, session] : everyone)
        d->outbox.sendJson(client, type, json);
}

void Simulator::sendRecord(const QByteArray& record)
{
    const auto everyone = d->service.desk().sessions;
    for (const auto& [client, session] : everyone)
        d->outbox.sendRecord(client, record);
}

// --- Commands and scenarios -------------------------------------------------------------------------------------

bool Simulator::execute(const QString& commandLine, QString* reply)
{
    QString answer;
    const bool understood = Commands(*d).run(commandLine, &answer);
    if (reply)
        *reply = answer;
    return understood;
}

QString Simulator::commandHelp()
{
    return Commands::help();
}

bool Simulator::loadScenario(const QString& scenario, QString* error)
{
    QString problem;
    const std::optional<Scenario> loaded = Scenario::load(scenario, &problem);
    if (loaded)
        d->apply(*loaded);
    if (error)
        *error = problem;
    return loaded.has_value();
}

QStringList Simulator::scenarioNames()
{
    return Scenario::names();
}

} // namespace zelcore
