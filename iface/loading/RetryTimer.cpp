// SPDX-License-Identifier: Apache-2.0
#include <iface/RetryTimer.h>

#include <iface/detail/FirstException.h>

#include <algorithm>
#include <utility>

namespace iface {

RetryTimer::RetryTimer(boost::function<void()> reminder)
    : m_reminder(std::move(reminder))
{
}

RetryTimer::~RetryTimer()
{
    stop();
}

void RetryTimer::start()
{
    // Without memory for another, the one that runs goes on.
    const auto clock = Clock::threadDefault();
    const int timer = clock->callLater(FirstDelay, [this] { remind(); });
    stop();
    m_clock = clock;
    m_delay = FirstDelay;
    m_timer = timer;
}

void RetryTimer::stop()
{
    if (m_timer != 0)
        m_clock->cancel(std::exchange(m_timer, 0));
}

void RetryTimer::remind()
{
    m_timer = 0;
    m_delay = std::min(2 * m_delay, LongestDelay);
    // Without memory for the next time it is done once more all the same.
    detail::FirstException thrown;
    thrown.guard([this] { m_timer = m_clock->callLater(m_delay, [this] { remind(); }); });
    // A copy, called last: the reminder may destroy this.
    const boost::function<void()> reminder = m_reminder;
    thrown.guard(reminder);
    thrown.rethrow();
}

} // namespace iface
