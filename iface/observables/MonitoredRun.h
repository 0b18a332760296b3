// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Dependencies.h"
#include <iface/QApplicationRealm.h>

#include <QString>

#include <boost/function.hpp>

namespace iface {

class ObserverImpl;

/// What ObservableMonitor and RunUntilTrue share: a function that runs again whenever something it read has changed.
///
/// Its owner, the observer, holds it by shared pointer, calls handleChange() through a copy of that pointer, and
/// close() when it is destroyed: so both survive the owner's destruction inside the function.
class MonitoredRun
{
public:
    /// `function` answers true when it need not run any more. `logFile` and `logLine` say where a broken run is logged.
    MonitoredRun(ObserverImpl* owner, const QString& name, boost::function<bool()> function, const char* logFile,
                 int logLine);

    const QString& name() const { return m_name; }
    /// Has the owner told of a change in a later turn of the event loop.
    void schedule();
    /// Runs the function now, or after the run that is under way.
    void handleChange();
    void close() { m_owner = nullptr; }

private:
    Q_DISABLE_COPY_MOVE(MonitoredRun)
    class Running;

    bool isIdle() const { return m_finished || !m_owner; }
    void runOnce();

    ObserverImpl* m_owner;
    const QString m_name;
    const boost::function<bool()> m_function;
    const char* const m_logFile;
    const int m_logLine;
    Dependencies m_dependencies;
    bool m_running = false;
    // Something that this run has read has changed since.
    bool m_again = false;
    bool m_finished = false;
    int m_pendingId = -1;
    QApplicationRealm m_realm;
};

} // namespace iface
