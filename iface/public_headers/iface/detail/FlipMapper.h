// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>

#include <vector>

namespace iface::detail {

/// What every FilterFunctionIndexMapper is.
class ZEL_EXPORT FlipMapper : public ObservableListImpl::IndexMapper
{
public:
    /// The positions before the change of what dropped out of a list of `oldCount`, and those after it of what came in;
    /// both ascending.
    FlipMapper(std::vector<int> dropped, std::vector<int> taken, int oldCount);

    bool newIndexPath(QVariantList* newPath, int* removed, const QVariantList& oldPath) const override;

private:
    int newPosition(int oldPosition) const;

    const std::vector<int> m_dropped;
    const std::vector<int> m_taken;
    const int m_oldCount;
};

} // namespace iface::detail
