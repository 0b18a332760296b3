// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

#pragma GCC visibility push(default)
namespace vx {
namespace system {

class ObjectServerPrivate;

// The serving side of a publish/subscribe object: a socket that any number of clients connect to, each with its own
// stream of records in both directions. It carries bytes and knows nothing of what is in them.
//
// Ownership: whoever makes it; destroying it closes it, without signals.
// Thread: the one it lives in, which needs an event loop.
// Handlers: a handler of any signal may call anything here, spin an event loop, or delete the server.
class ObjectServer : public QObject
{
    Q_OBJECT

public:
    explicit ObjectServer(QObject* parent = nullptr);
    ~ObjectServer() override;

    // Starts to serve the object at `path`; a path below "/pps" moves with PPS_ROOT as it does for those who open it.
    // Missing folders are made for the user alone (0700), and so is the socket (0600), which is never seen before
    // clients can connect. A socket that nobody serves any more is replaced; one that is served, or anything that is
    // no socket, is left alone. On failure answers false with a sentence in `error` (may be null).
    bool listen(const QString& path, QString* error);
    bool isListening() const;
    // Where the socket really is; empty when not listening.
    QString path() const;
    // Disconnects all clients and removes the socket. The server may listen again.
    void close();

    // Clients are known by numbers, which count up from 1 and are never used twice.
    QList<int> clients() const;
    // The number of the process that connected; 0 when it is not known.
    qint64 processOf(int client) const;

    // Sends one record and never waits: what the client does not take at once is queued. False when there is no such
    // client, when the record is empty or longer than the kernel carries (about 400 KiB), and when the client's queue
    // is full or there is no memory for it; the record is lost then, and all before it keep their order.
    bool send(int client, const QByteArray& record);
    // How many bytes may be queued for one client; 16 MiB unless set.
    void setQueueLimit(qint64 bytes);
    qint64 queueLimit() const;

    // Whether records of clients are taken; true unless told otherwise. What they send meanwhile waits in their
    // sockets, and when those are full, so do they.
    void setReading(bool reading);
    bool isReading() const;

Q_SIGNALS:
    void clientConnected(int client);
    // Comes once for every client that connected, after it is gone from clients(), whoever ended it.
    void clientDisconnected(int client);
    void recordReceived(int client, const QByteArray& record);

private:
    friend class ObjectServerPrivate;
    // Closes the connection. What is still waiting to be sent is lost.
    void disconnectClient(int client);

    std::unique_ptr<ObjectServerPrivate> const d;
};

} // namespace system
} // namespace vx
#pragma GCC visibility pop
