// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QFile>
#include <QtTest/QTest>

#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// One end of a connection of sequenced packets, or of whatever else has a descriptor.
class RawEnd
{
public:
    explicit RawEnd(int opened = -1)
        : descriptor(opened)
    {
    }
    explicit RawEnd(const QString& path)
        : RawEnd(connectTo(path))
    {
    }
    ~RawEnd() { close(); }
    Q_DISABLE_COPY(RawEnd)

    void close() { ::close(std::exchange(descriptor, -1)); }
    bool send(const QByteArray& record) const
    {
        return ::send(descriptor, record.constData(), size_t(record.size()), MSG_NOSIGNAL) == record.size();
    }
    bool isReadable(int milliseconds = 0) const
    {
        pollfd state = {descriptor, POLLIN, 0};
        return ::poll(&state, 1, milliseconds) > 0;
    }
    // One record; empty at the end of the connection. The event loop runs, for the sake of what is at the other end.
    QByteArray receive(int milliseconds = 5000, int most = 1024 * 1024) const
    {
        if (!QTest::qWaitFor([this] { return isReadable(); }, milliseconds))
            return "nothing came";
        QByteArray record(most, Qt::Uninitialized);
        record.truncate(qMax<ssize_t>(::read(descriptor, record.data(), size_t(most)), 0));
        return record;
    }

    // A client's descriptor; -1 when nobody listens.
    static int connectTo(const QString& path) { return socketAt(path, &::connect); }

    int descriptor;

protected:
    // The path must be short enough.
    static int socketAt(const QString& path, int (*bindOrConnect)(int, const sockaddr*, socklen_t))
    {
        const int made = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        sockaddr_un address = {AF_UNIX, {}};
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        if (bindOrConnect(made, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return made;
        ::close(made);
        return -1;
    }
};

// A server that does nothing by itself, for the ways in which a service can misbehave: its end of the connection to the
// client that it accepted last.
class RawServer : public RawEnd
{
public:
    explicit RawServer(const QString& path, int backlog = 8)
        : m_path(QFile::encodeName(path))
        , m_listening(socketAt(path, &::bind))
    {
        ::listen(m_listening.descriptor, backlog);
    }
    ~RawServer() { ::unlink(m_path.constData()); }

    // Stops to listen and leaves the socket's file behind.
    void stop()
    {
        close();
        m_listening.close();
    }
    // Waits for the next client.
    bool accept(int milliseconds = 5000)
    {
        close();
        if (m_listening.isReadable(milliseconds))
            descriptor = ::accept4(m_listening.descriptor, nullptr, nullptr, SOCK_CLOEXEC);
        return descriptor != -1;
    }
    // Sends records of this size, counting up, until the other side takes no more for a moment.
    void sendAll(int* next, int size) const
    {
        const timeval patience = {0, 200000};
        ::setsockopt(descriptor, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        for (const int most = *next + 1000; *next < most && send(numbered(*next, size));)
            ++*next;
    }
    static QByteArray numbered(int number, int size)
    {
        return (QByteArray::number(number) + ':').leftJustified(size, 'x', true);
    }

private:
    const QByteArray m_path;
    RawEnd m_listening;
};
