// SPDX-License-Identifier: Apache-2.0
#include <device/Object.h>

#include <fcntl.h>

int device::openObject(const char* path)
{
    return ::open(path, O_RDWR);
}
