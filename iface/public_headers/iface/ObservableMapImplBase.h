// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/MapChange.h>
#include <iface/ObservableImpl.h>

namespace iface {

/// What all observable maps share, whatever their types: the announcement of a change.
///
/// A map changes its entries first and then calls fireMapChanged(). Inside that call mapChanged() comes first, and only
/// if keys are known; then, in every case, whatever plain observers hear. So a change without keys reaches plain
/// observers alone. What handlers may do, and how long the map lives, is as ObservableImpl has it.
class ZEL_EXPORT ObservableMapImplBase : public ObservableImpl
{
    Q_OBJECT

public:
    ObservableMapImplBase();

    void fireMapChanged(const MapChange& change);
    /// The same for the change of one key, which is put into words only if somebody is there to hear of it.
    template <class K>
    void fireKeyChanged(const K& key);

Q_SIGNALS:
    /// Comes after the change.
    void mapChanged(MapChange event);

private:
    void doFireMapChanged(const MapChange& change, Announcement& announcement);
};

template <class K>
void ObservableMapImplBase::fireKeyChanged(const K& key)
{
    if (wasConnected())
        fireMapChanged(MapChange::createSingle(key));
    else
        notifyObservers();
}

} // namespace iface
