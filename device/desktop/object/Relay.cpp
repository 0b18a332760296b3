// SPDX-License-Identifier: Apache-2.0
#include "Relay.h"

#include "ObjectSocket.h"

#include <algorithm>
#include <new>

#include <sys/ioctl.h>
#include <sys/socket.h>

namespace device {

namespace {

constexpr size_t queueLimit = size_t(1024) * 1024;
// What an entry of the queue costs beyond its bytes, so that the limit holds for tiny records, too.
constexpr size_t recordCost = 64;
// A server that comes back is to be found within a second, and one that hangs up on everybody must not be called on
// without pause.
constexpr std::chrono::milliseconds attemptInterval(200);
constexpr std::chrono::seconds longestFinish(1);

constexpr short gone = POLLHUP | POLLERR | POLLNVAL;

} // namespace

Relay::Relay(Descriptor caller, Descriptor server, std::string path)
    : m_caller(std::move(caller))
    , m_server(std::move(server))
    , m_path(std::move(path))
    , m_bufferSize(longestRecord())
    , m_buffer(new char[m_bufferSize])
    , m_held(new char[m_bufferSize])
{
}

void Relay::run()
{
    for (;;) {
        pollfd ends[3];
        preparePoll(ends);
        if (::poll(ends, 3, timeout()) < 0)
            continue;
        // What a server said before it went counts, so its side comes first.
        if (ends[2].revents && !takeFrom(m_former))
            m_former.reset();
        heedServer(ends[1].revents);
        if (isHolding() && ends[0].revents & POLLOUT)
            passHeld();
        if (ends[0].revents & (POLLIN | gone)) {
            m_isPassing = true;
            if (!takeFromCaller())
                return finish();
        }
        m_isPassing = !m_queue.empty();
        if (!m_server)
            reconnect();
    }
}

// Without a caller: what it wrote last is still for the server, if that takes it in time. What the server says
// meanwhile is for nobody, but is read: it may not go on before, and whose words are left lying when a connection
// closes is told of an error, over which it may forget to read its own.
void Relay::finish()
{
    if (!m_server)
        return;
    const auto deadline = Clock::now() + longestFinish;
    while (!m_queue.empty()) {
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now()).count();
        pollfd end = {m_server.get(), POLLIN | POLLOUT, 0};
        if (left <= 0 || (::poll(&end, 1, static_cast<int>(left)) > 0 && end.revents & gone))
            break;
        if (end.revents & POLLIN)
            ::recv(m_server.get(), m_buffer.get(), m_bufferSize, MSG_DONTWAIT);
        if (end.revents & POLLOUT)
            flushQueue();
    }
    ::shutdown(m_server.get(), SHUT_RD);
    while (::recv(m_server.get(), m_buffer.get(), m_bufferSize, MSG_DONTWAIT) > 0) {
    }
}

bool Relay::isDrained() const
{
    // In this order: a record that is no longer to be read here is on its way.
    int unread = 0;
    return ::ioctl(m_caller.get(), FIONREAD, &unread) == -1 || (unread == 0 && !m_isPassing);
}

void Relay::closeInChild() const
{
    for (const Descriptor* const descriptor : {&m_caller, &m_server, &m_former}) {
        if (*descriptor)
            ::close(descriptor->get());
    }
}

void Relay::preparePoll(pollfd (&ends)[3]) const
{
    ends[0] = {m_caller.get(), static_cast<short>(POLLIN | (isHolding() ? POLLOUT : 0)), 0};
    const bool mayRead = !isHolding() && !m_former;
    const short wanted = static_cast<short>((mayRead ? POLLIN : 0) | (m_queue.empty() ? 0 : POLLOUT));
    // A hang-up is reported even to who asks for nothing, again and again: with nothing wanted, and one server to be
    // read to its end already, do not look at all.
    ends[1] = {wanted || !m_former ? m_server.get() : -1, wanted, 0};
    ends[2] = {isHolding() ? -1 : m_former.get(), POLLIN, 0};
}

void Relay::heedServer(short events)
{
    if (events & POLLIN) {
        if (!takeFrom(m_server))
            dropServer();
    } else if (events & gone) {
        if (m_former)
            return clearQueue();
        if (isHolding())
            m_former = std::move(m_server);
        dropServer();
    } else if (events & POLLOUT) {
        flushQueue();
    }
}

int Relay::timeout() const
{
    if (m_server)
        return -1;
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(m_lastAttempt + attemptInterval - Clock::now());
    return static_cast<int>(std::max<std::chrono::milliseconds::rep>(left.count(), 0));
}

Relay::Sent Relay::send(int socket, const char* data, size_t size)
{
    for (;;) {
        if (::send(socket, data, size, MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
            return Sent::Yes;
        if (errno != EINTR)
            return errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM ? Sent::NotNow : Sent::Never;
    }
}

// False when the caller has closed its end.
bool Relay::takeFromCaller()
{
    const ssize_t size = ::recv(m_caller.get(), m_buffer.get(), m_bufferSize, MSG_DONTWAIT);
    if (size < 0)
        return mayReadOn(errno);
    if (size == 0)
        return !isHungUp(m_caller.get());
    if (!m_server)
        return true;
    const auto length = static_cast<size_t>(size);
    if (!m_queue.empty() || send(m_server.get(), m_buffer.get(), length) == Sent::NotNow)
        enqueue(m_buffer.get(), length);
    return true;
}

// False when the server will never say anything again.
bool Relay::takeFrom(const Descriptor& server)
{
    const ssize_t size = ::recv(server.get(), m_held.get(), m_bufferSize, MSG_DONTWAIT);
    if (size < 0)
        return mayReadOn(errno);
    if (size == 0)
        return !isHungUp(server.get());
    m_heldSize = static_cast<size_t>(size);
    passHeld();
    return true;
}

void Relay::passHeld()
{
    if (send(m_caller.get(), m_held.get(), m_heldSize) != Sent::NotNow)
        m_heldSize = 0;
}

void Relay::flushQueue()
{
    while (!m_queue.empty()) {
        const Record& record = m_queue.front();
        if (send(m_server.get(), record.data(), record.size()) == Sent::NotNow)
            return;
        m_queuedBytes -= record.size() + recordCost;
        m_queue.pop_front();
    }
}

void Relay::enqueue(const char* data, size_t size)
{
    if (m_queuedBytes + size + recordCost > queueLimit)
        return;
    try {
        m_queue.emplace_back(data, data + size);
        m_queuedBytes += size + recordCost;
    } catch (const std::bad_alloc&) {
        // No room is no room, whatever the limit says.
    }
}

void Relay::clearQueue()
{
    m_queue.clear();
    m_queuedBytes = 0;
}

// Records that wait were meant for the server that went: the one that comes back starts from nothing.
void Relay::dropServer()
{
    m_server.reset();
    clearQueue();
}

void Relay::reconnect()
{
    const Clock::time_point now = Clock::now();
    if (now < m_lastAttempt + attemptInterval)
        return;
    m_lastAttempt = now;
    // Without waiting: meanwhile nobody would take what the caller writes.
    try {
        m_server = connectToObject(m_path, std::chrono::milliseconds(0));
    } catch (const std::bad_alloc&) {
        // Another time, then.
    }
}

} // namespace device
