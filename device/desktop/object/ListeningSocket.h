// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Descriptor.h"

#include <string>

#include <sys/types.h>

namespace device {

// A sequenced-packet socket that listens at a path, and the file that stands for it there.
class ListeningSocket
{
public:
    ListeningSocket() = default;
    ~ListeningSocket() { close(); }
    ListeningSocket(const ListeningSocket&) = delete;
    ListeningSocket& operator=(const ListeningSocket&) = delete;

    // Makes missing folders (0700) and the socket (0600). The file appears only when clients can connect. False, with a
    // sentence, when something is there that is no socket or is served.
    bool open(const std::string& path, std::string* reason);
    // Removes the file, unless another server's has taken its place.
    void close();

    bool isOpen() const { return static_cast<bool>(m_socket); }
    int socket() const { return m_socket.get(); }
    const std::string& path() const { return m_path; }

private:
    bool prepare(const std::string& folder, const std::string& name, const std::string& file);

    Descriptor m_socket;
    std::string m_path;
    dev_t m_device = 0;
    ino_t m_inode = 0;
};

} // namespace device
