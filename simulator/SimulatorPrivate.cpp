// SPDX-License-Identifier: Apache-2.0
#include <simulator/SimulatorPrivate.h>

#include <simulator/Commands.h>
#include <simulator/PersonJson.h>
#include <simulator/Wire.h>

#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>

namespace zelcore {

namespace {

Q_LOGGING_CATEGORY(lcZelcore, "zelcore")

/// Room for the records of tens of thousands of contacts, which an application that comes back is told at once.
constexpr qint64 queueLimit = qint64(128) * 1024 * 1024;

} // namespace

using vx::system::ObjectServer;

SimulatorPrivate::SimulatorPrivate(Simulator* simulator)
    : q(simulator)
    , outbox(server)
    , service(world, outbox)
    , activity(world, [this](const QString& userId) { invite(userId); })
{
    server.setQueueLimit(queueLimit);
    connectParts();
}

SimulatorPrivate::~SimulatorPrivate()
{
    // Nobody is told any more: who watches may be half gone.
    q->blockSignals(true);
    stop();
}

void SimulatorPrivate::connectParts()
{
    QObject::connect(&server, &ObjectServer::clientConnected, q, [this](int client) {
        service.connected(client);
        Q_EMIT q->clientCountChanged(q->clientCount());
    });
    QObject::connect(&server, &ObjectServer::clientDisconnected, q, [this](int client) {
        service.disconnected(client);
        Q_EMIT q->clientCountChanged(q->clientCount());
    });
    QObject::connect(&server, &ObjectServer::recordReceived, &service, &CoreService::received);
    QObject::connect(&service, &CoreService::messageReceived, q, &Simulator::messageReceived);
    QObject::connect(&service, &CoreService::refused, q, [this](const QString& line) { refuse(line); });
    QObject::connect(&service.registrar(), &Registrar::requested, q, &Simulator::registrationRequested);
    QObject::connect(&service.registrar(), &Registrar::stateChanged, q, [this](const QString& state) {
        if (state == QLatin1String("Success"))
            timeline.registered();
        Q_EMIT q->registrationStateChanged(state);
    });
    QObject::connect(&outbox, &Outbox::sent, q, &Simulator::messageSent);
    QObject::connect(&outbox, &Outbox::lost, q, [this](int client, const QString& why) {
        refuse(QStringLiteral("application %1: %2").arg(QString::number(client), why));
    });
    QObject::connect(&targets, &InvocationTargets::received, q, &Simulator::invocationReceived);
    QObject::connect(&targets, &InvocationTargets::refused, q, [this](const QString& line) { refuse(line); });
    QObject::connect(&targets, &InvocationTargets::invited, q, [this](const QString& ecoId) {
        if (world.ecoIdStatus(ecoId) == QLatin1String("Unknown"))
            world.setEcoIdStatus(ecoId, QStringLiteral("PendingContactExists"));
    });
    QObject::connect(&timeline, &Timeline::due, q, [this](const QString& command) {
        QString reply;
        if (!q->execute(command, &reply))
            refuse(QStringLiteral("%1: %2").arg(command, reply));
        Q_EMIT q->commandExecuted(command, reply);
    });
}

// --- Life -------------------------------------------------------------------------------------------------------

bool SimulatorPrivate::makeRoot(QString* error)
{
    if (!root.isEmpty())
        return true;
    temporary = std::make_unique<QTemporaryDir>(QDir::tempPath() + QStringLiteral("/zelcore-XXXXXX"));
    if (!temporary->isValid()) {
        *error = QStringLiteral("no temporary folder: %1").arg(temporary->errorString());
        return false;
    }
    root = temporary->path();
    return true;
}

bool SimulatorPrivate::listen(QString* error)
{
    return server.listen(root + QStringLiteral("/services/zelcore/platform"), error);
}

bool SimulatorPrivate::start(QString* error)
{
    if (running)
        return true;
    if (!makeRoot(error) || !listen(error))
        return false;
    if (!targets.start(root, error)) {
        server.close();
        return false;
    }
    running = true;
    away = false;
    activity.setPaused(false);
    timeline.start();
    Q_EMIT q->runningChanged(true);
    return true;
}

void SimulatorPrivate::stop()
{
    if (!running)
        return;
    goAway();
    running = false;
    away = false;
    activity.setPaused(true);
    timeline.stop();
    targets.stop();
    Q_EMIT q->runningChanged(false);
}

void SimulatorPrivate::goAway()
{
    if (!running || away)
        return;
    away = true;
    service.suspend();
    server.close();
}

bool SimulatorPrivate::comeBack(QString* error)
{
    if (!running) {
        *error = QStringLiteral("the service was never started");
        return false;
    }
    if (!away)
        return true;
    if (!listen(error))
        return false;
    away = false;
    return true;
}

// --- What several ways in share ---------------------------------------------------------------------------------

bool SimulatorPrivate::done(const QString& problem)
{
    if (!problem.isEmpty())
        refuse(problem);
    return problem.isEmpty();
}

void SimulatorPrivate::refuse(const QString& line)
{
    qCWarning(lcZelcore).noquote() << line;
    Q_EMIT q->refused(line);
}

const Person* SimulatorPrivate::find(const QString& handleOrUserId, QString* problem) const
{
    const Person* person = world.contactByHandle(handleOrUserId);
    if (!person)
        person = world.contact(handleOrUserId);
    if (!person)
        *problem = QStringLiteral("no contact has the handle \"%1\"").arg(handleOrUserId);
    return person;
}

QString SimulatorPrivate::generate(int count, quint32 seed)
{
    PeopleMaker maker(seed);
    for (const QByteArray& picture : maker.pictures())
        world.keepPicture(picture);
    for (int i = 0; i < count; ++i) {
        Person person = maker.next(world.addedContacts());
        const QString problem = world.addContact(person, true);
        if (!problem.isEmpty())
            return problem;
    }
    return {};
}

QString SimulatorPrivate::setPicture(Person person, const QByteArray& data, bool isContact)
{
    const QString problem = data.isEmpty() ? QString() : World::pictureProblem(data);
    if (!problem.isEmpty())
        return problem;
    person.avatarId = data.isEmpty() ? QString() : world.keepPicture(data);
    person.avatarMimeType = data.isEmpty() ? QString() : World::mimeTypeOf(data);
    return isContact ? world.changeContact(person) : world.setProfile(person);
}

QString SimulatorPrivate::invite(const QString& userId)
{
    service.desk().broadcast(QLatin1String("connectionInvitationReceived"),
                             wire::text(QJsonObject{{QStringLiteral("userId"), userId}}));
    return {};
}

void SimulatorPrivate::apply(const Scenario& scenario)
{
    if (scenario.permissions)
        world.setPermissions(*scenario.permissions);
    if (scenario.profile) {
        Person profile = world.profile();
        for (auto field = scenario.profile->begin(); field != scenario.profile->end(); ++field)
            done(setPersonField(field.key(), field.value().toVariant().toString(), profile));
        done(world.setProfile(profile));
    }
    if (scenario.profilePicture)
        done(setPicture(world.profile(), scenario.profilePicture->bytes(), false));
    if (!scenario.registration.isEmpty())
        q->execute(QStringLiteral("registration ") + scenario.registration);
    done(generate(scenario.generated, scenario.seed));
    for (const Scenario::Contact& contact : scenario.contacts) {
        Person person = contact.person;
        if (done(world.addContact(person, contact.installed)) && contact.picture.size > 0)
            done(setPicture(person, contact.picture.bytes(), true));
    }
    for (const Scenario::Icon& icon : scenario.icons)
        done(world.addBoxIcon(QString::number(icon.id), icon.picture.bytes()));
    for (BoxItem item : scenario.items)
        done(world.addBoxItem(item));
    for (auto ecoId = scenario.ecoIds.cbegin(); ecoId != scenario.ecoIds.cend(); ++ecoId)
        world.setEcoId(ecoId.key(), ecoId.value());
    for (auto state = scenario.ecoIdStates.cbegin(); state != scenario.ecoIdStates.cend(); ++state)
        world.setEcoIdStatus(state.key(), state.value());
    timeline.setEntries(scenario.timeline);
    if (running)
        timeline.start();
}

} // namespace zelcore
