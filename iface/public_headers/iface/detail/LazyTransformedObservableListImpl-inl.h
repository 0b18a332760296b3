// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::destroyEntry(Entry* entry) const
{
    auto* const item = static_cast<ItemInfo*>(entry);
    removeFromIndex(item);
    delete item;
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::derive(Entry& entry, const Watch& watch,
                                                               const QVariant* inputItem) const
{
    auto& item = static_cast<ItemInfo&>(entry);
    // A copy: the entry may go while the map is asked.
    const K key = inputItem ? inputItem->value<K>() : item.key;
    const bool isOtherKey = !item.isIndexed || !(item.key == key);
    // Before the map is asked: what it announces meanwhile under this key has to find the item.
    if (isOtherKey)
        setKey(item, key);
    V value = m_mapping.get(key);
    if (!watch.isThere())
        return false;
    const bool isOther = isOtherKey || !Eq()(item.value, value);
    item.value = std::move(value);
    return isOther;
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::findEntries(const MapChange& change,
                                                                    QVarLengthArray<Entry*, 8>& found) const
{
    const QList<K> keys = change.keys<K>();
    for (const K& key : keys) {
        for (auto [it, end] = m_keyIndex.equal_range(key); it != end; ++it)
            found.append(*it);
    }
    return !keys.isEmpty();
}

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::setKey(ItemInfo& item, const K& key) const
{
    removeFromIndex(&item);
    item.key = key;
    m_keyIndex.insert(&item);
    item.isIndexed = true;
}

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::removeFromIndex(ItemInfo* item) const
{
    if (!item->isIndexed)
        return;
    item->isIndexed = false;
    for (auto [it, end] = m_keyIndex.equal_range(item->key); it != end; ++it) {
        if (*it == item) {
            m_keyIndex.erase(it);
            return;
        }
    }
}

} // namespace iface
