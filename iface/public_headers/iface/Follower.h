// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtGlobal>

namespace iface {

class ObservableImpl;
struct Change;

/// Whoever takes in the changes of one observable before anybody is told of them (see Round). It costs four pointers
/// and no connection: what containers use per item.
///
/// Derive from it, call follow(), and mark() is called for every change from then on until detach(), until either side
/// is destroyed, or until something else is followed. It does not keep the observable alive. Both belong to one thread.
class ZEL_EXPORT Follower
{
public:
    Follower() = default;
    virtual ~Follower();

    void follow(const ObservableImpl& observable);
    void detach();
    /// What is followed; null after detach() or once it is gone.
    const ObservableImpl* observable() const { return m_observable; }

protected:
    /// The observable shows the change already, and nobody has been told. Notes it for later, or announces what follows
    /// from it with fire...(), which is then put off until everybody has taken in everything. Runs nobody else's code,
    /// reads nothing, and leaves alone who follows what. What it throws keeps nobody else from being marked, and goes
    /// on to whoever made the change when all has been announced.
    virtual void mark(const Change& change) = 0;

private:
    Q_DISABLE_COPY_MOVE(Follower)
    friend class ObservableImpl;
    friend class Round;

    const ObservableImpl* m_observable = nullptr;
    Follower* m_previous = nullptr;
    Follower* m_next = nullptr;
};

} // namespace iface
