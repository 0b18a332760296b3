// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/MapChange.h>

#include <typeinfo>

namespace iface {

/// Which keys of a map changed, while that is being announced: what a MapChange says, but the change of a single key is
/// put into one only for those who ask for it. Refers to the key or the change it is made of.
class ChangedKeys
{
public:
    explicit ChangedKeys(const MapChange& change)
        : m_change(&change)
    {
    }
    template <class K>
    static ChangedKeys single(const K& key);

    /// Whether the keys are known.
    bool isKnown() const { return m_key || m_change->hasContent(); }
    /// Calls `visit` with each key. False when none is known, or they are keys of another type.
    template <class K, class Visitor>
    bool visit(Visitor visitor) const;
    MapChange toMapChange() const { return m_key ? m_makeChange(m_key) : *m_change; }

private:
    ChangedKeys() = default;

    const MapChange* m_change = nullptr;
    const void* m_key = nullptr;
    const std::type_info* m_type = nullptr;
    MapChange (*m_makeChange)(const void* key) = nullptr;
};

template <class K>
ChangedKeys ChangedKeys::single(const K& key)
{
    ChangedKeys keys;
    keys.m_key = &key;
    keys.m_type = &typeid(K);
    keys.m_makeChange = [](const void* changed) { return MapChange::createSingle(*static_cast<const K*>(changed)); };
    return keys;
}

template <class K, class Visitor>
bool ChangedKeys::visit(Visitor visitor) const
{
    if (m_key) {
        if (*m_type != typeid(K))
            return false;
        visitor(*static_cast<const K*>(m_key));
        return true;
    }
    const QList<K> keys = m_change->keys<K>();
    for (const K& key : keys)
        visitor(key);
    return !keys.isEmpty();
}

} // namespace iface
