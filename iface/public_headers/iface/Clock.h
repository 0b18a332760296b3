// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QSharedPointer>

#include <boost/function.hpp>

namespace iface {

/// Calls functions after a time. One per thread; to be used on that thread only.
class ZEL_EXPORT Clock
{
public:
    virtual ~Clock();

    /// Has `function` called once, `msecs` milliseconds from now, and returns an id above 0; 0 on a thread without
    /// an event dispatcher, where nothing is ever called.
    virtual int callLater(int msecs, const boost::function<void()>& function) = 0;
    /// Takes that back. An id that is not known does nothing; one that has had its call, or was taken back, may have
    /// been given again.
    virtual void cancel(int id) = 0;

    /// The calling thread's clock: the event loop's timers, unless a test has put its own clock in.
    static QSharedPointer<Clock> threadDefault();
    /// Replaces the calling thread's clock; null brings the event loop's timers back. What was asked of the clock
    /// before stays with that clock.
    static void setThreadDefault(const QSharedPointer<Clock>& clock);
};

} // namespace iface
