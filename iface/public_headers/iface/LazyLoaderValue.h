// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/WritableObservableValue.h>

namespace iface {

template <class K, class V>
class LazyLoader;

/// One value of a LazyLoader, small because there is one per key.
template <class K, class V>
class LazyLoaderValue : public WritableObservableValue<V>
{
public:
    enum State { Settled = 1, Requested = 2 };

    using WritableObservableValue<V>::WritableObservableValue;

    /// Requested until the request that carries this key has been answered, or its contents have come unasked.
    int state() const { return m_state; }

private:
    friend class LazyLoader<K, V>;

    quint8 m_state = Requested;
    // Contents have been stored, though the request's end may not have come yet.
    bool m_stored = false;
    // In the request under way.
    bool m_inFlight = false;
};

} // namespace iface
