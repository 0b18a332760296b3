// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Equality.h>
#include <iface/ObservableList.h>
#include <iface/ObservableMap.h>
#include <iface/detail/KeyIndex.h>
#include <iface/detail/LazyTransformedListBase.h>

#include <cstddef>
#include <limits>
#include <memory>
#include <utility>

namespace iface {

/// A list of keys seen through a map: the item at an index is the map's value for the key at that index.
///
/// An item is computed when it is first read, and kept. Once `cacheLimit` items are kept, the next new one has all of
/// them forgotten first. A change of the map under the key of a kept item has the item computed again, and it is
/// announced if it is another by `Eq`. A changed key has it computed again, too, and is announced in any case; so is a
/// wholesale change of the key list that leaves its length, and one with a mapper is passed on. An item that nobody has
/// read is not computed and cannot be seen to change; one that was forgotten likewise. A list made with KeepsEverything
/// forgets nothing, and so announces every change of every item that anybody ever read, unless its key list forgets:
/// what that does not announce this one does not hear of. Whoever tracks reads of any other list comes to depend on its
/// whole map and its key list as well.
///
/// It hears of the map what the map announces under keys. A change without keys reaches plain observers of the map
/// alone, and not this list.
///
/// It holds keys and map for its whole life. It takes changes in before anybody is told of them, and announces them all
/// as one (see Round). Handlers may do whatever an observer may; so may the map while it is asked for an item that is
/// read, and the answer is then as it is by the time it is given. Should the map change the key list while items are
/// computed again, the list announces its change as a whole. The map may read this list, if no item hangs on itself,
/// nor on over 200 others in a row: beyond that one reads as none, with a line in the log.
///
/// What the map throws goes on to whoever read, or made the change. The item stays as it was; but one for whose key the
/// map has given nothing yet throws when it is read, until it can be had: that is announced when the map announces the
/// key. So does one whose key throws when it is read, until the key list announces that. One thread.
template <class K, class V, class Eq = iEqual<V>, class Hash = KeyHash<K>>
class LazyTransformedObservableListImpl : public detail::LazyTransformedListBase
{
public:
    static constexpr int DefaultCacheLimit = 150;
    static constexpr int KeepsEverything = std::numeric_limits<int>::max();

    LazyTransformedObservableListImpl(const ObservableList<K>& input, const ObservableMap<K, V>& mapping,
                                      int cacheLimit = DefaultCacheLimit)
        : LazyTransformedListBase(input.impl(), mapping.impl(), cacheLimit)
        , m_mapping(mapping)
    {
    }
    ~LazyTransformedObservableListImpl() override { dropEntries(); }

private:
    struct ItemInfo : Entry, detail::KeyHook
    {
        K key;
        V value;
    };

    Entry* createEntry(const QVariant& inputItem, bool withValue) override;
    void enterKey(Entry& entry) override { m_index.insert(static_cast<ItemInfo&>(entry), std::size_t(mostEntries())); }
    void destroyEntry(Entry* entry) override;
    bool deriveKey(Entry& entry, const QVariant& inputItem) override;
    bool derive(Entry& entry) override;
    QVariant valueOf(const Entry& entry) const override
    {
        return QVariant::fromValue(static_cast<const ItemInfo&>(entry).value);
    }
    bool findEntries(const ChangedKeys& changed, QVarLengthArray<Entry*, 8>& found) override;

    const ObservableMap<K, V> m_mapping;
    detail::KeyIndex<K, ItemInfo, Hash> m_index;
};

template <class K, class V, class Eq, class Hash>
void LazyTransformedObservableListImpl<K, V, Eq, Hash>::destroyEntry(Entry* entry)
{
    auto* const item = static_cast<ItemInfo*>(entry);
    m_index.remove(*item);
    delete item;
}

template <class K, class V, class Eq, class Hash>
auto LazyTransformedObservableListImpl<K, V, Eq, Hash>::createEntry(const QVariant& inputItem, bool withValue) -> Entry*
{
    auto item = std::make_unique<ItemInfo>();
    item->key = inputItem.value<K>();
    if (withValue)
        item->value = m_mapping.get(item->key);
    return item.release();
}

// Before the map is asked: what it announces meanwhile under this key has to find the item.
template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::deriveKey(Entry& entry, const QVariant& inputItem)
{
    auto& item = static_cast<ItemInfo&>(entry);
    K key = inputItem.value<K>();
    if (item.is_linked() && item.key == key)
        return false;
    m_index.remove(item);
    item.key = std::move(key);
    enterKey(item);
    return true;
}

template <class K, class V, class Eq, class Hash>
bool LazyTransformedObservableListImpl<K, V, Eq, Hash>::derive(Entry& entry)
{
    auto& item = static_cast<ItemInfo&>(entry);
    V value = m_mapping.get(item.key);
    const bool isOther = !Eq()(item.value, value);
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
