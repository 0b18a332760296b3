// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ChangedKeys.h>
#include <iface/MapChange.h>
#include <iface/ObservableImpl.h>

namespace iface {

/// What all observable maps share, whatever their types: the announcement of a change.
///
/// A map changes its entries first and then calls fireMapChanged(). Inside that call everything that follows the map
/// (derived lists and maps) takes the change in; then mapChanged() comes, if keys are known, and after it, in every
/// case, whatever plain observers hear. So a change without keys reaches plain observers alone. Keys and changes that
/// are announced are copies. What handlers may do, and how long the map lives, is as ObservableImpl has it.
class ZEL_EXPORT ObservableMapImplBase : public ObservableImpl
{
    Q_OBJECT

public:
    ObservableMapImplBase();

    void fireMapChanged(const MapChange& change) { fireChangedKeys(ChangedKeys(change)); }
    /// The same for the change of one key, which is put into a MapChange only if somebody is there to hear of it.
    template <class K>
    void fireKeyChanged(const K& key)
    {
        fireChangedKeys(ChangedKeys::single(key));
    }
    /// The same with what another map announces.
    void fireChangedKeys(const ChangedKeys& keys);

Q_SIGNALS:
    /// Comes after the change.
    void mapChanged(MapChange event);
};

} // namespace iface
