// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Clock.h>

#include <QMap>

/// A clock that stands still until the test moves it. Install it before whatever uses it is made:
///
///     const auto clock = FakeClock::install();
///     clock->advance(30 * 1000);
class FakeClock : public iface::Clock
{
public:
    /// Makes the calling thread use a new fake clock, until uninstall().
    static QSharedPointer<FakeClock> install()
    {
        const auto clock = QSharedPointer<FakeClock>::create();
        iface::Clock::setThreadDefault(clock);
        return clock;
    }
    static void uninstall() { iface::Clock::setThreadDefault({}); }

    int callLater(int msecs, const boost::function<void()>& function) override
    {
        m_calls.insert(++m_lastId, {m_now + msecs, function});
        return m_lastId;
    }
    void cancel(int id) override { m_calls.remove(id); }

    int waiting() const { return int(m_calls.size()); }
    /// Milliseconds since it was installed.
    qint64 now() const { return m_now; }

    /// Moves on, and calls what falls due on the way in the order in which it does. What is called may move on, too.
    void advance(int msecs)
    {
        const qint64 end = m_now + msecs;
        for (;;) {
            auto due = m_calls.end();
            for (auto call = m_calls.begin(); call != m_calls.end(); ++call) {
                if (call->at <= end && (due == m_calls.end() || call->at < due->at))
                    due = call;
            }
            if (due == m_calls.end())
                break;
            m_now = qMax(m_now, due->at);
            const auto function = due->function;
            m_calls.erase(due);
            function();
        }
        m_now = qMax(m_now, end);
    }

private:
    struct Call
    {
        qint64 at;
        boost::function<void()> function;
    };

    QMap<int, Call> m_calls;
    qint64 m_now = 0;
    int m_lastId = 0;
};
