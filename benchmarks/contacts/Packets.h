// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <sys/socket.h>
#include <sys/un.h>

/// A sequenced-packet socket without anything around it. Ends the program when nobody listens.
inline int connectDirectly(const QByteArray& path)
{
    const int descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.constData(), qMin(size_t(path.size()), sizeof address.sun_path - 1));
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
        std::perror("bench_contacts: connect");
        std::exit(1);
    }
    return descriptor;
}
