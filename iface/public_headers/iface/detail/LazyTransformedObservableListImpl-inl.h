// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::destroyEntry(Entry* entry)
{
    auto* const item = static_cast<ItemInfo*>(entry);
    m_index.remove(*item);
    delete item;
}

template <class K, class V, class Eq, class Hash>
auto LazyTransformedObservableListImpl<K, V, Eq, Hash>::createEntry(const QVariant& inputItem) -> Entry*
{
    auto item = std::make_unique<ItemInfo>();
    item->key = inputItem.value<K>();
    item->value = m_mapping.get(item->key);
    return item.release();
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::derive(Entry& entry, const QVariant* inputItem)
{
    auto& item = static_cast<ItemInfo&>(entry);
    bool isOther = false;
    if (inputItem) {
        K key = inputItem->value<K>();
        isOther = !(item.key == key);
        if (isOther) {
            // Before the map is asked: what it announces meanwhile under this key has to find the item.
            m_index.remove(item);
            item.key = std::move(key);
            enterKey(item);
        }
    }
    V value = m_mapping.get(item.key);
    isOther = isOther || !Eq()(item.value, value);
    std::swap(item.value, value); // the old one goes last: that may run anything
    return isOther;
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::findEntries(const ChangedKeys& changed,
                                                                    QVarLengthArray<Entry*, 8>& found)
{
    return changed.visit<K>(
        [&](const K& key) { m_index.forEach(key, [&found](ItemInfo& item) { found.append(&item); }); });
}

} // namespace iface
