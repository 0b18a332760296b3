// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/FirstException.h>

#include <deque>
#include <functional>
#include <utility>

namespace zelsplib {

/// The events of one manager that are still to be told.
///
/// An event may end in a slot of the application that spins an event loop, in which more arrives. Whoever has events
/// posts all of them, its own state being whole by then, and delivers: what an interrupted delivery has left over
/// comes first, so every event is told once and in the order in which they were posted, however deep it nests.
///
/// An event that throws is not told again, and keeps no other from being told: the first exception goes on when none
/// is left.
class EventQueue
{
public:
    void post(std::function<void()> event) { m_events.push_back(std::move(event)); }

    void deliver()
    {
        iface::detail::FirstException thrown;
        while (!m_events.empty()) {
            const auto event = std::move(m_events.front());
            m_events.pop_front();
            thrown.guard(event);
        }
        thrown.rethrow();
    }

private:
    std::deque<std::function<void()>> m_events;
};

} // namespace zelsplib
