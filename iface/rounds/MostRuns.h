// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

/// How often what keeps changing what it reads itself is done again before it is left as it is.
constexpr int MostRuns = 16;

} // namespace iface
