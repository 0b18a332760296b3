// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QString>

#include <deque>
#include <utility>

namespace zeldesk {

/// Records in the order in which they came, numbered from 0, and how many of the latest there is room for. One always
/// fits, however long it is.
class WireLog
{
public:
    struct Entry
    {
        zelcore::WireRecord record;
        QString type;
    };

    WireLog(qsizetype mostRecords, qsizetype mostBytes)
        : m_mostRecords(mostRecords)
        , m_mostBytes(mostBytes)
    {
    }

    /// The number of the first one that is there, and of the one that comes next.
    quint64 begin() const { return m_begin; }
    quint64 end() const { return m_begin + m_entries.size(); }
    const Entry& at(quint64 number) const { return m_entries[number - m_begin]; }

    void append(Entry entry)
    {
        m_bytes += entry.record.bytes.size();
        m_entries.push_back(std::move(entry));
    }
    /// The number of the first one for which there is room, together with all that came after it.
    quint64 keptFrom() const
    {
        quint64 number = m_begin;
        qsizetype bytes = m_bytes;
        while (qsizetype(end() - number) > m_mostRecords || (bytes > m_mostBytes && number + 1 < end()))
            bytes -= at(number++).record.bytes.size();
        return number;
    }
    /// What is numbered below.
    void dropBefore(quint64 number)
    {
        for (; m_begin < number; ++m_begin) {
            m_bytes -= m_entries.front().record.bytes.size();
            m_entries.pop_front();
        }
    }

private:
    qsizetype m_mostRecords;
    qsizetype m_mostBytes;
    qsizetype m_bytes = 0;
    quint64 m_begin = 0;
    std::deque<Entry> m_entries;
};

} // namespace zeldesk
