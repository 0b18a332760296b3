// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObserverImpl.h>

#include <QtCore/QString>

#include <boost/function.hpp>

#include <memory>

namespace iface {

class MonitoredRun;

/// Runs a function again whenever something that its last run read has changed: once for a change, however much of what
/// it read is another, when everything has taken the change in and has announced it (see Round).
///
/// Its parent or its maker owns it; it keeps alive what its function read. Everything happens on the thread that made
/// it, and it is not to be moved to another. With `runAtOnce` the first run comes in a later turn of the event loop,
/// never inside the constructor; without it, call handleObservableChanged() for the first run. Only what changed
/// between two runs is observed or let go, so a run that reads what the run before it read costs nothing of that.
///
/// Reads are tracked, so keep reactions out of the function, or wrap them in ObservableTracker::runUntracked(). The
/// function may spin an event loop; what the handlers of timers and other events read there counts as read by it, but
/// not what work of a Realm reads. A change of something that it has read while it is still running makes it run
/// exactly once more when it has returned, never inside itself; so may a function that changes what it reads, until
/// that settles (should it not settle, the further runs come in later turns of the event loop). It may destroy the
/// monitor: that ends it, and everything that was read is let go of. When it throws, the monitor observes what had been
/// read by then. Where it finds no memory it runs once more in a later turn of the event loop, and observes what it had
/// read before as well until it has come to its end.
///
///     new iface::ObservableMonitor([=] { label->setText(name.getValue()); }, this, u"name"_s, true);
class ZEL_EXPORT ObservableMonitor : public ObserverImpl
{
    Q_OBJECT

public:
    ObservableMonitor(boost::function<void()> function, QObject* parent, const QString& name, bool runAtOnce);
    ~ObservableMonitor() override;

    QString name() const { return objectName(); }

public Q_SLOTS:
    void handleObservableChanged() override;

private:
    std::shared_ptr<MonitoredRun> const d;
};

} // namespace iface
