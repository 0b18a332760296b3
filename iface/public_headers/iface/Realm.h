// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QThreadStorage>

#include <boost/function.hpp>

class QObject;

namespace iface {

/// A queue of work to be done later on the thread that owns the realm.
class ZEL_EXPORT Realm
{
public:
    virtual ~Realm();

    /// Queues a function and returns its id, which is unique among all realms of the process.
    virtual int asyncExec(const boost::function<void()>& function) = 0;

    /// The calling thread's realm, a QApplicationRealm unless somebody has put another into `defaultRealm`. The first
    /// call on a thread makes it; it goes with the thread (on the main thread with the application object), and what
    /// its functions held must not ask for another as it goes.
    static QSharedPointer<Realm> threadDefault();

    /// Queues a function on the calling thread's realm that is only called if `guard` is still there by then.
    static int postGuarded(QObject* guard, const boost::function<void()>& function);

    static QThreadStorage<QSharedPointer<Realm>> defaultRealm;
};

} // namespace iface
