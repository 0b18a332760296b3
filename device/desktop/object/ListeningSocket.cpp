// SPDX-License-Identifier: Apache-2.0
#include "ListeningSocket.h"

#include "ObjectSocket.h"

#include <atomic>
#include <cstdio>
#include <cstring>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

namespace device {

namespace {

// Makes every folder on the way that is missing; false with errno set.
bool makeFolders(const std::string& folder)
{
    for (size_t end = folder.find('/', 1);; end = folder.find('/', end + 1)) {
        const std::string part = folder.substr(0, end);
        if (::mkdir(part.c_str(), 0700) == -1 && errno != EEXIST)
            return false;
        if (end == std::string::npos)
            return true;
    }
}

// Removes a socket that nobody serves; false with a sentence when something else stands at the path.
bool makeRoom(const std::string& path, std::string* reason)
{
    struct stat status;
    if (::lstat(path.c_str(), &status) == -1)
        return true; // what is wrong with the path, if anything, hinders the socket's name just so
    if (!S_ISSOCK(status.st_mode)) {
        *reason = path + " is no socket and is left alone";
        return false;
    }
    if (connectToObject(path, std::chrono::milliseconds(0)) || errno != ECONNREFUSED) {
        *reason = path + " is served already";
        return false;
    }
    if (::unlink(path.c_str()) == -1 && errno != ENOENT) {
        *reason = path + ": " + std::strerror(errno);
        return false;
    }
    return true;
}

// Gives the socket its name unless something has appeared there meanwhile.
bool moveWithoutReplacing(const std::string& from, const std::string& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return true;
    // Not every file system can do it.
    return (errno == EINVAL || errno == ENOSYS) && std::rename(from.c_str(), to.c_str()) == 0;
}

std::string temporaryName()
{
    static std::atomic<unsigned> counter{0};
    return ".new-" + std::to_string(::getpid()) + '-' + std::to_string(++counter);
}

} // namespace

// Makes a socket that listens under a name of its own; `file` is the two together.
bool ListeningSocket::prepare(const std::string& folder, const std::string& name, const std::string& file)
{
    const SocketAddress address = SocketAddress::inFolder(folder, name);
    if (!address.isValid())
        return false;
    m_socket.reset(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    struct stat status;
    // The socket's own mode is what its file is made with, so that it is private from the first moment.
    if (!m_socket || ::fchmod(m_socket.get(), 0600) == -1 ||
        ::bind(m_socket.get(), address.address(), address.size()) == -1)
        return false;
    if (::chmod(file.c_str(), 0600) == -1 || ::listen(m_socket.get(), SOMAXCONN) == -1 ||
        ::lstat(file.c_str(), &status) == -1) {
        const int savedError = errno;
        ::unlink(file.c_str());
        errno = savedError;
        return false;
    }
    m_device = status.st_dev;
    m_inode = status.st_ino;
    return true;
}

bool ListeningSocket::open(const std::string& path, std::string* reason)
{
    if (isOpen()) {
        *reason = "already serving " + m_path;
        return false;
    }
    const size_t slash = path.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
    if (!makeFolders(folder)) {
        *reason = folder + ": " + std::strerror(errno);
        return false;
    }
    // Two servers that start at once must not each take the other's new socket for the stale one.
    const Descriptor lock(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    ::flock(lock.get(), LOCK_EX);
    if (!makeRoom(path, reason))
        return false;
    // Whatever may run out of memory comes before there is anything to be left behind.
    m_path = path;
    const std::string ownName = temporaryName();
    const std::string temporary = folder + '/' + ownName;
    if (prepare(folder, ownName, temporary)) {
        if (moveWithoutReplacing(temporary, path))
            return true;
        const int savedError = errno;
        ::unlink(temporary.c_str());
        errno = savedError;
    }
    m_socket.reset();
    m_path.clear();
    *reason = errno == EEXIST ? path + " is served already" : path + ": " + std::strerror(errno);
    return false;
}

void ListeningSocket::close()
{
    if (!isOpen())
        return;
    struct stat status;
    if (::lstat(m_path.c_str(), &status) == 0 && status.st_dev == m_device && status.st_ino == m_inode)
        ::unlink(m_path.c_str());
    m_socket.reset();
    m_path.clear();
}

} // namespace device
