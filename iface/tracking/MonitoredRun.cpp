// SPDX-License-Identifier: Apache-2.0
#include "tracking/MonitoredRun.h"

#include "rounds/MostRuns.h"
#include "rounds/RoundState.h"

#include <iface/Logging.h>
#include <iface/ObserverImpl.h>
#include <iface/ObservableTracker.h>
#include <iface/Round.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QScopeGuard>

#include <new>
#include <utility>

using namespace Qt::StringLiterals;

namespace iface {

MonitoredRun::MonitoredRun(ObserverImpl* owner, boost::function<bool()> function, const char* logFile, int logLine)
    : m_owner(owner)
    , m_function(std::move(function))
    , m_logFile(logFile)
    , m_logLine(logLine)
    , m_dependencies([this] { changed(); })
{
}

MonitoredRun::~MonitoredRun()
{
    close();
}

void MonitoredRun::schedule()
{
    m_pendingId = m_realm.asyncExec([this] {
        if (m_owner)
            m_owner->handleObservableChanged();
    });
}

/// Something that was read has changed: in the first step of a round.
void MonitoredRun::changed()
{
    if (m_running) {
        m_again = true;
        return;
    }
    // An outer round need not run it any more: the innermost one does, when everything is in.
    leaveRound();
    try {
        m_placeInRound = Round::open()->enter(*this);
    } catch (const std::bad_alloc&) {
        if (m_pendingId == -1)
            schedule();
        throw;
    }
}

void MonitoredRun::leaveRound()
{
    if (m_placeInRound > 0)
        Round::strikeOut(std::exchange(m_placeInRound, 0));
}

void MonitoredRun::runInRound()
{
    m_placeInRound = 0;
    if (m_owner)
        m_owner->handleObservableChanged();
}

void MonitoredRun::handleChange()
{
    if (!m_owner)
        return;
    // This run takes the place of those that are still to come.
    m_realm.remove(std::exchange(m_pendingId, -1));
    leaveRound();
    m_again = true;
    if (m_running)
        return;
    const std::shared_ptr<MonitoredRun> alive = shared_from_this();
    m_running = true;
    detail::FirstException thrown;
    // A function that changes what it reads settles in a few runs. One that does not must not hold up the event loop.
    thrown.guard([this] {
        for (int run = 0; run < MostRuns && m_again && m_owner; ++run) {
            m_again = false;
            runOnce();
        }
    });
    m_running = false;
    if (!m_owner)
        letGo();
    else if (m_again)
        thrown.guard([this] { schedule(); });
    thrown.rethrow();
}

/// What there was no memory for does not follow from what was read. So it is read again in a later turn of the event
/// loop, but once, and until a run has come to its end whatever the last of those had read is observed, too.
void MonitoredRun::runOnce()
{
    m_dependencies.forgetDirty();
    Dependencies::Run run(m_dependencies, m_node);
    bool isBroken = false;
    const auto end = qScopeGuard([&] {
        Dependencies::Node* const node = run.finish(!m_isCut);
        m_node = node ? node : m_node;
        if (!node || isBroken)
            letGo();
    });
    bool finished = false;
    const bool wasCut = std::exchange(m_isCut, false);
    try {
        isBroken = !ObservableTracker::runInto(&run, [&] { finished = m_function(); });
    } catch (const std::bad_alloc&) {
        m_isCut = true;
        m_again = m_again || !wasCut;
        throw;
    }
    if (finished && !isBroken)
        m_owner = nullptr;
    if (isBroken)
        ZEL_IFACE_LOG(m_logFile, m_logLine, LogLevel::Error, LogCategory::General,
                      u"m_observedList is null! This shouldn't happen."_s);
}

/// Depends on nothing any more. That may destroy observables, and so run anything.
void MonitoredRun::letGo()
{
    if (Dependencies::Node* const node = std::exchange(m_node, nullptr))
        m_dependencies.release(node);
}

void MonitoredRun::close()
{
    m_owner = nullptr;
    leaveRound();
    if (!m_running)
        letGo();
}

} // namespace iface
