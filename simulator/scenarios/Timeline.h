// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/scenarios/Scenario.h>

#include <QtCore/QObject>

namespace zelcore {

/// Says when the commands of a scenario are due.
class Timeline : public QObject
{
    Q_OBJECT
public:
    void setSteps(const QList<Scenario::Step>& steps);
    void start();
    void stop();
    /// Starts the clock of the steps that wait for a registration; only the first time counts.
    void registered();

Q_SIGNALS:
    void due(const zelcore::Scenario::Step& step);

private:
    void schedule(bool afterRegistration);

    QList<Scenario::Step> m_steps;
    /// Counts the starts and stops: what was scheduled before the last of them is forgotten.
    quint64 m_run = 0;
    bool m_running = false;
    bool m_registered = false;
};

} // namespace zelcore
