// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyTransformedObservableListImpl.h>
#include <iface/TransformedObservableList.h>

namespace iface {

/// A reader of a transformed list that knows what it reads. Most code takes the plain `ObservableList<V>` that
/// TransformedObservableList::create() returns.
template <class K, class V, class Eq = iEqual<V>, class Hash = KeyHash<K>>
using LazyTransformedObservableList = ObservableList<V, LazyTransformedObservableListImpl<K, V, Eq, Hash>>;

} // namespace iface
