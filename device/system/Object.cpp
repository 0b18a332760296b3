// SPDX-License-Identifier: Apache-2.0
#include <device/Object.h>

#include <QtCore/QByteArray>

#include <fcntl.h>

int device::openObject(const char* path)
{
    return ::open(path, O_RDWR);
}

// Platforms have no such variable, unless they are made to be moved, as that of the tests is.
std::string device::resolveObjectPath(const std::string& path)
{
    const QByteArray root = qgetenv("PPS_ROOT");
    return root.isEmpty() || path.rfind("/pps", 0) != 0 ? path : root.toStdString() + path.substr(4);
}
