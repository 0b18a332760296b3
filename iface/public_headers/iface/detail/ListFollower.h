// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LightObserver.h>
#include <iface/ObservableListImpl.h>

#include <utility>

namespace iface::detail {

/// What a list that follows another one by index hears of it, and whether that is the change after the one heard last.
///
/// A handler that was called before may have changed the followed list in answer. That second change is heard first and
/// finds a list that it does not fit; the first one, heard after it, tells of places that are no longer. Neither is the
/// next, and the follower has to read everything again.
class ListFollower : public LightObserver
{
public:
    /// From the state in which the list is now. Null: nothing is followed.
    void follow(const ObservableListImpl* list)
    {
        detach();
        if (!list)
            return;
        observe(*list);
        m_heard = list->announcedChanges();
    }

    /// Calls the operation that the change is for: added(), updated() or removed() with the index, or changed().
    template <class Taker>
    static auto deliver(const ListChange& change, Taker& taker)
    {
        switch (change.kind) {
        case ListChange::ItemAdded:
            return taker.added(change.index);
        case ListChange::ItemUpdated:
            return taker.updated(change.index);
        case ListChange::ItemRemoved:
            return taker.removed(change.index);
        case ListChange::ItemsChanged:
            break;
        }
        return taker.changed(change.type, change.mapper);
    }

protected:
    virtual void heard(const ListChange& change, bool isNext) = 0;

private:
    void observableChanged() override {}
    void listChanged(const ListChange& change) override
    {
        const unsigned now = static_cast<const ObservableListImpl*>(observable())->announcedChanges();
        const bool isNext = now == std::exchange(m_heard, now) + 1;
        heard(change, isNext);
    }

    unsigned m_heard = 0;
};

} // namespace iface::detail
