// SPDX-License-Identifier: Apache-2.0
#include <iface/Clock.h>

#include <iface/detail/MakeShared.h>

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QThreadStorage>
#include <QtCore/QTimerEvent>

namespace iface {

namespace {

QThreadStorage<QSharedPointer<Clock>> defaultClock;

class EventLoopClock : public QObject, public Clock
{
public:
    ~EventLoopClock() override
    {
        // One by one, out of the table: what goes with a function may ask for another.
        while (!m_functions.isEmpty())
            m_functions.take(m_functions.constBegin().key());
    }

    int callLater(int msecs, const boost::function<void()>& function) override
    {
        const int id = startTimer(msecs);
        if (id != 0)
            m_functions.insert(id, function);
        return id;
    }

    void cancel(int id) override
    {
        if (!m_functions.contains(id))
            return;
        killTimer(id);
        m_functions.take(id); // goes when it is out of the table: that may run anything
    }

protected:
    void timerEvent(QTimerEvent* event) override
    {
        killTimer(event->timerId());
        const boost::function<void()> function = m_functions.take(event->timerId());
        if (function)
            function();
    }

private:
    QHash<int, boost::function<void()>> m_functions;
};

} // namespace

Clock::~Clock() = default;

QSharedPointer<Clock> Clock::threadDefault()
{
    if (!defaultClock.hasLocalData() || !defaultClock.localData())
        defaultClock.setLocalData(detail::makeShared<EventLoopClock>());
    return defaultClock.localData();
}

void Clock::setThreadDefault(const QSharedPointer<Clock>& clock)
{
    const QSharedPointer<Clock> before = defaultClock.localData(); // goes last: what ends with it may run anything
    defaultClock.setLocalData(clock);
}

} // namespace iface
