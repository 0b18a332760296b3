// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/recordings/Recorder.h>
#include <simulator/recordings/Replay.h>
#include <simulator/scenarios/ActivityMaker.h>
#include <simulator/services/CoreService.h>
#include <simulator/wire/InvocationTargets.h>
#include <simulator/wire/Outbox.h>
#include <simulator/wire/Way.h>
#include <simulator/scenarios/Timeline.h>
#include <simulator/world/World.h>

#include <zelcore/Simulator.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>

#include <memory>

namespace zelcore {

/// The parts of a simulator, and the ways in which they are connected. The commands work on it too.
class SimulatorPrivate
{
public:
    explicit SimulatorPrivate(Simulator* simulator);
    ~SimulatorPrivate();

    bool listen(QString* error);
    bool start(QString* error);
    void stop();
    void goAway();
    bool comeBack(QString* error);
    void reset();
    bool makeRoot(QString* error);
    bool freeProcess(QString* error);

    /// True for an empty problem; any other is told to whoever watches.
    bool accepted(const QString& problem);
    void refuse(const QString& line);
    void warn(const QString& line) const;
    /// What is to be known of \a state before it is told to applications; empty when they know it.
    static QString remarkOn(const QString& state);
    static QString remarkOn(const Scenario::Step& step);
    /// Warns of it.
    void lookAt(const QString& state) const;

    /// Takes a scenario, all or nothing.
    bool load(const QString& scenario, QString* error);
    /// A contact, by handle or user id, invites the user. Empty, or why not.
    QString invite(const QString& contact);

    bool record(const QString& path, QString* error);
    bool startReplay(const QString& path, QString* error, Simulator::ReplayPace pace, int patience);
    void endReplay();

    /// Who is meant by a number or a UUID; empty, with the reason told, when it is neither.
    std::optional<Addressee> addressee(const QString& application);
    /// The UUID by which an application has a box of its own; of all of them empty, which stands for the common one.
    /// Empty, too, and a sentence in \a problem, of one whose UUID is not known.
    QString boxOwner(const Addressee& whose, QString* problem) const;
    Way& way(WireRecord::Direction direction);
    QString uuidOf(int client) const;

    /// The application that connected last of those of a process; 0 without one.
    int clientOf(qint64 process) const;

    Simulator* const q;
    World world;
    vx::system::ObjectServer server;
    Outbox outbox;
    CoreService service;
    Way inbound; ///< What applications send, on its way to the service.
    InvocationTargets targets;
    ActivityMaker activity;
    Timeline timeline;
    Recorder recorder;
    std::unique_ptr<Replay> replay; ///< Who answers in place of the service, if anybody does.
    std::unique_ptr<QTemporaryDir> temporary;
    QString root;
    bool running = false;
    bool away = false;

private:
    void connectParts();
    void connectTap();
    void connectApplications();
    void connectReplay();
    void leave();
    void tap(int client, WireRecord::Direction direction, const QByteArray& bytes, const QString& target = {});
    void note(Recording::Entry entry);

    const qint64 m_born = QDateTime::currentMSecsSinceEpoch();
    QElapsedTimer m_age; ///< Since then: the clock on the wall may be set.
    qint64 m_recordingBegan = 0;
};

} // namespace zelcore
