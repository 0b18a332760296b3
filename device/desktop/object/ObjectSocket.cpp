// SPDX-License-Identifier: Apache-2.0
#include "ObjectSocket.h"

#include <cstring>

#include <fcntl.h>
#include <poll.h>
#include <sys/time.h>

namespace device {

namespace {

// The kernel doubles what is asked for, and cuts it to twice net.core.wmem_max, 208 KiB unless an administrator
// changed it.
constexpr int askedBuffer = 208 * 1024;

} // namespace

bool SocketAddress::set(const std::string& path)
{
    m_address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof m_address.sun_path)
        return false;
    std::memcpy(m_address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

void SocketAddress::setThroughDescriptor(const std::string& path, int flags, const std::string& rest)
{
    m_through.reset(::open(path.c_str(), flags | O_PATH | O_CLOEXEC));
    if (m_through)
        set("/proc/self/fd/" + std::to_string(m_through.get()) + rest);
}

SocketAddress SocketAddress::ofExisting(const std::string& path)
{
    SocketAddress result;
    if (!result.set(path))
        result.setThroughDescriptor(path, 0, std::string());
    return result;
}

SocketAddress SocketAddress::inFolder(const std::string& folder, const std::string& name)
{
    SocketAddress result;
    if (!result.set(folder + '/' + name))
        result.setThroughDescriptor(folder, O_DIRECTORY, '/' + name);
    return result;
}

Descriptor connectToObject(const std::string& path, std::chrono::milliseconds timeout)
{
    const SocketAddress address = SocketAddress::ofExisting(path);
    if (!address.isValid())
        return {};
    const bool waits = timeout.count() > 0;
    Descriptor socket(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | (waits ? 0 : SOCK_NONBLOCK), 0));
    if (!socket)
        return {};
    if (waits) {
        const timeval time = {static_cast<time_t>(timeout.count() / 1000),
                              static_cast<suseconds_t>(timeout.count() % 1000 * 1000)};
        ::setsockopt(socket.get(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    }
    int result;
    do {
        result = ::connect(socket.get(), address.address(), address.size());
    } while (result == -1 && errno == EINTR);
    if (result == -1) {
        if (errno == EAGAIN)
            errno = ETIMEDOUT;
        return {};
    }
    allowLongRecords(socket.get());
    return socket;
}

void allowLongRecords(int socket)
{
    ::setsockopt(socket, SOL_SOCKET, SO_SNDBUF, &askedBuffer, sizeof askedBuffer);
}

size_t longestRecord()
{
    return static_cast<size_t>(askedBuffer) * 2;
}

size_t longestRecord(int socket)
{
    // What the kernel keeps of a socket's buffer for itself.
    constexpr int reserved = 32;
    int buffer = 0;
    socklen_t size = sizeof buffer;
    const bool isKnown = ::getsockopt(socket, SOL_SOCKET, SO_SNDBUF, &buffer, &size) == 0 && buffer > reserved;
    return isKnown ? static_cast<size_t>(buffer - reserved) : longestRecord();
}

bool mayReadOn(int error)
{
    return error == EAGAIN || error == EINTR || error == ECONNRESET;
}

bool isHungUp(int socket)
{
    pollfd state = {socket, POLLRDHUP, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLRDHUP | POLLHUP | POLLERR | POLLNVAL));
}

} // namespace device
