// SPDX-License-Identifier: Apache-2.0
#include <zel/detail/LiveListIndex.h>

namespace zel::detail {

namespace {

/// How many slots the tree's node at position (counted from 1) sums up.
int span(int position)
{
    return position & -position;
}

} // namespace

void LiveListIndex::clear()
{
    m_slotByKey.clear();
    m_earlierTwin.clear();
    m_counts.clear();
    m_items = 0;
}

void LiveListIndex::reserve(int items)
{
    m_slotByKey.reserve(items);
    m_counts.reserve(size_t(items));
}

int LiveListIndex::itemsBefore(int slot) const
{
    int items = 0;
    for (int position = slot; position > 0; position -= span(position)) {
        items += m_counts[size_t(position) - 1];
    }
    return items;
}

void LiveListIndex::append(const QString& key)
{
    const int slot = int(m_counts.size());
    const int position = slot + 1;
    int count = 1;
    for (int child = position - 1; child > position - span(position); child -= span(child)) {
        count += m_counts[size_t(child) - 1];
    }
    m_counts.push_back(count);
    ++m_items;
    link(key, slot);
}

int LiveListIndex::indexOf(const QString& key) const
{
    const auto entry = m_slotByKey.constFind(key);
    return entry == m_slotByKey.cend() ? -1 : itemsBefore(entry.value());
}

void LiveListIndex::remove(const QString& key)
{
    const int slot = unlink(key);
    if (slot < 0) {
        return;
    }
    for (int position = slot + 1; position <= int(m_counts.size()); position += span(position)) {
        --m_counts[size_t(position) - 1];
    }
    --m_items;
    if (int(m_counts.size()) > 2 * m_items + 64) {
        renumber();
    }
}

void LiveListIndex::rename(const QString& from, const QString& to)
{
    const int slot = unlink(from);
    if (slot >= 0) {
        link(to, slot);
    }
}

/// Takes the last twin of a key out of its chain; its slot, or -1.
int LiveListIndex::unlink(const QString& key)
{
    const auto entry = m_slotByKey.find(key);
    if (entry == m_slotByKey.end()) {
        return -1;
    }
    const int slot = entry.value();
    const auto twin = m_earlierTwin.constFind(slot);
    if (twin == m_earlierTwin.cend()) {
        m_slotByKey.erase(entry);
    } else {
        entry.value() = twin.value();
        m_earlierTwin.erase(twin);
    }
    return slot;
}

/// Puts a slot into the chain of its key's twins, which goes from the last one back to the first.
void LiveListIndex::link(const QString& key, int slot)
{
    const auto entry = m_slotByKey.find(key);
    if (entry == m_slotByKey.end()) {
        m_slotByKey.insert(key, slot);
        return;
    }
    if (entry.value() < slot) {
        m_earlierTwin.insert(slot, entry.value());
        entry.value() = slot;
        return;
    }
    int later = entry.value();
    while (m_earlierTwin.value(later, -1) > slot) {
        later = m_earlierTwin.value(later);
    }
    if (m_earlierTwin.contains(later)) {
        m_earlierTwin.insert(slot, m_earlierTwin.value(later));
    }
    m_earlierTwin.insert(later, slot);
}

/// Gives out the slots anew, without the empty ones.
void LiveListIndex::renumber()
{
    for (int& slot : m_slotByKey) {
        slot = itemsBefore(slot);
    }
    QHash<int, int> twins;
    for (auto twin = m_earlierTwin.cbegin(); twin != m_earlierTwin.cend(); ++twin) {
        twins.insert(itemsBefore(twin.key()), itemsBefore(twin.value()));
    }
    m_earlierTwin.swap(twins);
    m_counts.resize(size_t(m_items));
    for (int position = 1; position <= m_items; ++position) {
        m_counts[size_t(position) - 1] = span(position);
    }
}

} // namespace zel::detail
