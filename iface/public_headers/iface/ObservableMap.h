// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableMapImpl.h>
#include <iface/ObservableTracker.h>

#include <QtCore/QExplicitlySharedDataPointer>

#include <type_traits>

namespace iface {

/// A typed reader of a map: a value that shares the map with its copies. The last reference to go deletes the map.
///
/// Reading any key is recorded as a read of the whole map (see ObservableTracker). A handle on nothing answers default
/// values. Handles on a derived implementation convert to handles on its base. One thread.
template <class K, class V, class Impl = ObservableMapImpl<K, V>>
class ObservableMap
{
public:
    ObservableMap() = default;
    explicit ObservableMap(Impl* impl)
        : d(impl)
    {
    }
    explicit ObservableMap(const QExplicitlySharedDataPointer<Impl>& impl)
        : d(impl)
    {
    }
    template <class Derived>
    requires(std::is_convertible_v<Derived*, Impl*> && !std::is_same_v<Derived, Impl>)
        ObservableMap(const ObservableMap<K, V, Derived>& other)
        : d(other.impl())
    {
    }

    V get(const K& key) const;

    Impl* impl() const { return d.data(); }
    friend bool operator==(const ObservableMap& a, const ObservableMap& b) { return a.d == b.d; }

private:
    QExplicitlySharedDataPointer<Impl> d;
};

template <class K, class V, class Impl>
V ObservableMap<K, V, Impl>::get(const K& key) const
{
    if (!d)
        return detail::MissingValue<V>::make();
    ObservableTracker::getterCalled(d.data());
    return d->get(key);
}

} // namespace iface
