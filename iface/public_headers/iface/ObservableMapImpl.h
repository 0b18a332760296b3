// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Equality.h>
#include <iface/ObservableMapImplBase.h>
#include <iface/ObservableValue.h>

namespace iface {

namespace detail {

/// What a map answers for a key that it does not know. Never a handle on nothing.
template <class V>
struct MissingValue
{
    static V make() { return V(); }
};

template <class T, class Impl>
struct MissingValue<ObservableValue<T, Impl>>
{
    static ObservableValue<T, Impl> make() { return ObservableValue<T, Impl>(new Impl); }
};

} // namespace detail

/// The base of all observable maps from `K` to `V`, itself a map in which every key is missing.
///
/// get() of a missing key answers a default value and is never an error; it does not record a read (handles do).
template <class K, class V>
class ObservableMapImpl : public ObservableMapImplBase
{
public:
    virtual V get(const K&) const { return detail::MissingValue<V>::make(); }
    /// Whether two values count as the same, so that going from one to the other is no change.
    virtual bool equals(const V& a, const V& b) const { return iEqual<V>()(a, b); }
};

} // namespace iface
