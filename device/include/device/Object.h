// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace device {

/// Opens a publish/subscribe object for reading and writing and gives its descriptor, or -1 with errno; it is used with
/// plain read(), write() and close().
int openObject(const char* path);

} // namespace device
