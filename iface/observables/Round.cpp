// SPDX-License-Identifier: Apache-2.0
#include <iface/Round.h>

#include "observables/MonitoredRun.h"
#include "observables/RoundState.h"

#include <iface/ObservableImpl.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/Intake.h>

#include <algorithm>
#include <memory>
#include <utility>

namespace iface {

Round::State& Round::state()
{
    // Looked at for every change and every read of a derived list: so without a guard, and the owner aside.
    [[gnu::tls_model("initial-exec")]] static constinit thread_local State* current = nullptr;
    if (!current) {
        static thread_local std::unique_ptr<State> owner;
        owner = std::make_unique<State>();
        current = owner.get();
    }
    return *current;
}

Round* Round::open()
{
    Round* const innermost = state().innermost;
    return innermost && innermost->m_isOpen ? innermost : nullptr;
}

unsigned Round::number()
{
    const Round* const innermost = state().innermost;
    return innermost ? innermost->m_number : 0;
}

bool Round::isAnyBehind()
{
    return state().behindCount > 0;
}

Round::Round()
    : m_state(state())
    , m_outer(std::exchange(m_state.innermost, this))
    , m_firstUntold(m_state.untold.size())
    , m_firstMonitor(m_state.monitors.size())
    , m_number(++m_state.lastNumber)
{
}

Round::~Round()
{
    m_state.untold.resize(m_firstUntold);
    m_state.monitors.resize(m_firstMonitor);
    m_state.innermost = m_outer;
}

/// Queues what changed for announcing, once, and has it marked by all who follow it.
void Round::enter(ObservableImpl& observable, const Change& change, BeforeTelling beforeTelling)
{
    auto& untold = m_state.untold;
    const auto known = std::size_t(observable.m_untold);
    if (known <= m_firstUntold) {
        Untold& added = untold.emplace_back();
        if (known > 0) {
            // An outer round has not come to announce an earlier change of it: that is announced with this one.
            std::swap(added, untold[known - 1]);
        } else {
            added.hold = ObservableImpl::Hold(observable);
            added.observable = &observable;
        }
        observable.m_untold = int(untold.size());
    }
    Untold& entry = untold[std::size_t(observable.m_untold) - 1];
    if (change.kind == Change::Keys)
        observable.appendKeys(*change.keys, entry.keys);
    entry.change = entry.change.kind == Change::None ? change : merged(entry.change, change);
    entry.change.keys = nullptr;
    if (beforeTelling)
        entry.beforeTelling = beforeTelling;
    for (Follower* follower = observable.m_firstFollower; follower; follower = follower->m_next)
        follower->mark(change);
}

void Round::enter(detail::Intake& intake)
{
    if (std::exchange(intake.m_isBehind, true))
        return;
    m_state.behind.push_back(&intake);
    ++m_state.behindCount;
}

std::size_t Round::enter(MonitoredRun& run)
{
    m_state.monitors.push_back(&run);
    return m_state.monitors.size();
}

void Round::strikeOut(const detail::Intake& intake)
{
    State& now = state();
    now.behindCount -= intake.m_isBehind;
    std::replace_if(
        now.behind.begin(), now.behind.end(), [&](const auto* other) { return other == &intake; }, nullptr);
}

void Round::strikeOut(std::size_t placeOfMonitor)
{
    state().monitors[placeOfMonitor - 1] = nullptr;
}

void Round::run()
{
    takeIn();
    m_isOpen = false;
    {
        const ObservableTracker::Suspension untracked;
        for (std::size_t place = m_firstUntold; place < m_state.untold.size(); ++place)
            tellNext(place);
        for (std::size_t place = m_firstMonitor; place < m_state.monitors.size(); ++place)
            runMonitor(place);
    }
    if (m_thrown)
        std::rethrow_exception(m_thrown);
}

void Round::takeIn()
{
    auto& behind = m_state.behind;
    for (std::size_t& next = m_state.nextBehind; next < behind.size();) {
        detail::Intake* const intake = behind[next++];
        if (intake && intake->m_isBehind)
            intake->settle();
    }
    behind.clear();
    m_state.nextBehind = 0;
}

void Round::tellNext(std::size_t place)
{
    // What is told may make rounds of its own, which add to the list and may tell this: nothing stays where it is.
    const auto isThere = [&] { return m_state.untold[place].observable && m_state.untold[place].hold.isAlive(); };
    if (isThere() && m_state.untold[place].beforeTelling) {
        const ObservableImpl::Hold hold = m_state.untold[place].hold;
        try {
            m_state.untold[place].beforeTelling(*m_state.untold[place].observable);
        } catch (...) {
            keepException();
        }
    }
    if (!isThere())
        return;
    const Untold entry = std::exchange(m_state.untold[place], Untold());
    entry.observable->m_untold = 0;
    try {
        entry.observable->tell(entry.change, entry.keys, entry.hold);
    } catch (...) {
        keepException();
    }
}

void Round::runMonitor(std::size_t place)
{
    MonitoredRun* const monitor = m_state.monitors[place];
    if (!monitor)
        return;
    try {
        monitor->runInRound();
    } catch (...) {
        keepException();
    }
}

void Round::keepException()
{
    if (!m_thrown)
        m_thrown = std::current_exception();
}

} // namespace iface
