// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Clock.h>

#include <QtCore/QMap>

#include <utility>

/// A clock that stands still until the test moves it. Install it before whatever uses it is made.
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
        m_calls.insert({m_now + msecs, ++m_lastId}, function);
        return m_lastId;
    }
    void cancel(int id) override
    {
        m_calls.removeIf([id](const auto& call) { return call.key().second == id; });
    }

    int waiting() const { return int(m_calls.size()); }
    /// Milliseconds since it was installed.
    qint64 now() const { return m_now; }

    /// Moves on, and calls what falls due on the way in the order in which it does. What is called may move on, too.
    void advance(int msecs)
    {
        const qint64 end = m_now + msecs;
        while (!m_calls.isEmpty() && m_calls.firstKey().first <= end) {
            m_now = qMax(m_now, m_calls.firstKey().first);
            m_calls.take(m_calls.firstKey())();
        }
        m_now = qMax(m_now, end);
    }

private:
    QMap<std::pair<qint64, int>, boost::function<void()>> m_calls; // by when they are due, and in order
    qint64 m_now = 0;
    int m_lastId = 0;
};
