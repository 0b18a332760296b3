// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/scenarios/Scenario.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <optional>

namespace zelcore {

/// Says when the commands of a scenario are due: by the clock or, while it is paused, step by step.
class Timeline : public QObject
{
    Q_OBJECT
public:
    Timeline();

    /// They begin when it runs, from the start.
    void setSteps(const QList<Scenario::Step>& steps);
    void start();
    void stop();
    /// Starts the clock of the steps that wait for a registration; only the first time counts.
    void registered();

    void setPaused(bool paused);
    bool isPaused() const { return m_paused; }
    /// Milliseconds since the start, those of the pauses left out.
    int time() const;
    /// Goes on to the next step, and pauses. Empty, or why not: those that wait for a registration do not count before
    /// it.
    QString step();
    /// Takes all steps up to a time, and pauses there. How many there were.
    int runUntil(int time);

Q_SIGNALS:
    void due(const zelcore::Scenario::Step& step);

private:
    std::optional<int> dueTime(const Scenario::Step& step) const;
    QList<Scenario::Step>::iterator next();
    bool takeNext(int latest);
    void setTime(int time);
    void schedule();

    QList<Scenario::Step> m_steps;
    QList<Scenario::Step> m_pending; ///< Empty while it does not run.
    std::optional<int> m_registeredAt;
    bool m_running = false;
    bool m_paused = false;
    int m_time = 0;        ///< When the clock was set last.
    QElapsedTimer m_clock; ///< Since then; it counts while the timeline runs and is not paused.
    QTimer m_timer;        ///< For the next step.
};

} // namespace zelcore
