// SPDX-License-Identifier: Apache-2.0
#include <pps/object.h>

#include <device/Object.h>

#include "ObjectSocket.h"
#include "Relay.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <system_error>
#include <thread>

#include <climits>
#include <csignal>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>
#include <sys/timerfd.h>

using device::Descriptor;
using device::Relay;

namespace {

constexpr std::chrono::seconds connectTimeout(1);

// The relay connects again after the program may have changed its folder.
std::string absolute(const std::string& path)
{
    char folder[PATH_MAX];
    if (path.empty() || path.front() == '/' || !::getcwd(folder, sizeof folder))
        return path;
    return std::string(folder) + '/' + path;
}

// The relays at work. A program may write its last words and end at once, and its threads with it: so the end waits, a
// moment at most, until what was written is on its way. A child that goes on without another program's code has the
// descriptors of its parent, and no threads: its objects are put out of use.
class Relays
{
public:
    // Never destroyed: relays are still running when the program ends.
    static Relays& instance()
    {
        static Relays* const relays = new Relays;
        return *relays;
    }

    // `descriptor` is the caller's end.
    void add(Relay* relay, int descriptor)
    {
        const Opened opened = {relay, descriptor, inodeOf(descriptor)};
        const std::lock_guard lock(m_mutex);
        m_opened.push_back(opened);
    }
    void remove(Relay* relay)
    {
        const std::lock_guard lock(m_mutex);
        m_opened.remove_if([relay](const Opened& opened) { return opened.relay == relay; });
    }

private:
    struct Opened
    {
        Relay* relay;
        int descriptor;
        ino_t inode; // the descriptor may have been closed, and its number given to another file
    };

    Relays()
    {
        std::atexit([] { instance().drain(); });
        ::pthread_atfork([] { instance().m_mutex.lock(); }, [] { instance().m_mutex.unlock(); },
                         [] { instance().leaveToParent(); });
    }

    static ino_t inodeOf(int descriptor)
    {
        struct stat status;
        return ::fstat(descriptor, &status) == 0 ? status.st_ino : 0;
    }

    // In the child. A timer that never runs is a descriptor from which nothing ever comes and to which nothing can be
    // written; what would be written to the parent's could wait for ever once the parent is gone.
    void leaveToParent()
    {
        const int quiet = ::timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC);
        for (const Opened& opened : m_opened) {
            opened.relay->closeInChild();
            if (inodeOf(opened.descriptor) == opened.inode)
                ::dup3(quiet, opened.descriptor, O_CLOEXEC);
        }
        ::close(quiet);
        m_opened.clear();
        m_mutex.unlock();
    }

    void drain()
    {
        const auto deadline = std::chrono::steady_clock::now() + longestDrain;
        while (!isDrained() && std::chrono::steady_clock::now() < deadline)
            std::this_thread::sleep_for(std::chrono::microseconds(100));
    }
    bool isDrained()
    {
        const std::lock_guard lock(m_mutex);
        return std::all_of(m_opened.begin(), m_opened.end(),
                           [](const Opened& opened) { return opened.relay->isDrained(); });
    }

    static constexpr std::chrono::milliseconds longestDrain{200};
    std::mutex m_mutex;
    std::list<Opened> m_opened;
};

// Starts a thread in which every signal is blocked: a program's handlers run in threads of its own. A new thread
// inherits the mask.
void startWithoutSignals(std::unique_ptr<Relay> relay, int callersEnd)
{
    Relay* const added = relay.get();
    Relays::instance().add(added, callersEnd);
    sigset_t all;
    sigset_t saved;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &saved);
    try {
        std::thread([relay = std::move(relay)] {
            pthread_setname_np(pthread_self(), "pps-object");
            relay->run();
            Relays::instance().remove(relay.get());
        }).detach();
    } catch (...) {
        Relays::instance().remove(added);
        pthread_sigmask(SIG_SETMASK, &saved, nullptr);
        throw;
    }
    pthread_sigmask(SIG_SETMASK, &saved, nullptr);
}

int openServed(const std::string& path, int flags)
{
    Descriptor server = device::connectToObject(path, connectTimeout);
    if (!server)
        return -1;
    ::fcntl(server.get(), F_SETFL, ::fcntl(server.get(), F_GETFL) | O_NONBLOCK);
    int ends[2];
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, ends) == -1)
        return -1;
    Descriptor callers(ends[0]);
    Descriptor ours(ends[1]);
    for (const int end : ends)
        device::allowLongRecords(end);
    if (flags & O_NONBLOCK)
        ::fcntl(callers.get(), F_SETFL, ::fcntl(callers.get(), F_GETFL) | O_NONBLOCK);
    startWithoutSignals(std::make_unique<Relay>(std::move(ours), std::move(server), absolute(path)), callers.get());
    return callers.release();
}

} // namespace

int pps_object_open(const char* path, int flags)
{
    if (!path) {
        errno = EINVAL;
        return -1;
    }
    try {
        const std::string resolved = device::resolveObjectPath(path);
        struct stat status;
        if (::stat(resolved.c_str(), &status) == -1)
            return -1;
        if (S_ISSOCK(status.st_mode))
            return openServed(resolved, flags);
        return ::open(resolved.c_str(), flags | O_CLOEXEC | O_NOCTTY);
    } catch (const std::bad_alloc&) {
        errno = ENOMEM;
    } catch (const std::system_error& error) {
        errno = error.code().value();
    }
    return -1;
}
