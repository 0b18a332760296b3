// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/profilebox/ProfileBoxImage.h>
#include <splib/profilebox/ProfileBoxItem.h>

#include <QList>
#include <QSet>
#include <QString>

#include <algorithm>
#include <optional>
#include <utility>

namespace zelsplib {

inline QString profileBoxKey(const ProfileBoxItem& item)
{
    return item.getItemId();
}
inline QString profileBoxKey(const ProfileBoxImage& image)
{
    return image.getImageId();
}

/// A copy of one of the box's lists, in list order: what the application has been told of. It is what a removal, or a
/// list that came whole again, is compared with. Boxes are small, so looking up walks.
template <typename Record>
class ProfileBoxMirror
{
public:
    struct Changes
    {
        QList<Record> removed;
        QList<Record> added;
    };

    const QList<Record>& records() const { return m_records; }

    /// Null when there is none; good until the next change.
    const Record* find(const QString& key) const
    {
        const auto found = std::find_if(m_records.cbegin(), m_records.cend(),
                                        [&key](const Record& record) { return profileBoxKey(record) == key; });
        return found == m_records.cend() ? nullptr : &*found;
    }

    void insert(int index, const Record& record) { m_records.insert(qBound(0, index, size()), record); }

    void replace(int index, const Record& record)
    {
        if (index >= 0 && index < size())
            m_records[index] = record;
    }

    std::optional<Record> take(int index)
    {
        if (index < 0 || index >= size())
            return std::nullopt;
        return m_records.takeAt(index);
    }

    /// Takes a whole list over and answers what differs by key. Of the first whole list that is nothing: it is what the
    /// box held all along.
    Changes replaceAll(const QList<Record>& records)
    {
        const QList<Record> before = std::exchange(m_records, records);
        if (!m_complete)
            return {};
        return {without(before, records), without(records, before)};
    }

    /// Whether the first whole list has come.
    bool isComplete() const { return m_complete; }
    void setComplete(bool complete) { m_complete = complete; }

private:
    int size() const { return static_cast<int>(m_records.size()); }

    static QList<Record> without(const QList<Record>& records, const QList<Record>& others)
    {
        QSet<QString> keys;
        for (const Record& other : others)
            keys.insert(profileBoxKey(other));
        QList<Record> rest;
        for (const Record& record : records) {
            if (!keys.contains(profileBoxKey(record)))
                rest.append(record);
        }
        return rest;
    }

    QList<Record> m_records;
    bool m_complete = false;
};

} // namespace zelsplib
