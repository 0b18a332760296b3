// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QFile>
#include <QtCore/QString>
#include <QtTest/QTest>

#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// A sequenced-packet server that does nothing by itself: for the ways in which a service can misbehave. The path must
// be short enough for a socket address.
class RawServer
{
public:
    explicit RawServer(const QString& path, int backlog = 8)
        : m_path(QFile::encodeName(path))
        , m_listening(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
    {
        const sockaddr_un address = addressOf(path);
        ::bind(m_listening, reinterpret_cast<const sockaddr*>(&address), sizeof address);
        ::listen(m_listening, backlog);
    }
    ~RawServer()
    {
        stop();
        ::unlink(m_path.constData());
    }
    Q_DISABLE_COPY(RawServer)

    // Stops to listen and leaves the socket's file behind.
    void stop()
    {
        hangUp();
        ::close(std::exchange(m_listening, -1));
    }
    // Waits for the next client.
    bool accept(int milliseconds = 5000)
    {
        hangUp();
        if (isReadable(m_listening, milliseconds))
            m_client = ::accept4(m_listening, nullptr, nullptr, SOCK_CLOEXEC);
        return m_client != -1;
    }
    void hangUp() { ::close(std::exchange(m_client, -1)); }
    QByteArray receive(int milliseconds = 5000) const { return awaitFrom(m_client, 1024 * 1024, milliseconds); }
    bool send(const QByteArray& record) const { return sendTo(m_client, record); }
    // Sends records of this size, counting up, until the other side takes no more for a moment.
    void sendAll(int* next, int size) const
    {
        const timeval patience = {0, 200000};
        ::setsockopt(m_client, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
        for (const int most = *next + 1000; *next < most && send(numbered(*next, size));)
            ++*next;
    }
    static QByteArray numbered(int number, int size)
    {
        return (QByteArray::number(number) + ':').leftJustified(size, 'x');
    }
    int client() const { return m_client; }

    static bool sendTo(int descriptor, const QByteArray& record)
    {
        return ::send(descriptor, record.constData(), size_t(record.size()), MSG_NOSIGNAL) == record.size();
    }
    static bool isReadable(int descriptor, int milliseconds = 0)
    {
        pollfd state = {descriptor, POLLIN, 0};
        return ::poll(&state, 1, milliseconds) > 0;
    }
    // One record; empty at the end of the connection. The event loop runs, for the sake of what is at the other end.
    static QByteArray awaitFrom(int descriptor, int most = 1024 * 1024, int milliseconds = 5000)
    {
        if (!QTest::qWaitFor([=] { return isReadable(descriptor); }, milliseconds))
            return "nothing came";
        QByteArray record(most, Qt::Uninitialized);
        record.truncate(qMax<ssize_t>(::read(descriptor, record.data(), size_t(most)), 0));
        return record;
    }
    // A client's descriptor; -1 when nobody listens.
    static int connectTo(const QString& path)
    {
        const int descriptor = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0);
        const sockaddr_un address = addressOf(path);
        if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0)
            return descriptor;
        ::close(descriptor);
        return -1;
    }

private:
    static sockaddr_un addressOf(const QString& path)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        return address;
    }

    const QByteArray m_path;
    int m_listening;
    int m_client = -1;
};
