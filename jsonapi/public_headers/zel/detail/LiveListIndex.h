// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/detail/IndexedSequence.h>

#include <QtCore/QHash>
#include <QtCore/QString>

#include <deque>

namespace zel::detail {

/// Where the items of a live list stand, by key, while items are appended at the end and removed anywhere: nothing is
/// entered again when an index shifts.
///
/// Several items may have one key; the last of these twins answers for it, and when it goes, the one before it.
class ZEL_EXPORT LiveListIndex
{
public:
    void clear();
    void reserve(int items) { m_last.reserve(items); }

    /// One more item at the end.
    void append(const QString& key);
    /// The index of the item with that key, or -1.
    int indexOf(const QString& key) const;
    /// Takes out the item that answers for the key, if there is one.
    void remove(const QString& key);
    /// The item that answers for @p from, if there is one, has another key from now on and stays where it is.
    void rename(const QString& from, const QString& to);

private:
    struct Place : iface::detail::IndexedSequence::Item
    {
        Place* earlierTwin = nullptr; ///< or, of an empty one, the next that is empty
    };

    Place* make();
    Place* unlink(const QString& key);
    void link(const QString& key, Place* place);

    std::deque<Place> m_places; ///< where each stays as long as it is used
    Place* m_empty = nullptr;
    QHash<QString, Place*> m_last; ///< of the twins
    iface::detail::IndexedSequence m_sequence;
};

} // namespace zel::detail
