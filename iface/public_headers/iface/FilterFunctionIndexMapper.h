// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/detail/FlipMapper.h>

namespace iface {

/// The mapper that a filtered list of `T` announces when its filter judges items of an unchanged input anew: items
/// dropped out and came in, and those that stayed kept their order.
///
/// It holds only what was dropped and what came in, so a single item that turns costs the same in a list of any
/// length. It may outlive its list.
template <class T>
using FilterFunctionIndexMapper = detail::FlipMapper;

} // namespace iface
