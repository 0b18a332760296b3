// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LightObserver.h>
#include <iface/ObservableMap.h>
#include <iface/ObservableValue.h>

#include <boost/unordered_map.hpp>

#include <typeinfo>

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

    /// How many values are observed.
    int observedCount() const { return static_cast<int>(m_entries.size()); }

private:
    // Light: there is one per value.
    class EntryStruct : public LightObserver
    {
    public:
        explicit EntryStruct(MapObservableToValue* owner)
            : m_owner(owner)
        {
        }

        /// Whether it is an entry of the map that observes a value before all others, as is the rule. The value is at
        /// hand, and the table of entries mostly in no cache.
        static bool isFirst(const ObservableImpl& value, const MapObservableToValue* map)
        {
            const LightObserver* const first = firstOf(value);
            return first && typeid(*first) == typeid(EntryStruct) &&
                   static_cast<const EntryStruct*>(first)->m_owner == map;
        }

    protected:
        void observableChanged() override;

    private:
        MapObservableToValue* const m_owner;
    };

    static constexpr std::size_t FirstBucketCount = 11;

    MapObservableToValue()
        : m_entries(FirstBucketCount)
    {
        m_entries.max_load_factor(1.0F);
    }

    mutable boost::unordered_map<Handle, EntryStruct, boost::hash<Handle>> m_entries;
};

template <class V, class Eq>
V MapObservableToValue<V, Eq>::get(const Handle& handle) const
{
    if (!handle.impl())
        return V();
    if (!EntryStruct::isFirst(*handle.impl(), this)) {
        const auto [entry, isNew] = m_entries.try_emplace(handle, const_cast<MapObservableToValue*>(this));
        if (isNew)
            entry->second.observe(*handle.impl());
    }
    return handle.getValue();
}

template <class V, class Eq>
void MapObservableToValue<V, Eq>::EntryStruct::observableChanged()
{
    // Observed by get() through a handle of this very type; the constness is that of the reader.
    auto* value = static_cast<const ObservableValueImpl<V>*>(observable());
    m_owner->fireKeyChanged(Handle(const_cast<ObservableValueImpl<V>*>(value)));
}

} // namespace iface
