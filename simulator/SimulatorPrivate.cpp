// SPDX-License-Identifier: Apache-2.0
#include <simulator/SimulatorPrivate.h>

#include <simulator/ClientLibrary.h>
#include <simulator/scenarios/Commands.h>
#include <simulator/wire/Wire.h>

#include <QtCore/QDir>
#include <QtCore/QLoggingCategory>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

Q_LOGGING_CATEGORY(lcZelcore, "zelcore")

/// Room for the records of tens of thousands of contacts, which an application that comes back is told at once.
constexpr qint64 queueLimit = qint64(128) * 1024 * 1024;

/// Empty for a record that holds no message.
QString typeOf(const QByteArray& record)
{
    QString problem;
    return wire::read(record, &problem).value_or(wire::Message()).type;
}

} // namespace

using vx::system::ObjectServer;

SimulatorPrivate::SimulatorPrivate(Simulator* simulator)
    : q(simulator)
    , outbox(server, [this](int client) { return uuidOf(client); })
    , service(world, outbox)
    , inbound([this](int client, const QByteArray& record) { service.received(client, record); },
              [this](int client) { return uuidOf(client); })
    , activity(world, [this](const QString& userId) { invite(userId); })
{
    m_age.start();
    server.setQueueLimit(queueLimit);
    connectTap();
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
    connectApplications();
    QObject::connect(&service, &CoreService::messageReceived, q, &Simulator::messageReceived);
    QObject::connect(&service, &CoreService::refused, q, [this](const QString& line) { refuse(line); });
    QObject::connect(&service.registrar(), &Registrar::requested, q, &Simulator::registrationRequested);
    QObject::connect(&service.registrar(), &Registrar::forgetful, q, [this](const QString& why) { warn(why); });
    QObject::connect(&service.registrar(), &Registrar::stateChanged, q, [this](const QString& state) {
        if (state == "Success"_L1)
            timeline.registered();
        Q_EMIT q->registrationStateChanged(state);
    });
    QObject::connect(&outbox, &Outbox::sent, q, &Simulator::messageSent);
    // Nothing that was refused: most often the application went before its answer came.
    QObject::connect(&outbox, &Outbox::lost, q, [this](int client, const QString& why) {
        warn(u"application %1: %2"_s.arg(QString::number(client), why));
    });
    QObject::connect(&targets, &InvocationTargets::passed, q,
                     [this](const QString& target, qint64, const QByteArray& record) {
                         if (replay)
                             replay->invoked(target, record);
                     });
    QObject::connect(&targets, &InvocationTargets::received, q, &Simulator::invocationReceived);
    QObject::connect(&targets, &InvocationTargets::refused, q, [this](const QString& line) { refuse(line); });
    QObject::connect(&targets, &InvocationTargets::invited, &world, &World::invite);
    QObject::connect(&world, &World::permissionsChanged, q, &Simulator::permissionsChanged);
    QObject::connect(&world, &World::profileChanged, q, &Simulator::profileChanged);
    QObject::connect(&world, &World::personChanged, q, &Simulator::contactChanged);
    for (const auto change : {&World::boxItemAdded, &World::boxItemChanged, &World::boxItemRemoved,
                              &World::boxIconAdded, &World::boxIconRemoved})
        QObject::connect(&world, change, q, &Simulator::boxChanged);
    QObject::connect(&timeline, &Timeline::due, q, [this](const Scenario::Step& step) {
        QString reply;
        if (!Commands(*this).run(step.words, &reply))
            refuse(u"%1: %2"_s.arg(step.line, reply));
        Q_EMIT q->commandExecuted(step.line, reply);
    });
}

void SimulatorPrivate::connectApplications()
{
    QObject::connect(&server, &ObjectServer::clientConnected, q, [this](int client) {
        note({.kind = Recording::Entry::Kind::Connected, .application = client});
        if (replay)
            replay->connected(client);
        else
            service.connected(client, server.processOf(client));
        Q_EMIT q->clientConnected(client);
        Q_EMIT q->clientCountChanged(q->clientCount());
    });
    QObject::connect(&server, &ObjectServer::clientDisconnected, q, [this](int client) {
        note({.kind = Recording::Entry::Kind::Disconnected, .application = client});
        if (replay)
            replay->disconnected(client);
        service.disconnected(client);
        Q_EMIT q->clientDisconnected(client);
        Q_EMIT q->clientCountChanged(q->clientCount());
    });
    QObject::connect(&server, &ObjectServer::recordReceived, q, [this](int client, const QByteArray& record) {
        if (replay)
            replay->received(client, record);
        else
            inbound.pass(client, inbound.hasFaults() ? typeOf(record) : QString(), record);
    });
}

/// Connected first: whoever watches sees a record before its answers.
void SimulatorPrivate::connectTap()
{
    using Direction = WireRecord::Direction;
    QObject::connect(&server, &ObjectServer::recordReceived, q,
                     [this](int client, const QByteArray& record) { tap(client, Direction::FromApplication, record); });
    QObject::connect(&outbox, &Outbox::passed, q,
                     [this](int client, const QByteArray& record) { tap(client, Direction::ToApplication, record); });
    QObject::connect(&targets, &InvocationTargets::passed, q,
                     [this](const QString& target, qint64 process, const QByteArray& record) {
                         tap(clientOf(process), Direction::FromApplication, record, target);
                     });
}

void SimulatorPrivate::tap(int client, WireRecord::Direction direction, const QByteArray& bytes, const QString& target)
{
    const WireRecord record{m_born + m_age.elapsed(), client, uuidOf(client), target, direction, bytes};
    using Kind = Recording::Entry::Kind;
    const Kind kind = !target.isEmpty()                                     ? Kind::Invoked
                      : direction == WireRecord::Direction::FromApplication ? Kind::Received
                                                                            : Kind::Sent;
    note({.kind = kind, .application = client, .uuid = record.uuid, .target = target, .bytes = bytes});
    Q_EMIT q->recordPassed(record);
}

void SimulatorPrivate::note(Recording::Entry entry)
{
    if (!recorder.isOpen())
        return;
    entry.time = m_age.elapsed() - m_recordingBegan;
    const QString problem = recorder.write(entry);
    if (!problem.isEmpty())
        warn(problem);
}

bool SimulatorPrivate::record(const QString& path, QString* error)
{
    m_recordingBegan = m_age.elapsed();
    *error = recorder.open(path, {QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs), false, {}});
    for (const int client : server.clients())
        note({.kind = Recording::Entry::Kind::Connected, .application = client});
    return error->isEmpty();
}

bool SimulatorPrivate::startReplay(const QString& path, QString* error, Simulator::ReplayPace pace, int patience)
{
    if (!server.clients().isEmpty()) {
        *error = u"a replay begins before the applications: %1 are connected"_s.arg(server.clients().size());
        return false;
    }
    std::optional<Recording> recording = Recording::load(path, error);
    if (!recording)
        return false;
    endReplay();
    replay = std::make_unique<Replay>(*std::move(recording), pace, patience);
    connectReplay();
    return true;
}

void SimulatorPrivate::connectReplay()
{
    QObject::connect(replay.get(), &Replay::due, &outbox, &Outbox::sendRecord);
    QObject::connect(replay.get(), &Replay::differed, q, &Simulator::replayDiffered);
    QObject::connect(replay.get(), &Replay::finished, q, &Simulator::replayFinished);
    QObject::connect(replay.get(), &Replay::goAwayDue, q, [this] { goAway(); });
    QObject::connect(replay.get(), &Replay::comeBackDue, q, [this] {
        QString problem;
        comeBack(&problem);
        accepted(problem);
    });
}

void SimulatorPrivate::endReplay()
{
    if (!replay)
        return;
    replay->end();
    replay.release()->deleteLater(); // it may be the one who is telling
}

int SimulatorPrivate::clientOf(qint64 process) const
{
    int client = 0;
    for (const int candidate : server.clients())
        client = server.processOf(candidate) == process ? candidate : client;
    return client;
}

// --- Life -------------------------------------------------------------------------------------------------------

bool SimulatorPrivate::makeRoot(QString* error)
{
    if (!root.isEmpty())
        return true;
    temporary = std::make_unique<QTemporaryDir>(QDir::tempPath() + u"/zelcore-XXXXXX"_s);
    if (!temporary->isValid()) {
        *error = u"no temporary folder: %1"_s.arg(temporary->errorString());
        return false;
    }
    root = temporary->path();
    return true;
}

/// An application of this process that is to come here must be able to. One that was here with an earlier service, and
/// is gone, leaves nothing behind.
bool SimulatorPrivate::freeProcess(QString* error)
{
    QString problem;
    if (clientlibrary::isConnectedTo(root))
        clientlibrary::letGo();
    else if (QFile::decodeName(qgetenv("PPS_ROOT")) == root)
        problem = clientlibrary::freeFor(root);
    if (!problem.isEmpty())
        *error = problem;
    return problem.isEmpty();
}

bool SimulatorPrivate::listen(QString* error)
{
    return server.listen(root + u"/services/zelcore/platform"_s, error);
}

bool SimulatorPrivate::start(QString* error)
{
    if (running)
        return true;
    if (!makeRoot(error) || !freeProcess(error) || !listen(error))
        return false;
    if (!targets.start(root, error)) {
        server.close();
        return false;
    }
    running = true;
    activity.setPaused(false);
    timeline.start();
    Q_EMIT q->runningChanged(true);
    return true;
}

void SimulatorPrivate::stop()
{
    if (!running)
        return;
    recorder.close(); // an end is not what a replay should play
    leave();
    running = false;
    activity.setPaused(true);
    timeline.stop();
    targets.stop();
    if (std::exchange(away, false))
        Q_EMIT q->awayChanged(false);
    Q_EMIT q->runningChanged(false);
}

void SimulatorPrivate::goAway()
{
    if (!running || away)
        return;
    note({.kind = Recording::Entry::Kind::Away});
    away = true;
    leave();
    Q_EMIT q->awayChanged(true);
}

void SimulatorPrivate::leave()
{
    service.suspend();
    server.close();
}

bool SimulatorPrivate::comeBack(QString* error)
{
    if (!running) {
        *error = u"the service was never started"_s;
        return false;
    }
    if (!away)
        return true;
    if (!listen(error))
        return false;
    away = false;
    note({.kind = Recording::Entry::Kind::Back});
    Q_EMIT q->awayChanged(false);
    return true;
}

void SimulatorPrivate::reset()
{
    goAway(); // where it serves
    if (clientlibrary::isConnectedTo(root))
        clientlibrary::letGo(); // of an application of this process that is gone
    endReplay();
    world.reset();
    service.reset();
    for (const auto direction : {WireRecord::Direction::FromApplication, WireRecord::Direction::ToApplication})
        way(direction).reset();
    for (const QString& target : InvocationTargets::names())
        accepted(targets.setState(target, Simulator::TargetState::Taking));
    server.setReading(true);
    activity.set(Simulator::Activity::Mixed, 0);
    timeline.setSteps({});
    if (running) {
        QString problem;
        comeBack(&problem);
        accepted(problem);
    }
    Q_EMIT q->worldReset();
}

// --- What several ways in share ---------------------------------------------------------------------------------

bool SimulatorPrivate::accepted(const QString& problem)
{
    if (!problem.isEmpty())
        refuse(problem);
    return problem.isEmpty();
}

void SimulatorPrivate::refuse(const QString& line)
{
    warn(line);
    Q_EMIT q->refused(line);
}

void SimulatorPrivate::warn(const QString& line) const
{
    qCWarning(lcZelcore).noquote() << line;
}

QString SimulatorPrivate::remarkOn(const QString& state)
{
    const QStringList known = Simulator::registrationStates();
    return known.contains(state) ? QString()
                                 : u"applications do not know the state \"%1\", and read it as Unknown; they know %2 "
                                   "(\"%3\" is their Allowed)"_s.arg(state, known.join(", "_L1), known.first());
}

/// Of a state that it sets.
QString SimulatorPrivate::remarkOn(const Scenario::Step& step)
{
    const QStringList words = step.command();
    return words.size() == 2 && words.first() == "state"_L1 ? remarkOn(words.last()) : QString();
}

void SimulatorPrivate::lookAt(const QString& state) const
{
    if (const QString remark = remarkOn(state); !remark.isEmpty())
        warn(remark);
}

std::optional<Addressee> SimulatorPrivate::addressee(const QString& application)
{
    QString problem;
    const std::optional<Addressee> whose = Addressee::of(application, &problem);
    accepted(problem);
    return whose;
}

QString SimulatorPrivate::boxOwner(const Addressee& whose, QString* problem) const
{
    if (whose.client == 0)
        return whose.uuid;
    const QString uuid = uuidOf(whose.client).toLower();
    if (uuid.isEmpty())
        *problem = u"application %1 is not connected, or has not told its UUID"_s.arg(whose.client);
    return uuid;
}

Way& SimulatorPrivate::way(WireRecord::Direction direction)
{
    return direction == WireRecord::Direction::FromApplication ? inbound : outbox.way();
}

QString SimulatorPrivate::uuidOf(int client) const
{
    const auto& sessions = service.context().sessions;
    const auto found = sessions.find(client);
    return found == sessions.end() ? QString() : found->second->uuid;
}

QString SimulatorPrivate::invite(const QString& contact)
{
    QString problem;
    if (const Person* person = world.findContact(contact, &problem))
        service.context().broadcast("connectionInvitationReceived"_L1,
                                    wire::text(QJsonObject{{u"userId"_s, person->userId}}));
    return problem;
}

bool SimulatorPrivate::load(const QString& scenario, QString* error)
{
    const std::optional<Scenario> read = Scenario::load(scenario, error);
    if (!read)
        return false;
    *error = read->problemIn(world);
    if (!error->isEmpty())
        return false;
    for (const Scenario::Step& step : read->world + read->timeline) {
        const QString remark = remarkOn(step);
        if (!remark.isEmpty())
            warn(u"%1: %2: %3"_s.arg(scenario, step.place, remark));
    }
    for (const Scenario::Step& step : read->world) {
        QString reply;
        if (!Commands(*this).run(step.words, &reply))
            refuse(u"%1: %2"_s.arg(step.place, reply)); // a file that has gone since it was tried
    }
    timeline.setSteps(read->timeline);
    return true;
}

} // namespace zelcore
