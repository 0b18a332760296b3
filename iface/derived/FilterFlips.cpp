// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/FilterFlips.h>

#include <algorithm>

namespace iface::detail {

int FilterFlips::newPosition(int oldPosition) const
{
    if (oldPosition < 0 || oldPosition >= oldCount)
        return -1;
    const auto drop = std::lower_bound(dropped.begin(), dropped.end(), oldPosition);
    if (drop != dropped.end() && *drop == oldPosition)
        return -1;
    // Among those that stayed, the item is the same how-manieth before and after. The j-th newcomer has
    // taken[j] - j of them before it.
    const int stayed = oldPosition - int(drop - dropped.begin());
    int first = 0;
    int last = int(taken.size());
    while (first < last) {
        const int middle = (first + last) / 2;
        if (taken[middle] - middle <= stayed)
            first = middle + 1;
        else
            last = middle;
    }
    return stayed + first;
}

} // namespace iface::detail
