// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <vector>

namespace iface::detail {

/// Which items of a filtered list turned at one time.
struct ZEL_EXPORT FilterFlips
{
    bool isEmpty() const { return dropped.empty() && taken.empty(); }
    /// Where the item at a position before the change stands after it; -1 if it was dropped or never was.
    int newPosition(int oldPosition) const;

    std::vector<int> dropped; ///< positions before the change, ascending
    std::vector<int> taken;   ///< positions after it, ascending
    int oldCount = 0;
};

} // namespace iface::detail
