// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/Timeline.h>

#include <QtCore/QTimer>

#include <utility>

namespace zelcore {

void Timeline::setSteps(const QList<Scenario::Step>& steps)
{
    stop();
    m_steps = steps;
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
    for (const Scenario::Step& step : std::as_const(m_steps)) {
        if (step.afterRegistration != afterRegistration)
            continue;
        QTimer::singleShot(step.at, this, [this, step, run = m_run] {
            if (run == m_run)
                Q_EMIT due(step);
        });
    }
}

} // namespace zelcore
