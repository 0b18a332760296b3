// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/world/People.h>
#include <simulator/world/World.h>

#include <zelcore/Simulator.h>

#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

namespace zelcore {

/// Lets the contacts live: changes, installs, uninstalls and invitations at a given rate.
class ActivityMaker : public QObject
{
    Q_OBJECT
public:
    /// \a world must outlive it; \a invite is called with the user id of who invites.
    ActivityMaker(World& world, std::function<void(const QString&)> invite, QObject* parent = nullptr);

    void set(Simulator::Activity activity, double perSecond, quint32 seed = 1);
    /// Nothing happens while paused; the rate stays set.
    void setPaused(bool paused);

private:
    void tick();
    void act(Simulator::Activity activity);
    void change(const QString& userId);
    void install();

    World& m_world;
    std::function<void(const QString&)> m_invite;
    PeopleMaker m_people{1};
    QTimer m_timer;
    Simulator::Activity m_activity = Simulator::Activity::Mixed;
    double m_perTick = 1;
    double m_due = 0;
    bool m_paused = true;
};

} // namespace zelcore
