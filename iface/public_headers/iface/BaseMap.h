// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableMapImpl.h>

namespace iface {

/// The base of maps that store their entries: they supply doGet().
template <class K, class V, class Eq = iEqual<V>>
class BaseMap : public ObservableMapImpl<K, V>
{
public:
    V get(const K& key) const override { return doGet(key); }
    bool equals(const V& a, const V& b) const override { return Eq()(a, b); }

protected:
    virtual V doGet(const K& key) const = 0;
};

} // namespace iface
