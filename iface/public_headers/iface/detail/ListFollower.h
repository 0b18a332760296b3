// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

#include <utility>

namespace iface::detail {

/// Tells a list that follows another one by index whether what it hears is the change after the one it heard last.
///
/// A handler that was called before may have changed the followed list in answer. That second change is heard first and
/// finds a list that it does not fit; the first one, heard after it, tells of places that are no longer. Neither is the
/// next, and the follower has to read everything again.
class ListFollower
{
public:
    explicit ListFollower(const ObservableListImpl* list = nullptr) { follow(list); }

    /// From the state in which the list is now. Null: nothing is followed.
    void follow(const ObservableListImpl* list)
    {
        m_list = list;
        m_heard = list ? list->announcedChanges() : 0;
    }

    /// To be called first thing for everything that the list announces.
    bool hearsNext()
    {
        const unsigned now = m_list->announcedChanges();
        return now == std::exchange(m_heard, now) + 1;
    }

private:
    const ObservableListImpl* m_list;
    unsigned m_heard;
};

} // namespace iface::detail
