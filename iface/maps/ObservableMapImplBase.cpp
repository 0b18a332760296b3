// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableMapImplBase.h>

#include <iface/Change.h>
#include <iface/ObservableMapImplFunctorAdapter.h>

#include <utility>

namespace iface {

namespace {

// Under the name that the signal uses, for whoever connects across threads by that.
[[maybe_unused]] const int mapChangeId = qRegisterMetaType<MapChange>("MapChange");

} // namespace

MapChange::MapChangeContentBase::~MapChangeContentBase() = default;

ObservableMapImplBase::ObservableMapImplBase() = default;

void ObservableMapImplBase::fireChangedKeys(const ChangedKeys& keys)
{
    note(keys.isKnown() ? Change{Change::Keys, -1, nullptr, &keys} : Change{Change::Plain});
}

ObservableMapImplFunctorAdapter::ObservableMapImplFunctorAdapter(boost::function<void(MapChange)> function,
                                                                 QObject* parent)
    : QObject(parent)
    , m_function(std::move(function))
{
}

ObservableMapImplFunctorAdapter::~ObservableMapImplFunctorAdapter()
{
    // What ends with the function may change the maps.
    const boost::function<void(MapChange)> ending = std::exchange(m_function, [](const MapChange&) {});
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
