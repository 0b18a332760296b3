// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/AsyncEntry.h>
#include <iface/Realm.h>

#include <QtCore/QList>
#include <QtCore/QObject>

namespace iface {

/// A realm on the event loop of the thread it lives in: one queued function per turn, first in, first out.
///
/// To be used on that thread only. What is queued while a function runs comes in a later turn, after what was queued
/// before. A function may queue, remove, spin an event loop (in which the queue goes on), or destroy the realm, which
/// drops what is still queued. Reads of a queued function are no dependencies of whatever waits in an event loop below.
class ZEL_EXPORT QApplicationRealm : public QObject, public Realm
{
    Q_OBJECT

public:
    QApplicationRealm();
    ~QApplicationRealm() override;

    int asyncExec(const boost::function<void()>& function) override;
    /// Drops a function that has not run yet.
    void remove(int id);

public Q_SLOTS:
    /// Runs the first queued function, if there is one. An empty function throws `boost::bad_function_call`.
    void execute();

Q_SIGNALS:
    void itemQueued();

private:
    QList<AsyncEntry> m_queue;
};

} // namespace iface
