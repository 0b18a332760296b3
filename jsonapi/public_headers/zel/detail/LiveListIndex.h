// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <vector>

namespace zel::detail {

/// Where the items of a live list stand, by key, while items are appended at the end and removed anywhere.
///
/// Keys map to slots, which are given out in the order of the items and never move; a tree of counts over the slots
/// tells how many items stand before one. So nothing is entered again when an index shifts: looking up, appending
/// and removing cost O(log n), and renumbering the slots, once as many are empty as are in use, spreads to O(log n)
/// a removal.
///
/// Several items may have one key; the last of these twins answers for it, and when it goes, the one before it.
class ZEL_EXPORT LiveListIndex
{
public:
    void clear();
    void reserve(int items);

    /// One more item at the end.
    void append(const QString& key);
    /// The index of the item with that key, or -1.
    int indexOf(const QString& key) const;
    /// Takes out the item that answers for the key, which must be there.
    void remove(const QString& key);
    /// The item that answers for @p from, which must be there, has another key from now on and stays where it is.
    void rename(const QString& from, const QString& to);

private:
    int itemsBefore(int slot) const;
    int unlink(const QString& key);
    void link(const QString& key, int slot);
    void renumber();

    QHash<QString, int> m_slotByKey; // of the last twin
    QHash<int, int> m_earlierTwin;   // slot by slot
    std::vector<int> m_counts;       // a Fenwick tree, the node of slot s at s
    int m_items = 0;
};

} // namespace zel::detail
