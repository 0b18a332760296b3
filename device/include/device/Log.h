// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace device {

/// Every line of this library carries this opcode.
inline constexpr int logOpcode = 1058604;

/// Whether the system log takes lines of this severity, for callers to whom even preparing a line is a cost. Where the
/// device does not say, every line is handed over.
bool isLogged(int severity);

} // namespace device
