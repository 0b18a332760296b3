// SPDX-License-Identifier: Apache-2.0
#include <simulator/scenarios/Timeline.h>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// The end of time is not passed.
int sum(int time, qint64 more)
{
    return int(std::min<qint64>(time + more, std::numeric_limits<int>::max()));
}

} // namespace

Timeline::Timeline()
{
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] {
        while (!m_paused && takeNext(time())) {
        }
        schedule();
    });
}

void Timeline::setSteps(const QList<Scenario::Step>& steps)
{
    m_steps = steps;
    if (m_running)
        start();
}

void Timeline::start()
{
    m_running = true;
    m_registeredAt.reset();
    m_pending = m_steps;
    setTime(0);
}

void Timeline::stop()
{
    m_running = false;
    m_pending.clear();
}

void Timeline::registered()
{
    if (!m_registeredAt)
        m_registeredAt = time();
    schedule();
}

void Timeline::setPaused(bool paused)
{
    const int now = time();
    m_paused = paused;
    setTime(now);
}

int Timeline::time() const
{
    return m_running && !m_paused ? sum(m_time, m_clock.elapsed()) : m_time;
}

QString Timeline::step()
{
    setPaused(true);
    return takeNext(std::numeric_limits<int>::max())
               ? QString()
               : u"no entry follows; those that wait for a registration do not before it"_s;
}

int Timeline::runUntil(int time)
{
    setPaused(true);
    int taken = 0;
    while (takeNext(time))
        ++taken;
    if (m_running && m_paused)
        setTime(std::max(m_time, time));
    return taken;
}

/// Empty while it is not known.
std::optional<int> Timeline::dueTime(const Scenario::Step& step) const
{
    if (!step.afterRegistration)
        return step.at;
    return m_registeredAt ? std::optional(sum(*m_registeredAt, step.at)) : std::nullopt;
}

/// The first of those that are due first, in the order of the file; the end when nothing is known to follow.
QList<Scenario::Step>::iterator Timeline::next()
{
    const auto first = std::min_element(m_pending.begin(), m_pending.end(), [this](const auto& one, const auto& other) {
        const auto whenDue = [this](const Scenario::Step& step) {
            const std::optional<int> due = dueTime(step);
            return std::pair(!due, due.value_or(0)); // what is not known comes last
        };
        return whenDue(one) < whenDue(other);
    });
    return first != m_pending.end() && dueTime(*first) ? first : m_pending.end();
}

/// Whoever is told may do anything here, stop and start included.
bool Timeline::takeNext(int latest)
{
    const auto found = next();
    if (found == m_pending.end() || *dueTime(*found) > latest)
        return false;
    const Scenario::Step step = *found;
    m_pending.erase(found);
    if (m_paused)
        setTime(std::max(m_time, *dueTime(step)));
    Q_EMIT due(step);
    return true;
}

void Timeline::setTime(int time)
{
    m_time = time;
    m_clock.start();
    schedule();
}

void Timeline::schedule()
{
    const auto found = next();
    if (!m_paused && found != m_pending.end())
        m_timer.start(std::max(0, *dueTime(*found) - time()));
}

} // namespace zelcore
