// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tracking/Dependencies.h"

#include <iface/QApplicationRealm.h>

#include <boost/function.hpp>

#include <cstddef>
#include <memory>

namespace iface {

class ObserverImpl;

/// What ObservableMonitor and RunUntilTrue share: a function that runs again whenever something it read has changed, at
/// the end of the round in which it changed.
///
/// Its owner, the observer, holds it and calls close() when it is destroyed, which may be inside the function.
class MonitoredRun : public std::enable_shared_from_this<MonitoredRun>
{
public:
    /// `function` answers true when it need not run any more. `logFile` and `logLine` say where a broken run is logged.
    MonitoredRun(ObserverImpl* owner, boost::function<bool()> function, const char* logFile, int logLine);
    ~MonitoredRun();

    /// Has the owner told of a change in a later turn of the event loop.
    void schedule();
    /// Runs the function now, or after the run that is under way.
    void handleChange();
    /// The owner's turn at the end of a round.
    void runInRound();
    void close();

private:
    Q_DISABLE_COPY_MOVE(MonitoredRun)
    void changed();
    void leaveRound();
    void runOnce();
    void letGo();

    ObserverImpl* m_owner; ///< null when there are to be no more runs
    const boost::function<bool()> m_function;
    const char* const m_logFile;
    const int m_logLine;
    Dependencies m_dependencies;
    Dependencies::Node* m_node = nullptr;
    std::size_t m_placeInRound = 0; ///< at the end of which this runs, counted from 1; 0 if there is none
    bool m_running = false;
    // Something that this run has read has changed since.
    bool m_again = false;
    // The last run found no memory.
    bool m_isCut = false;
    int m_pendingId = -1;
    QApplicationRealm m_realm;
};

} // namespace iface
