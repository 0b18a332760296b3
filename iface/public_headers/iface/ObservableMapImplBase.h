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

Q_SIGNALS:
    /// Comes after the change.
    void mapChanged(MapChange event);

private:
    void doFireMapChanged(const MapChange& change, Announcement& announcement);
};

} // namespace iface
