// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ItemMovedMapper.h>

#include <algorithm>

namespace iface {

/// The one move that a mapper stands for, within a list of `count` items; null if it is none.
inline const ItemMovedMapper* moveWithin(int count, const ObservableListImpl::IndexMapper& mapper)
{
    const auto* const move = dynamic_cast<const ItemMovedMapper*>(&mapper);
    const bool isWithin = move && std::min(move->from(), move->to()) >= 0 && std::max(move->from(), move->to()) < count;
    return isWithin ? move : nullptr;
}

/// Asks a mapper about plain indexes, without making a path for every question.
class IndexTranslation
{
public:
    explicit IndexTranslation(const ObservableListImpl::IndexMapper& mapper)
        : m_mapper(mapper)
    {
    }

    /// The new index of an item; -1 if it is gone, or if the answer is not below `newCount`.
    int operator()(int oldIndex, int newCount)
    {
        m_path[0] = oldIndex;
        if (!m_mapper.newIndexPath(&m_newPath, nullptr, m_path))
            return -1;
        const int index = ObservableListImpl::indexOfPath(m_newPath);
        return index < newCount ? index : -1;
    }

private:
    const ObservableListImpl::IndexMapper& m_mapper;
    QVariantList m_path = ObservableListImpl::pathOf(0);
    QVariantList m_newPath;
};

} // namespace iface
