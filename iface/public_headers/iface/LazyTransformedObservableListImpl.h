// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/LazyTransformedListBase.h>
#include <iface/Equality.h>
#include <iface/ObservableList.h>
#include <iface/ObservableMap.h>

#include <QHashFunctions>

#include <limits>
#include <unordered_set>

namespace iface {

/// The hash of keys, as QHash takes it.
template <class K>
struct KeyHash
{
    std::size_t operator()(const K& key) const
    {
        using ::qHash;
        return qHash(key);
    }
};

/// A list of keys seen through a map: the item at an index is the map's value for the key at that index.
///
/// An item is computed when it is first read, and kept. Once `cacheLimit` items are kept, the next new one has all of
/// them forgotten first. A change of the map under the key of a kept item, or of its key, has the item computed again,
/// and it is announced if it is another by `Eq`; so is a wholesale change of the key list that leaves its length. An
/// item that nobody has read is not computed and cannot be seen to change; one that was forgotten likewise. A list made
/// with KeepsEverything forgets nothing, and so announces every change of every item that anybody ever read; whoever
/// tracks reads of any other list comes to depend on its whole map instead.
///
/// It hears of the map what the map announces under keys. A change without keys reaches plain observers of the map
/// alone, and not this list.
///
/// It holds keys and map for its whole life. Handlers may do whatever an observer may. What the map does while it is
/// asked is announced before the answer is returned. Should the key list change while items are computed again, the
/// list forgets them and announces a Reset. What the map throws goes on to whoever read, or made the change; the item
/// stays as it was. One thread.
template <class K, class V, class Eq = iEqual<V>, class Hash = KeyHash<K>>
class LazyTransformedObservableListImpl : public detail::LazyTransformedListBase
{
public:
    static constexpr int DefaultCacheLimit = 150;
    static constexpr int KeepsEverything = std::numeric_limits<int>::max();

    LazyTransformedObservableListImpl(const ObservableList<K>& input, const ObservableMap<K, V>& mapping,
                                      int cacheLimit = DefaultCacheLimit)
        : LazyTransformedListBase(input.impl(), mapping.impl(), cacheLimit)
        , m_input(input)
        , m_mapping(mapping)
    {
    }
    ~LazyTransformedObservableListImpl() override { dropEntries(); }

private:
    struct ItemInfo : Entry
    {
        K key;
        V value;
        using Entry::isIndexed;
    };

    // Lets items be found by their key, so that the index holds no second copy of it.
    struct IndexHash
    {
        using is_transparent = void;
        std::size_t operator()(const K& key) const { return Hash()(key); }
        std::size_t operator()(const ItemInfo* item) const { return Hash()(item->key); }
    };
    struct IndexEqual
    {
        using is_transparent = void;
        bool operator()(const ItemInfo* a, const ItemInfo* b) const { return a->key == b->key; }
        bool operator()(const K& key, const ItemInfo* item) const { return key == item->key; }
        bool operator()(const ItemInfo* item, const K& key) const { return item->key == key; }
    };

    Entry* createEntry() const override { return new ItemInfo; }
    void destroyEntry(Entry* entry) const override;
    bool derive(Entry& entry, const Watch& watch, const QVariant* inputItem) const override;
    QVariant valueOf(const Entry& entry) const override
    {
        return QVariant::fromValue(static_cast<const ItemInfo&>(entry).value);
    }
    bool findEntries(const MapChange& change, QVarLengthArray<Entry*, 8>& found) const override;
    void setKey(ItemInfo& item, const K& key) const;
    void removeFromIndex(ItemInfo* item) const;

    const ObservableList<K> m_input;
    const ObservableMap<K, V> m_mapping;
    // Keys may repeat. The load factor stays at the container's own, which is 1.
    mutable std::unordered_multiset<ItemInfo*, IndexHash, IndexEqual> m_keyIndex;
};

} // namespace iface

#include <iface/detail/LazyTransformedObservableListImpl-inl.h>
