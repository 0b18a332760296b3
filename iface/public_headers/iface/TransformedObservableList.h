// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyTransformedObservableListImpl.h>

namespace iface {

/// Makes transformed lists.
///
///     iface::ObservableList<Person> people = iface::TransformedObservableList::create<QString, Person>(ids, persons);
struct TransformedObservableList
{
    /// A LazyTransformedObservableListImpl over keys and map, which it holds.
    template <class K, class V, class Eq = iEqual<V>, class Hash = KeyHash<K>>
    static ObservableList<V>
    create(const ObservableList<K>& keys, const ObservableMap<K, V>& mapping,
           int cacheLimit = LazyTransformedObservableListImpl<K, V, Eq, Hash>::DefaultCacheLimit)
    {
        return ObservableList<V>(new LazyTransformedObservableListImpl<K, V, Eq, Hash>(keys, mapping, cacheLimit));
    }
};

} // namespace iface
