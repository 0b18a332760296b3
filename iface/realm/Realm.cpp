// SPDX-License-Identifier: Apache-2.0
#include <iface/Realm.h>

#include <iface/QApplicationRealm.h>
#include <iface/detail/MakeShared.h>

#include <QtCore/QPointer>

namespace iface {

QThreadStorage<QSharedPointer<Realm>> Realm::defaultRealm;

Realm::~Realm() = default;

QSharedPointer<Realm> Realm::threadDefault()
{
    if (!defaultRealm.hasLocalData() || !defaultRealm.localData())
        defaultRealm.setLocalData(detail::makeShared<QApplicationRealm>());
    return defaultRealm.localData();
}

int Realm::postGuarded(QObject* guard, const boost::function<void()>& function)
{
    return threadDefault()->asyncExec([guarded = QPointer<QObject>(guard), function] {
        if (guarded)
            function();
    });
}

} // namespace iface
