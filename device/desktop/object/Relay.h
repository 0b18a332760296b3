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
// read from the server until that has gone.
//
// Belongs to the one thread that calls run().
class Relay
{
public:
    Relay(Descriptor caller, Descriptor server, std::string path);
    void run();

    // Whether all that the caller wrote has been passed on. May be asked from any thread while run() runs.
    bool isDrained() const;

private:
    using Clock = std::chrono::steady_clock;
    using Record = std::vector<char>;
    enum class Sent { Yes, NotNow, Never };

    static Sent send(int socket, const char* data, size_t size);
    int timeout() const;
    void preparePoll(pollfd (&ends)[2]) const;
    bool takeFromCaller();
    void takeFromServer();
    void passHeld();
    void flushQueue();
    void enqueue(const char* data, size_t size);
    void clearQueue();
    void dropServer();
    void reconnect();
    void finish();

    Descriptor m_caller;
    Descriptor m_server;
    const std::string m_path;
    Clock::time_point m_lastAttempt = Clock::now();
    std::deque<Record> m_queue;
    size_t m_queuedBytes = 0;
    Record m_held;
    std::atomic<bool> m_isPassing{false};
    const size_t m_bufferSize;
    const std::unique_ptr<char[]> m_buffer;
};

} // namespace device
