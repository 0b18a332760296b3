// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Clock.h>

#include <boost/function.hpp>

namespace iface {

/// Reminds of a request that has had no answer: first after 30 seconds, then after twice the time before, at most
/// every 5 minutes, until stop().
///
/// A member of whoever waits for the answer; goes with it. Times come from the clock of the thread that calls start().
/// The reminder may start, stop or destroy the timer.
class ZEL_EXPORT RetryTimer
{
public:
    static constexpr int FirstDelay = 30 * 1000;
    static constexpr int LongestDelay = 5 * 60 * 1000;

    explicit RetryTimer(boost::function<void()> reminder);
    ~RetryTimer();

    /// A request has gone out: waits for its answer from now on, beginning with the first delay.
    void start();
    /// The answer has come, or nobody waits for it any more.
    void stop();
    bool isActive() const { return m_timer != 0; }

private:
    Q_DISABLE_COPY_MOVE(RetryTimer)
    void remind();

    boost::function<void()> m_reminder;
    QSharedPointer<Clock> m_clock;
    int m_timer = 0;
    int m_delay = FirstDelay;
};

} // namespace iface
