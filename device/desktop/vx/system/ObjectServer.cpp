// SPDX-License-Identifier: Apache-2.0
#include <vx/system/ObjectServer.h>

#include <device/Object.h>

#include "../../object/ListeningSocket.h"
#include "../../object/ObjectSocket.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QFile>
#include <QtCore/QMutex>
#include <QtCore/QPointer>
#include <QtCore/QSocketNotifier>
#include <QtCore/QThread>
#include <QtCore/QTimer>

#include <cstring>
#include <deque>
#include <map>
#include <new>
#include <utility>

namespace vx {
namespace system {

namespace {

constexpr qint64 defaultQueueLimit = qint64(16) * 1024 * 1024;
// Records taken in one go, before other clients and the rest of the program have their turn.
constexpr int recordsPerTurn = 16;
constexpr int acceptPause = 100;

// The notifier may be the one whose signal is being handled, so it goes later; with the server, when there is no memory
// to have it go sooner.
struct LaterDeleter
{
    void operator()(QSocketNotifier* notifier) const
    {
        notifier->setEnabled(false);
        try {
            notifier->deleteLater();
        } catch (const std::bad_alloc&) {
        }
    }
};
using NotifierPointer = std::unique_ptr<QSocketNotifier, LaterDeleter>;

struct Client
{
    device::Descriptor socket;
    std::deque<QByteArray> queue;
    qint64 queuedBytes = 0;
    // Declared last: they watch the socket and must stop before it is closed.
    NotifierPointer reader;
    NotifierPointer writer;
};

enum class Sent { Yes, NotNow, Never };

Sent sendRecord(int socket, const QByteArray& record)
{
    for (;;) {
        if (::send(socket, record.constData(), static_cast<size_t>(record.size()), MSG_NOSIGNAL | MSG_DONTWAIT) >= 0)
            return Sent::Yes;
        if (errno != EINTR)
            return errno == EAGAIN || errno == ENOBUFS || errno == ENOMEM ? Sent::NotNow : Sent::Never;
    }
}

} // namespace

class ObjectServerPrivate
{
public:
    explicit ObjectServerPrivate(ObjectServer* server)
        : q(server)
        , buffer(new char[device::longestRecord()])
    {
    }

    void startAccepting();
    void accept();
    void adopt(device::Descriptor socket);
    void watch(int id, Client& client);
    void watchAnew();
    void takeRecords(int id);
    void flush(int id);
    bool queueRecord(Client& client, const QByteArray& record);
    QByteArray takeRecord(int socket, bool* isOver);

    ObjectServer* const q;
    device::ListeningSocket listening;
    NotifierPointer acceptor;
    std::map<int, Client> clients;
    int lastClient = 0;
    bool outOfDescriptors = false; // and has said so
    qint64 queueLimit = defaultQueueLimit;
    bool reading = true;
    const std::unique_ptr<char[]> buffer;
};

void ObjectServerPrivate::startAccepting()
{
    outOfDescriptors = false;
    acceptor.reset(new QSocketNotifier(listening.socket(), QSocketNotifier::Read, q));
    QObject::connect(acceptor.get(), &QSocketNotifier::activated, q, [this] { accept(); });
}

void ObjectServerPrivate::accept()
{
    const QPointer<ObjectServer> guard(q);
    while (guard && acceptor) {
        device::Descriptor socket(::accept4(listening.socket(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
        if (socket) {
            outOfDescriptors = false;
            adopt(std::move(socket));
            continue;
        }
        if (errno == EINTR || errno == ECONNABORTED)
            continue;
        if (errno != EAGAIN) {
            // Out of descriptors. The client waits on, so the notifier would fire without end.
            if (!std::exchange(outOfDescriptors, true))
                qWarning("%s: a client has to wait: %s", listening.path().c_str(), std::strerror(errno));
            acceptor->setEnabled(false);
            QTimer::singleShot(acceptPause, acceptor.get(), [this, paused = acceptor.get()] {
                if (acceptor.get() == paused)
                    paused->setEnabled(true);
            });
        }
        return;
    }
}

void ObjectServerPrivate::adopt(device::Descriptor socket)
{
    device::allowLongRecords(socket.get());
    const int id = ++lastClient;
    Client client;
    client.socket = std::move(socket);
    watch(id, client);
    clients.emplace(id, std::move(client));
    Q_EMIT q->clientConnected(id);
}

void ObjectServerPrivate::watch(int id, Client& client)
{
    client.reader.reset(new QSocketNotifier(client.socket.get(), QSocketNotifier::Read, q));
    client.writer.reset(new QSocketNotifier(client.socket.get(), QSocketNotifier::Write, q));
    client.reader->setEnabled(reading);
    client.writer->setEnabled(!client.queue.empty());
    QObject::connect(client.reader.get(), &QSocketNotifier::activated, q, [this, id] { takeRecords(id); });
    QObject::connect(client.writer.get(), &QSocketNotifier::activated, q, [this, id] { flush(id); });
}

/// Notifiers end with the application object under which they were made. A process may make another one after that.
void ObjectServerPrivate::watchAnew()
{
    if (listening.isOpen())
        startAccepting();
    for (auto& [id, client] : clients)
        watch(id, client);
}

// One record; an empty one, with `isOver` saying whether the client is gone, when there is none. A client of whom a
// record is lost for want of memory has to go: it knows what to do when it comes back, and nothing of what was lost.
QByteArray ObjectServerPrivate::takeRecord(int socket, bool* isOver)
try {
    const ssize_t size = ::recv(socket, buffer.get(), device::longestRecord(), MSG_DONTWAIT);
    if (size > 0)
        return QByteArray(buffer.get(), size);
    *isOver = size == 0 ? device::isHungUp(socket) : !device::mayReadOn(errno);
    return {};
} catch (const std::bad_alloc&) {
    *isOver = true;
    return {};
}

void ObjectServerPrivate::takeRecords(int id)
{
    const QPointer<ObjectServer> guard(q);
    for (int i = 0; i < recordsPerTurn; ++i) {
        const auto found = clients.find(id);
        if (found == clients.end() || !reading)
            return;
        bool isOver = false;
        const QByteArray record = takeRecord(found->second.socket.get(), &isOver);
        if (record.isEmpty()) {
            if (isOver)
                q->disconnectClient(id);
            return;
        }
        Q_EMIT q->recordReceived(id, record);
        if (!guard)
            return;
    }
}

void ObjectServerPrivate::flush(int id)
{
    const auto found = clients.find(id);
    if (found == clients.end())
        return;
    Client& client = found->second;
    while (!client.queue.empty()) {
        const QByteArray& record = client.queue.front();
        if (sendRecord(client.socket.get(), record) == Sent::NotNow)
            return;
        client.queuedBytes -= record.size();
        client.queue.pop_front();
    }
    client.writer->setEnabled(false);
}

bool ObjectServerPrivate::queueRecord(Client& client, const QByteArray& record)
{
    const bool isTooLong = size_t(record.size()) > device::longestRecord(client.socket.get());
    if (isTooLong || client.queuedBytes + record.size() > queueLimit)
        return false;
    try {
        client.writer->setEnabled(true);
        client.queue.push_back(record);
    } catch (const std::bad_alloc&) {
        // A notifier that could not be enabled takes itself for enabled all the same.
        client.writer->setEnabled(!client.queue.empty());
        return false;
    }
    client.queuedBytes += record.size();
    return true;
}

namespace {

QMutex serversMutex;
QList<ObjectServerPrivate*> servers; ///< of the process

/// Called for each application object that the process makes.
void watchAnew()
{
    const QMutexLocker lock(&serversMutex);
    for (ObjectServerPrivate* const server : std::as_const(servers)) {
        if (server->q->thread() == QThread::currentThread())
            server->watchAnew();
    }
}

} // namespace

ObjectServer::ObjectServer(QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ObjectServerPrivate>(this))
{
    [[maybe_unused]] static const bool isAdded = (qAddPreRoutine(watchAnew), true);
    const QMutexLocker lock(&serversMutex);
    servers.append(d.get());
}

ObjectServer::~ObjectServer()
{
    {
        const QMutexLocker lock(&serversMutex);
        servers.removeOne(d.get());
    }
    blockSignals(true);
    close();
}

bool ObjectServer::listen(const QString& path, QString* error)
{
    const std::string place = device::resolveObjectPath(QFile::encodeName(path).toStdString());
    std::string reason;
    if (!d->listening.open(place, &reason)) {
        if (error)
            *error = QString::fromLocal8Bit(reason.c_str());
        return false;
    }
    d->startAccepting();
    return true;
}

bool ObjectServer::isListening() const
{
    return d->listening.isOpen();
}

QString ObjectServer::path() const
{
    return QFile::decodeName(QByteArray::fromStdString(d->listening.path()));
}

void ObjectServer::close()
{
    d->acceptor.reset();
    d->listening.close();
    // By number, as a handler may disconnect others, or start to listen again and take new ones.
    const QPointer<ObjectServer> guard(this);
    const QList<int> connected = clients();
    for (const int client : connected) {
        if (guard)
            disconnectClient(client);
    }
}

QList<int> ObjectServer::clients() const
{
    QList<int> numbers;
    for (const auto& client : d->clients)
        numbers.append(client.first);
    return numbers;
}

qint64 ObjectServer::processOf(int client) const
{
    ucred peer{};
    socklen_t size = sizeof peer;
    const auto found = d->clients.find(client);
    const bool known = found != d->clients.end() &&
                       ::getsockopt(found->second.socket.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0;
    return known ? peer.pid : 0;
}

void ObjectServer::disconnectClient(int client)
{
    if (d->clients.erase(client) > 0)
        Q_EMIT clientDisconnected(client);
}

bool ObjectServer::send(int client, const QByteArray& record)
{
    const auto found = d->clients.find(client);
    if (found == d->clients.end() || record.isEmpty())
        return false;
    if (!found->second.queue.empty())
        return d->queueRecord(found->second, record);
    switch (sendRecord(found->second.socket.get(), record)) {
    case Sent::Yes:
        return true;
    case Sent::NotNow:
        return d->queueRecord(found->second, record);
    case Sent::Never:
        break;
    }
    return false;
}

void ObjectServer::setQueueLimit(qint64 bytes)
{
    d->queueLimit = bytes;
}

qint64 ObjectServer::queueLimit() const
{
    return d->queueLimit;
}

void ObjectServer::setReading(bool reading)
{
    d->reading = reading;
    for (auto& [id, client] : d->clients)
        client.reader->setEnabled(reading);
}

bool ObjectServer::isReading() const
{
    return d->reading;
}

} // namespace system
} // namespace vx
