// SPDX-License-Identifier: Apache-2.0
#include <iface/Round.h>

#include "tracking/MonitoredRun.h"
#include "rounds/RoundState.h"

#include <iface/ObservableImpl.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/DerivedList.h>

#include <memory>
#include <utility>

namespace iface {

[[gnu::tls_model("initial-exec")]] constinit thread_local Round* t_innermostRound = nullptr;
[[gnu::tls_model("initial-exec")]] constinit thread_local int t_behindCount = 0;
[[gnu::tls_model("initial-exec")]] constinit thread_local unsigned t_timesBehind = 0;

Round::State& Round::state()
{
    [[gnu::tls_model("initial-exec")]] static thread_local State state;
    return state;
}

bool Round::isOpen()
{
    return open();
}

unsigned Round::number()
{
    return t_innermostRound ? t_innermostRound->m_number : 0;
}

Round::Round()
    : m_state(state())
    , m_outer(std::exchange(t_innermostRound, this))
    , m_firstUntold(m_state.untoldCount)
    , m_firstMonitor(m_state.monitors.size())
    , m_number(++m_state.lastNumber)
{
}

Round::~Round()
{
    m_state.untoldCount = m_firstUntold;
    m_state.monitors.resize(m_firstMonitor);
    t_innermostRound = m_outer;
}

/// Has the change marked by all who follow what changed, and that queued for announcing, if there is anybody to hear
/// it: most values and maps have followers alone. Where there is no memory for one of them, the others still hear.
void Round::enter(ObservableImpl& observable, const Change& change, BeforeTelling beforeTelling)
{
    if (observable.m_untold || beforeTelling || observable.m_isHeard)
        m_thrown.guard([&] { queue(observable, change, beforeTelling); });
    for (Follower* follower = observable.m_firstFollower; follower; follower = follower->m_next)
        m_thrown.guard([&] { follower->mark(change); });
}

/// Each is announced once.
void Round::queue(ObservableImpl& observable, const Change& change, BeforeTelling beforeTelling)
{
    const auto known = std::size_t(observable.m_untold);
    if (known <= m_firstUntold) {
        Untold& added = nextUntold();
        if (known > 0) {
            // An outer round has not come to announce an earlier change of it: that is announced with this one.
            std::swap(added, *m_state.untold[known - 1]);
        } else {
            added.hold = ObservableImpl::Hold(observable);
            added.observable = &observable;
        }
        observable.m_untold = int(m_state.untoldCount);
    }
    Untold& entry = *m_state.untold[std::size_t(observable.m_untold) - 1];
    if (beforeTelling)
        entry.beforeTelling = beforeTelling;
    entry.change = merged(entry.change, change);
    entry.change.keys = nullptr;
    if (change.kind == Change::Keys)
        observable.appendKeys(*change.keys, entry.keys);
}

void Round::Untold::clear()
{
    observable = nullptr;
    change.kind = Change::None;
    if (change.mapper)
        change.mapper.reset();
    if (!keys.empty())
        keys.clear();
    beforeTelling = nullptr;
    hold = ObservableImpl::Hold(); // last: that may run anything
}

/// An empty one.
Round::Untold& Round::nextUntold()
{
    if (m_state.untold.size() == m_state.untoldCount)
        m_state.untold.push_back(std::make_unique<Untold>());
    return *m_state.untold[m_state.untoldCount++];
}

void Round::enter(detail::DerivedList& list) noexcept
{
    if (std::exchange(list.m_isBehind, true))
        return;
    ++t_behindCount;
    ++t_timesBehind;
    if (std::exchange(list.m_isInLine, true))
        return; // it was read before its turn came
    list.m_nextInLine = nullptr;
    list.m_previousInLine = m_state.lastBehind;
    (m_state.lastBehind ? m_state.lastBehind->m_nextInLine : m_state.firstBehind) = &list;
    m_state.lastBehind = &list;
}

std::size_t Round::enter(MonitoredRun& run)
{
    m_state.monitors.push_back(&run);
    return m_state.monitors.size();
}

/// Who begins to observe a list that has a change still to be announced may have read that, and would hear of it as of
/// a new one: so everybody reads it again. Also where a list may be about to take something in, as it does when the
/// observer reads it next.
void Round::heedNewObserver(ObservableImpl& observable)
{
    if (!t_innermostRound)
        return;
    if (Round* const round = open()) {
        const bool isSettled = t_behindCount == 0 && round->m_settlings == 0;
        if (!isSettled && dynamic_cast<const ObservableListImpl*>(&observable))
            round->m_thrown.guard([&] { round->queue(observable, {Change::Reset}, nullptr); });
    }
    if (observable.m_untold == 0)
        return;
    Change& change = state().untold[std::size_t(observable.m_untold) - 1]->change;
    if (change.kind > Change::Keys)
        change = {Change::Reset};
}

void Round::strikeOut(const detail::DerivedList& list)
{
    t_behindCount -= list.m_isBehind;
    if (list.m_isInLine)
        leaveLine(list);
}

void Round::leaveLine(const detail::DerivedList& list)
{
    State& now = state();
    detail::DerivedList* const before = list.m_previousInLine;
    detail::DerivedList* const after = list.m_nextInLine;
    (before ? before->m_nextInLine : now.firstBehind) = after;
    (after ? after->m_previousInLine : now.lastBehind) = before;
}

void Round::strikeOut(std::size_t placeOfMonitor)
{
    state().monitors[placeOfMonitor - 1] = nullptr;
}

void Round::run()
{
    settleLists();
    m_isOpen = false;
    {
        const ObservableTracker::Suspension untracked;
        for (std::size_t place = m_firstUntold; place < m_state.untoldCount; ++place)
            tellNext(place);
        for (std::size_t place = m_firstMonitor; place < m_state.monitors.size(); ++place)
            m_thrown.guard([this, place] {
                if (MonitoredRun* const monitor = m_state.monitors[place])
                    monitor->runInRound();
            });
    }
    m_thrown.rethrow();
}

void Round::settleLists()
{
    while (detail::DerivedList* const list = m_state.firstBehind) {
        leaveLine(*list);
        list->m_isInLine = false;
        if (list->m_isBehind)
            m_thrown.guard([list] { list->settle(); });
    }
}

void Round::tellNext(std::size_t place)
{
    Untold& entry = *m_state.untold[place];
    if (entry.isThere() && entry.beforeTelling) {
        // The list may be told meanwhile, by a round that its functions make.
        const ObservableImpl::Hold hold = entry.hold;
        m_thrown.guard([&] { entry.beforeTelling(*entry.observable); });
    }
    if (entry.isThere()) {
        ObservableImpl& observable = *std::exchange(entry.observable, nullptr);
        observable.m_untold = 0;
        m_thrown.guard([&] { observable.tell(entry.change, entry.keys, entry.hold); });
    }
    entry.clear();
}

} // namespace iface
