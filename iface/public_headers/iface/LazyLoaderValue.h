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
    int state() const { return m_progress == Progress::Settled ? Settled : Requested; }

private:
    friend class LazyLoader<K, V>;

    enum class Progress : quint8 {
        Waiting,  ///< to be requested
        InFlight, ///< in the request under way, or in one whose answer is being stored
        Arrived,  ///< the same, and its contents have been stored
        Settled
    };

    Progress m_progress = Progress::Waiting;
};

} // namespace iface
