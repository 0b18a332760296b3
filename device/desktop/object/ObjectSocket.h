// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Descriptor.h"

#include <chrono>
#include <string>

#include <sys/socket.h>
#include <sys/un.h>

namespace device {

// A socket address for a path of any length. A path that is too long for one goes by way of a descriptor, which lives
// as long as this.
class SocketAddress
{
public:
    // For connecting to the socket at `path`, and for making one, with a short name, in its folder.
    static SocketAddress ofExisting(const std::string& path);
    static SocketAddress inFolder(const std::string& folder, const std::string& name);

    // False with errno set when there is no such file or folder.
    bool isValid() const { return m_address.sun_path[0] != '\0'; }
    const sockaddr* address() const { return reinterpret_cast<const sockaddr*>(&m_address); }
    socklen_t size() const { return sizeof m_address; }

private:
    bool set(const std::string& path);
    void setThroughDescriptor(const std::string& path, int flags, const std::string& rest);

    sockaddr_un m_address{};
    Descriptor m_through;
};

// A sequenced-packet socket connected to whoever serves `path`; with a timeout of 0 without waiting. Sends on it wait
// no longer than the timeout, and with 0 it does not block at all. An empty descriptor, with errno set, on failure.
Descriptor connectToObject(const std::string& path, std::chrono::milliseconds timeout);

// Lets records be as long as the kernel carries without privileges.
void allowLongRecords(int socket);
// No record is longer than this.
size_t longestRecord();
// The longest that can ever be sent through this socket.
size_t longestRecord(int socket);

// Whether reading may go on after it failed with this error. When the other side closes with words of ours unread, that
// is told once, as an error, before what it had said itself can be read.
bool mayReadOn(int error);
// Whether nothing will ever come from the other side again. A read of 0 bytes alone does not say: an empty record
// reads as that, too.
bool isHungUp(int socket);

} // namespace device
