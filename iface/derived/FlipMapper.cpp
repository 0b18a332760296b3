// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/FlipMapper.h>

#include <algorithm>
#include <utility>

namespace iface::detail {

FlipMapper::FlipMapper(std::vector<int> dropped, std::vector<int> taken, int oldCount)
    : m_dropped(std::move(dropped))
    , m_taken(std::move(taken))
    , m_oldCount(oldCount)
{
}

bool FlipMapper::newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const
{
    return answer(newPath, removed, newPosition(ObservableListImpl::indexOfPath(oldPath)));
}

int FlipMapper::newPosition(int oldPosition) const
{
    if (oldPosition < 0 || oldPosition >= m_oldCount)
        return -1;
    const auto drop = std::lower_bound(m_dropped.begin(), m_dropped.end(), oldPosition);
    if (drop != m_dropped.end() && *drop == oldPosition)
        return -1;
    // Among those that stayed, the item is the same how-manieth before and after. The j-th newcomer has
    // m_taken[j] - j of them before it.
    const int stayed = oldPosition - int(drop - m_dropped.begin());
    const auto isBefore = [this, stayed](const int& taken) { return taken - (&taken - m_taken.data()) <= stayed; };
    return stayed + int(std::partition_point(m_taken.begin(), m_taken.end(), isBefore) - m_taken.begin());
}

} // namespace iface::detail
