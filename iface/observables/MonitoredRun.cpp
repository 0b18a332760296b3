// SPDX-License-Identifier: Apache-2.0
#include "MonitoredRun.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverImpl.h>

#include <utility>

namespace iface {

namespace {

// A function that changes what it reads settles in a few runs. One that does not must not hold up the event loop.
constexpr int MostRunsAtOnce = 16;

} // namespace

/// A run under way. Leaves everything in order, also when the function throws.
class MonitoredRun::Running
{
public:
    explicit Running(MonitoredRun& run)
        : m_run(run)
    {
        m_run.m_running = true;
        m_run.m_again = false;
    }

    ~Running()
    {
        m_run.m_running = false;
        if (m_run.m_again && !m_run.isIdle())
            m_run.schedule();
    }

private:
    Q_DISABLE_COPY_MOVE(Running)
    MonitoredRun& m_run;
};

MonitoredRun::MonitoredRun(ObserverImpl* owner, const QString& name, boost::function<bool()> function,
                           const char* logFile, int logLine)
    : m_owner(owner)
    , m_name(name)
    , m_function(std::move(function))
    , m_logFile(logFile)
    , m_logLine(logLine)
    , m_dependencies(owner, [this] {
        if (m_owner)
            m_owner->handleObservableChanged();
    })
{
}

void MonitoredRun::schedule()
{
    m_pendingId = m_realm.asyncExec([this] {
        if (m_owner)
            m_owner->handleObservableChanged();
    });
}

void MonitoredRun::handleChange()
{
    if (isIdle())
        return;
    // This run takes the place of one that is still queued.
    m_realm.remove(std::exchange(m_pendingId, -1));
    if (m_running) {
        m_again = true;
        return;
    }
    const Running running(*this);
    for (int run = 0; run < MostRunsAtOnce; ++run) {
        m_again = false;
        runOnce();
        if (!m_again || isIdle())
            return;
    }
}

void MonitoredRun::runOnce()
{
    struct Recording
    {
        Dependencies& dependencies;
        ~Recording() { dependencies.endRun(); }
    };
    m_dependencies.beginRun();
    const Recording recording{m_dependencies};
    bool finished = false;
    if (!ObservableTracker::runInto(&m_dependencies, [&] { finished = m_function(); })) {
        ZEL_IFACE_LOG(m_logFile, m_logLine, LogLevel::Error, LogCategory::General,
                      QStringLiteral("m_observedList is null! This shouldn't happen."));
        m_dependencies.beginRun();
        return;
    }
    m_finished = finished;
    if (isIdle())
        m_dependencies.beginRun();
}

} // namespace iface
