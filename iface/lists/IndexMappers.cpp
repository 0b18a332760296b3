// SPDX-License-Identifier: Apache-2.0
#include <iface/ItemMovedMapper.h>
#include <iface/PrecomputedMapper.h>

#include <utility>

namespace iface {

bool ObservableListImpl::IndexMapper::answer(QVariantList* newPath, int* removed, int newIndex)
{
    if (newIndex < 0) {
        if (removed)
            *removed = -1;
        return false;
    }
    if (newPath)
        *newPath = ObservableListImpl::pathOf(newIndex);
    return true;
}

PrecomputedMapper::PrecomputedMapper(QList<int> newIndexes)
    : m_map(std::move(newIndexes))
{
}

bool PrecomputedMapper::newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const
{
    const int index = ObservableListImpl::indexOfPath(oldPath);
    return answer(newPath, removed, index >= 0 && index < m_map.size() ? m_map.at(index) : -1);
}

ItemMovedMapper::ItemMovedMapper(int from, int to)
    : m_from(from)
    , m_to(to)
{
}

bool ItemMovedMapper::newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const
{
    const int index = ObservableListImpl::indexOfPath(oldPath);
    if (index < 0)
        return answer(newPath, removed, -1);
    if (index == m_from)
        return answer(newPath, removed, m_to);
    const int closedUp = index > m_from ? index - 1 : index;
    return answer(newPath, removed, closedUp >= m_to ? closedUp + 1 : closedUp);
}

} // namespace iface
