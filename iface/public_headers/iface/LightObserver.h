// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtGlobal>

namespace iface {

class ChangedKeys;
class ObservableImpl;
struct ListChange;

/// An observer of one observable that costs four pointers and no connection: what containers use per item.
///
/// Derive from it, call observe(), and observableChanged() is called for every change until detach(), until
/// either side is destroyed, or until it observes something else. It does not keep the observable alive.
/// Both sides belong to one thread, and the observable's announcements are made there.
///
/// observableChanged() may observe, detach, destroy this or other light observers, drop the last handle on the
/// observable, spin an event loop, or throw. Light observers are called in the order in which they attached, before
/// all receivers of ObservableImpl::observableChanged(); one that attaches during an announcement hears the next one.
///
/// What a list says of its items, and a map of its keys, comes in calls of its own, likewise to all light observers
/// before the receivers of the signals that say the same: so derived lists and maps are up to date when a slot reads
/// them.
class ZEL_EXPORT LightObserver
{
public:
    LightObserver() = default;
    virtual ~LightObserver();

    /// Observes `observable` from now on and nothing else any more.
    void observe(const ObservableImpl& observable);
    void detach();
    /// What is observed; null after detach() or once it is gone.
    const ObservableImpl* observable() const { return m_observable; }

protected:
    virtual void observableChanged() = 0;
    /// A list announces something of its items.
    virtual void listChanged(const ListChange& change);
    /// A map announces which of its keys changed.
    virtual void keysChanged(const ChangedKeys& keys);

    /// The first one of an observable, or null.
    static const LightObserver* firstOf(const ObservableImpl& observable);

private:
    Q_DISABLE_COPY_MOVE(LightObserver)
    friend class ObservableImpl;

    const ObservableImpl* m_observable = nullptr;
    LightObserver* m_previous = nullptr;
    LightObserver* m_next = nullptr;
};

} // namespace iface
