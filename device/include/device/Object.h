// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>

namespace device {

/// Opens a publish/subscribe object for reading and writing and gives its descriptor, or -1 with errno; it is used with
/// plain read(), write() and close().
int openObject(const char* path);

/// Where openObject() finds \a path: below PPS_ROOT when that is set and the path is "/pps" or below it. Programs of a
/// desktop that are set-user-id or the like do not look at the variable.
std::string resolveObjectPath(const std::string& path);

} // namespace device
