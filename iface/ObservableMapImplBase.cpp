// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableMapImplBase.h>

#include <iface/ObservableMapImplFunctorAdapter.h>

#include <utility>

namespace iface {

namespace {

// Under the name that the signal uses, for whoever connects across threads by that.
[[maybe_unused]] const int mapChangeId = qRegisterMetaType<MapChange>("MapChange");

} // namespace

MapChange::MapChangeContentBase::~MapChangeContentBase() = default;

ObservableMapImplBase::ObservableMapImplBase() = default;

void ObservableMapImplBase::fireMapChanged(const MapChange& change)
{
    if (!mayBeHeard())
        return;
    Announcement announcement(*this);
    doFireMapChanged(change, announcement);
}

void ObservableMapImplBase::doFireMapChanged(const MapChange& change, Announcement& announcement)
{
    if (change.hasContent())
        Q_EMIT mapChanged(change);
    if (announcement.isAlive())
        doEmit(announcement);
}

ObservableMapImplFunctorAdapter::ObservableMapImplFunctorAdapter(boost::function<void(MapChange)> function,
                                                                 QObject* parent)
    : QObject(parent)
    , m_function(std::move(function))
{
}

void ObservableMapImplFunctorAdapter::startListening(const ObservableMapImplBase* map)
{
    if (map)
        connect(map, &ObservableMapImplBase::mapChanged, this, &ObservableMapImplFunctorAdapter::mapChanged);
}

void ObservableMapImplFunctorAdapter::stopListening(const ObservableMapImplBase* map)
{
    if (map)
        disconnect(map, &ObservableMapImplBase::mapChanged, this, &ObservableMapImplFunctorAdapter::mapChanged);
}

void ObservableMapImplFunctorAdapter::mapChanged(MapChange change)
{
    // A copy: the function may destroy this.
    const boost::function<void(MapChange)> function = m_function;
    function(change);
}

} // namespace iface
