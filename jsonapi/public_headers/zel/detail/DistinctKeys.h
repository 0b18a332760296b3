// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>

#include <bit>
#include <vector>

namespace zel::detail {

/// Tells of a list's keys, one by one, which are to be left out: those that are empty or stand before them already.
/// Faster than a set of strings, and without a copy of any: it holds hashes and the places of those it let pass.
///
/// @tparam KeyAt answers the key at a place
template <class KeyAt>
class DistinctKeys
{
public:
    DistinctKeys(qsizetype count, KeyAt keyAt)
        : m_keyAt(keyAt)
        , m_slots(std::bit_ceil(size_t(count) * 2 + 1))
    {
    }

    bool isLeftOut(int index)
    {
        const QString key = m_keyAt(index);
        if (key.isEmpty())
            return true;
        const size_t hash = qHash(key, m_seed);
        const auto known = quint32(hash >> 32 ^ hash);
        size_t at = hash;
        for (;; ++at) {
            Slot& slot = m_slots[at & (m_slots.size() - 1)];
            if (slot.index < 0) {
                slot = {known, index};
                return false;
            }
            if (slot.hash == known && m_keyAt(slot.index) == key)
                return true;
        }
    }

private:
    struct Slot
    {
        quint32 hash = 0;
        int index = -1;
    };

    const KeyAt m_keyAt;
    const size_t m_seed = QHashSeed::globalSeed();
    std::vector<Slot> m_slots; // never more than half full
};

} // namespace zel::detail
