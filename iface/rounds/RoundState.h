// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/MapChange.h>
#include <iface/ObservableImpl.h>
#include <iface/Round.h>

#include <cstddef>
#include <memory>
#include <vector>

namespace iface {

/// What a round has yet to announce of one observable.
struct Round::Untold
{
    bool isThere() const { return observable && hold.isAlive(); }
    /// For the next: what is mostly empty stays untouched.
    void clear();

    ObservableImpl::Hold hold;
    ObservableImpl* observable = nullptr; ///< null once it was told or has gone over to an inner round
    Change change;
    std::vector<MapChange> keys; ///< copies, each of them announced; none if nobody listens
    BeforeTelling beforeTelling = nullptr;
};

/// What the rounds under way on one thread have to do. Inner rounds stand behind outer ones in the same lists, and are
/// gone before the outer ones go on.
struct Round::State
{
    unsigned lastNumber = 0;
    /// Each stays where it is while inner rounds add to them, and is used again.
    std::vector<std::unique_ptr<Untold>> untold;
    std::size_t untoldCount = 0;
    std::vector<MonitoredRun*> monitors;
    /// Only the innermost round can be open, so these are its own; in a row that takes no memory, for who is not in it
    /// would stay behind.
    detail::DerivedList* firstBehind = nullptr;
    detail::DerivedList* lastBehind = nullptr;
};

/// Looked at for every change and every read of a derived list: the innermost round under way on this thread, and how
/// many have yet to take something in (of those that stand in line; who was read has done so already).
[[gnu::tls_model("initial-exec")]] extern constinit thread_local Round* t_innermostRound;
[[gnu::tls_model("initial-exec")]] extern constinit thread_local int t_behindCount;
/// How often one has come to be behind.
[[gnu::tls_model("initial-exec")]] extern constinit thread_local unsigned t_timesBehind;

/// While a list is brought up to date, which may take reading others. How often a list may take something in is counted
/// once for a round, but within together() anew for each outermost read: a function that makes changes may read as
/// often as it likes.
class Round::Settling
{
public:
    explicit Settling(Round& round)
        : m_round(round)
    {
        if (m_round.m_settlings++ == 0 && m_round.m_isBeingMade)
            m_round.m_countedIn = ++m_round.m_state.lastNumber;
    }
    ~Settling() { --m_round.m_settlings; }

private:
    Q_DISABLE_COPY_MOVE(Settling)
    Round& m_round;
};

inline Round* Round::open()
{
    return t_innermostRound && t_innermostRound->m_isOpen ? t_innermostRound : nullptr;
}

} // namespace iface
