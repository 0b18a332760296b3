// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/Follower.h>
#include <iface/ObservableMap.h>
#include <iface/ObservableValue.h>

#include <boost/unordered_map.hpp>

namespace iface {

/// The map from observable values to what they hold at present.
///
/// Every value that was ever asked for is held and observed until the map goes; its changes are announced under its
/// handle, one by one. Reading an item reads the value as well, so a tracked computation depends on both.
template <class V, class Eq = iEqual<V>>
class MapObservableToValue : public ObservableMapImpl<ObservableValue<V>, V>
{
public:
    using Handle = ObservableValue<V>;

    static ObservableMap<Handle, V> create() { return ObservableMap<Handle, V>(new MapObservableToValue); }
    ~MapObservableToValue() override { m_entries.clear(); }

    V get(const Handle& handle) const override;
    bool equals(const V& a, const V& b) const override { return Eq()(a, b); }

private:
    // Light: there is one per value.
    class EntryStruct : public Follower
    {
    public:
        explicit EntryStruct(MapObservableToValue* owner)
            : m_owner(owner)
        {
        }

    protected:
        void mark(const Change& change) override;

    private:
        MapObservableToValue* const m_owner;
    };

    MapObservableToValue() = default;

    static constexpr std::size_t FirstBucketCount = 11;

    mutable boost::unordered_map<Handle, EntryStruct, boost::hash<Handle>> m_entries{FirstBucketCount};
};

template <class V, class Eq>
V MapObservableToValue<V, Eq>::get(const Handle& handle) const
{
    if (!handle.impl())
        return V();
    const auto [entry, isNew] = m_entries.try_emplace(handle, const_cast<MapObservableToValue*>(this));
    if (isNew)
        entry->second.follow(*handle.impl());
    return handle.getValue();
}

template <class V, class Eq>
void MapObservableToValue<V, Eq>::EntryStruct::mark(const Change&)
{
    // Followed by get() through a handle of this very type; the constness is that of the reader.
    auto* value = static_cast<const ObservableValueImpl<V>*>(this->observable());
    m_owner->fireKeyChanged(Handle(const_cast<ObservableValueImpl<V>*>(value)));
}

} // namespace iface
