// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QList>
#include <QSet>
#include <QString>

#include <algorithm>
#include <optional>
#include <utility>

namespace zelsplib {

/// A copy of one of the box's lists, in list order: what the application has been told of. It is what a removal, or a
/// list that came whole again, is compared with. Boxes are small, so looking up walks.
template <typename Record, QString (Record::*key)() const>
class ProfileBoxMirror
{
public:
    struct Changes
    {
        QList<Record> removed;
        QList<Record> added;
    };

    const QList<Record>& records() const { return m_records; }

    /// The last one with this key; null when there is none. Good until the next change.
    const Record* find(const QString& wanted) const
    {
        const auto found = std::find_if(m_records.crbegin(), m_records.crend(),
                                        [&wanted](const Record& record) { return (record.*key)() == wanted; });
        return found == m_records.crend() ? nullptr : &*found;
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
            keys.insert((other.*key)());
        QList<Record> rest;
        for (const Record& record : records) {
            if (!keys.contains((record.*key)()))
                rest.append(record);
        }
        return rest;
    }

    QList<Record> m_records;
    bool m_complete = false;
};

} // namespace zelsplib
