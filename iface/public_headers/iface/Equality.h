// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

/// When two values of a map or a derived list count as the same: by the type's own equality. For records and strings
/// that is equal contents, for observable values the same implementation, whatever it holds.
template <class T>
struct iEqual
{
    bool operator()(const T& a, const T& b) const { return a == b; }
};

} // namespace iface
