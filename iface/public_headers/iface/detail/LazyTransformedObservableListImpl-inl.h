// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::destroyEntry(Entry* entry) const
{
    auto* const item = static_cast<ItemInfo*>(entry);
    if (item->is_linked())
        m_index.items.erase(m_index.items.iterator_to(*item));
    delete item;
}

template <class K, class V, class Eq, class Hash>
auto LazyTransformedObservableListImpl<K, V, Eq, Hash>::createEntry(const QVariant& inputItem) const -> Entry*
{
    auto item = std::make_unique<ItemInfo>();
    item->key = inputItem.value<K>();
    item->value = m_mapping.get(item->key);
    return item.release();
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::derive(Entry& entry, const QVariant* inputItem) const
{
    auto& item = static_cast<ItemInfo&>(entry);
    bool isOther = false;
    if (inputItem) {
        K key = inputItem->value<K>();
        isOther = !(item.key == key);
        if (isOther) {
            // Before the map is asked: what it announces meanwhile under this key has to find the item.
            m_index.items.erase(m_index.items.iterator_to(item));
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
                                                                    QVarLengthArray<Entry*, 8>& found) const
{
    return changed.visit<K>([&](const K& key) {
        for (auto [it, end] = m_index.items.equal_range(key); it != end; ++it)
            found.append(&*it);
    });
}

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::Index::insert(ItemInfo& item, int expected)
{
    if (items.size() >= buckets.size()) {
        const auto count = std::max(buckets.size() + 1, static_cast<std::size_t>(expected));
        std::vector<typename KeyIndex::bucket_type> more(KeyIndex::suggested_upper_bucket_count(count));
        items.rehash(typename KeyIndex::bucket_traits(more.data(), more.size()));
        buckets.swap(more);
    }
    items.insert(item);
}

} // namespace iface
