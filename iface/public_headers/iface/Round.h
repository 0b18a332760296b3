// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/detail/FirstException.h>

#include <QtGlobal>

#include <cstddef>
#include <utility>

namespace iface {

class MonitoredRun;
class ObservableImpl;
struct Change;

namespace detail {
class DerivedList;
} // namespace detail

/// One change, or several made together, and all that follows from it. It goes in two steps: everything that is derived
/// from what changed takes the change in, and then everything that changed is announced, once, in the order in which it
/// changed; monitors run last. So nobody who is called finds one list ahead of another.
///
/// fire...() and notifyObservers() make a round by themselves, or none if nobody follows what changed: then there is
/// nothing to take in. A change made while one is being announced is a round of its own, announced in full before the
/// other goes on, together with what that had not yet announced of the same containers. A change made during the first
/// step (by a filter that does more than judge) joins the round.
///
/// What filters, maps, followers and handlers throw does not keep anything from being announced: the first exception
/// goes on when all has been done. Rounds of different threads have nothing to do with each other.
class ZEL_EXPORT Round
{
public:
    /// Makes the changes that `function` makes one: nothing is announced before it has returned, whatever it throws.
    /// What it reads meanwhile is as it will be announced.
    template <class Function>
    static void together(Function&& function);

    /// Tells rounds of this thread apart: that of the innermost one under way, 0 if there is none (a change that nobody
    /// follows makes none). A change may be announced in another round than the one in which it was made: when a slot
    /// makes a change, what was outstanding of the same containers comes with that, and with it the calls of a cached
    /// list's functions.
    static unsigned number();

private:
    friend class ObservableImpl;
    friend class MonitoredRun;
    friend class detail::DerivedList;
    struct State;
    struct Untold;
    class Settling;
    using BeforeTelling = void (*)(ObservableImpl&);

    Round();
    ~Round();
    Q_DISABLE_COPY_MOVE(Round)

    static State& state();
    /// The round that is being taken in, if any: all changes join it.
    static Round* open();
    static bool isOpen();
    static void heedNewObserver(ObservableImpl& observable);
    static void strikeOut(const detail::DerivedList& list);
    static void leaveLine(const detail::DerivedList& list);
    static void strikeOut(std::size_t placeOfMonitor);

    void enter(ObservableImpl& observable, const Change& change, BeforeTelling beforeTelling);
    void queue(ObservableImpl& observable, const Change& change, BeforeTelling beforeTelling);
    void enter(detail::DerivedList& list) noexcept;
    std::size_t enter(MonitoredRun& run);
    Untold& nextUntold();
    void run();
    void settleLists();
    void tellNext(std::size_t place);

    State& m_state;
    Round* const m_outer;
    const std::size_t m_firstUntold;
    const std::size_t m_firstMonitor;
    const unsigned m_number;
    unsigned m_countedIn = m_number; ///< names the count of how often a list has taken something in
    int m_settlings = 0;             ///< under way, each for the sake of the one before
    bool m_isOpen = true;
    bool m_isBeingMade = false; ///< together() is calling the function
    detail::FirstException m_thrown;
};

template <class Function>
void Round::together(Function&& function)
{
    if (isOpen()) {
        std::forward<Function>(function)();
        return;
    }
    Round round;
    round.m_isBeingMade = true;
    round.m_thrown.guard(std::forward<Function>(function));
    round.m_isBeingMade = false;
    round.run();
}

} // namespace iface
