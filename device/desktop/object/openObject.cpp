// SPDX-License-Identifier: Apache-2.0
#include <device/Object.h>

#include <pps/object.h>

#include <cstdlib>

#include <fcntl.h>

int device::openObject(const char* path)
{
    return pps_object_open(path, O_RDWR);
}

std::string device::resolveObjectPath(const std::string& path)
{
    const char* const root = ::secure_getenv("PPS_ROOT");
    const bool isBelowPps = path.compare(0, 4, "/pps") == 0 && (path.size() == 4 || path[4] == '/');
    return isBelowPps && root && *root ? root + path.substr(4) : path;
}
