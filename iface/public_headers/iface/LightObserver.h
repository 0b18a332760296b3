// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtGlobal>

namespace iface {

class ObservableImpl;

/// An observer of one observable that costs four pointers and no connection: what containers use per item.
///
/// Derive from it, call observe(), and observableChanged() is called for every change until detach(), until
/// either side is destroyed, or until it observes something else. It does not keep the observable alive.
/// Both sides belong to one thread, and the observable's announcements are made there.
///
/// observableChanged() may observe, detach, destroy this or other light observers, drop the last handle on the
/// observable, spin an event loop, or throw. Light observers are called in the order in which they attached, before
/// all receivers of ObservableImpl::observableChanged(); one that attaches during an announcement hears the next one.
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

private:
    Q_DISABLE_COPY_MOVE(LightObserver)
    friend class ObservableImpl;

    const ObservableImpl* m_observable = nullptr;
    LightObserver* m_previous = nullptr;
    LightObserver* m_next = nullptr;
};

} // namespace iface
