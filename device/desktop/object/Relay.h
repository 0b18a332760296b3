// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "Descriptor.h"

#include <atomic>
#include <chrono>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include <poll.h>

namespace device {

// Carries records between the caller of an opened object and the object's server, and hides from the caller that the
// server comes and goes. The caller holds the other end of `caller`; closing it ends the relay, as soon as the server
// has taken what was written before, or has had a second to.
//
// A record goes straight from one side to the other. Only when a side does not take it at once it is kept: records for
// the server in a queue with a limit, past which they are lost; of records for the caller one, and nothing more is
// read from the server until that has gone. A server that goes meanwhile is read to its end all the same, before
// anything of the one that is connected to in its place.
//
// Belongs to the one thread that calls run().
class Relay
{
public:
    Relay(Descriptor caller, Descriptor server, std::string path);
    void run();

    // Whether all that the caller wrote has been passed on. May be asked from any thread while run() runs.
    bool isDrained() const;

    // In a child of the process, which has copies of the descriptors and nobody who runs. Calls nothing but what may be
    // called there.
    void closeInChild() const;

private:
    using Clock = std::chrono::steady_clock;
    using Record = std::vector<char>;
    enum class Sent { Yes, NotNow, Never };

    static Sent send(int socket, const char* data, size_t size);
    int timeout() const;
    bool isHolding() const { return m_heldSize > 0; }
    void preparePoll(pollfd (&ends)[3]) const;
    void heedServer(short events);
    bool takeFromCaller();
    bool takeFrom(const Descriptor& server);
    void passHeld();
    void flushQueue();
    void enqueue(const char* data, size_t size);
    void clearQueue();
    void dropServer();
    void reconnect();
    void finish();

    Descriptor m_caller;
    Descriptor m_server;
    Descriptor m_former; // a server that went, with words of its own unread
    const std::string m_path;
    Clock::time_point m_lastAttempt = Clock::now();
    std::deque<Record> m_queue;
    size_t m_queuedBytes = 0;
    std::atomic<bool> m_isPassing{false};
    // What the caller said, and what a server said; of the latter, while the caller does not take it, how much.
    const size_t m_bufferSize;
    const std::unique_ptr<char[]> m_buffer;
    const std::unique_ptr<char[]> m_held;
    size_t m_heldSize = 0;
};

} // namespace device
