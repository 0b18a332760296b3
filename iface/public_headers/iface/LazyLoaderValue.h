// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/WritableObservableValue.h>

namespace iface {

namespace detail {
template <class K, class V>
class LazyLoaderEntry;
} // namespace detail

/// What a LazyLoader holds under one key, for those who observe it. It is made when the first of them asks, and set by
/// the loader's store(): what is set here directly the loader does not know of.
template <class K, class V>
class LazyLoaderValue : public WritableObservableValue<V>
{
public:
    enum State { Settled = 1, Requested = 2 };

    using WritableObservableValue<V>::WritableObservableValue;

    /// Requested until the request that carries this key has been answered, or its contents have come unasked.
    int state() const { return m_state; }

private:
    friend class detail::LazyLoaderEntry<K, V>;

    State m_state = Requested;
};

} // namespace iface
