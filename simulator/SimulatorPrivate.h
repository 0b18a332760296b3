// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/ActivityMaker.h>
#include <simulator/CoreService.h>
#include <simulator/InvocationTargets.h>
#include <simulator/Outbox.h>
#include <simulator/Scenario.h>
#include <simulator/World.h>

#include <zelcore/Simulator.h>

#include <vx/system/ObjectServer.h>

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
    bool makeRoot(QString* error);

    /// True for an empty problem; any other is told to whoever watches.
    bool done(const QString& problem);
    void refuse(const QString& line);

    /// The contact of this handle, or of this user id. Null, with a sentence in \a problem, when there is none.
    const Person* find(const QString& handleOrUserId, QString* problem) const;
    QString generate(int count, quint32 seed);
    QString setPicture(Person person, const QByteArray& data, bool isContact);
    QString invite(const QString& userId);
    void apply(const Scenario& scenario);

    Simulator* const q;
    World world;
    vx::system::ObjectServer server;
    Outbox outbox;
    CoreService service;
    InvocationTargets targets;
    ActivityMaker activity;
    Timeline timeline;
    std::unique_ptr<QTemporaryDir> temporary;
    QString root;
    bool running = false;
    bool away = false;

private:
    void connectParts();
};

} // namespace zelcore
