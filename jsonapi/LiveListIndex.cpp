// SPDX-License-Identifier: Apache-2.0
#include <zel/detail/LiveListIndex.h>

#include <utility>

namespace zel::detail {

void LiveListIndex::clear()
{
    m_sequence.reset(0);
    m_last.clear();
    m_empty = nullptr;
    m_places.clear();
}

void LiveListIndex::append(const QString& key)
{
    Place* const place = make();
    m_sequence.insert(m_sequence.size(), place);
    link(key, place);
}

int LiveListIndex::indexOf(const QString& key) const
{
    const Place* const last = m_last.value(key);
    return last ? m_sequence.indexOf(*last) : -1;
}

void LiveListIndex::remove(const QString& key)
{
    if (Place* const place = unlink(key)) {
        m_sequence.remove(m_sequence.indexOf(*place));
        place->earlierTwin = std::exchange(m_empty, place);
    }
}

void LiveListIndex::rename(const QString& from, const QString& to)
{
    if (Place* const place = unlink(from))
        link(to, place);
}

LiveListIndex::Place* LiveListIndex::make()
{
    if (!m_empty)
        return &m_places.emplace_back();
    return std::exchange(m_empty, m_empty->earlierTwin);
}

LiveListIndex::Place* LiveListIndex::unlink(const QString& key)
{
    const auto last = m_last.find(key);
    if (last == m_last.end())
        return nullptr;
    Place* const place = last.value();
    if (place->earlierTwin) {
        last.value() = place->earlierTwin;
    } else {
        m_last.erase(last);
    }
    return place;
}

/// Puts a place into the chain of its key's twins, which goes from the last one back to the first.
void LiveListIndex::link(const QString& key, Place* place)
{
    const int index = m_sequence.indexOf(*place);
    Place** later = &m_last[key];
    while (*later && m_sequence.indexOf(**later) > index)
        later = &(*later)->earlierTwin;
    place->earlierTwin = std::exchange(*later, place);
}

} // namespace zel::detail
