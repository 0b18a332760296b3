// SPDX-License-Identifier: Apache-2.0
#include <device/Object.h>

#include <pps/object.h>

#include <fcntl.h>

int device::openObject(const char* path)
{
    return pps_object_open(path, O_RDWR);
}
