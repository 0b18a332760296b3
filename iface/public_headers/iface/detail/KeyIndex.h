// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHashFunctions>

#include <boost/intrusive/unordered_set.hpp>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <vector>

namespace iface {

/// The hash of keys, as QHash takes it. With a seed, since without one that of a text takes three times as long.
template <class K>
struct KeyHash
{
    std::size_t operator()(const K& key) const
    {
        using ::qHash;
        if constexpr (requires { qHash(key, std::size_t()); })
            return qHash(key, QHashSeed::globalSeed());
        else
            return qHash(key);
    }
};

namespace detail {

/// What the items of a KeyIndex derive from.
using KeyHook = boost::intrusive::unordered_set_base_hook<boost::intrusive::store_hash<true>>;

/// Finds items by the key that they hold under the name `key`; keys may repeat. It strings the items themselves
/// together, since there may be very many, and owns none: an item is taken out before it ends or gets another key.
template <class K, class Item, class Hash = KeyHash<K>>
class KeyIndex
{
public:
    /// `expected`: how many there may well be in the end. Growing step by step goes through all of them each time.
    void insert(Item& item, std::size_t expected = 0)
    {
        if (m_items.size() >= m_buckets.size()) {
            const auto count = std::max(m_buckets.size() + 1, expected);
            std::vector<Bucket> more(Items::suggested_upper_bucket_count(count));
            m_items.rehash(Traits(more.data(), more.size()));
            m_buckets.swap(more);
        }
        m_items.insert(item);
    }
    /// Does nothing for an item that is not in.
    void remove(Item& item)
    {
        if (item.is_linked())
            m_items.erase(m_items.iterator_to(item));
    }
    /// One with that key, or null.
    Item* find(const K& key) const
    {
        const auto found = m_items.find(key);
        return found == m_items.end() ? nullptr : const_cast<Item*>(&*found);
    }
    template <class Visitor>
    void forEach(const K& key, Visitor visit)
    {
        for (auto [it, end] = m_items.equal_range(key); it != end; ++it)
            visit(*it);
    }

private:
    struct KeyOf
    {
        using type = K;
        const K& operator()(const Item& item) const { return item.key; }
    };
    using Items = boost::intrusive::unordered_multiset<
        Item, boost::intrusive::base_hook<KeyHook>, boost::intrusive::key_of_value<KeyOf>, boost::intrusive::hash<Hash>,
        boost::intrusive::equal<std::equal_to<K>>, boost::intrusive::compare_hash<true>>;
    using Bucket = typename Items::bucket_type;
    using Traits = typename Items::bucket_traits;

    std::vector<Bucket> m_buckets{Items::suggested_upper_bucket_count(1)};
    Items m_items{Traits(m_buckets.data(), m_buckets.size())};
};

} // namespace detail

} // namespace iface
