// SPDX-License-Identifier: Apache-2.0
#include "RawCore.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QSocketNotifier>
#include <QtTest/QTest>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

struct RawCore::Client
{
    explicit Client(int socket)
        : descriptor(socket)
        , notifier(socket, QSocketNotifier::Read)
    {
    }
    ~Client()
    {
        notifier.setEnabled(false);
        ::close(descriptor);
    }

    const int descriptor;
    QSocketNotifier notifier;
};

RawCore::RawCore(const QString& root)
    : m_path(root + u"/services/zelcore/platform"_s)
{
}

RawCore::~RawCore()
{
    leave();
}

bool RawCore::listen()
{
    QDir().mkpath(QFileInfo(m_path).path());
    QFile::remove(m_path);
    const QByteArray name = QFile::encodeName(m_path);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (static_cast<std::size_t>(name.size()) >= sizeof address.sun_path)
        return false;
    std::copy(name.begin(), name.end(), address.sun_path);
    m_listener = ::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (::bind(m_listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::listen(m_listener, 8) != 0)
        return false;
    m_notifier = std::make_unique<QSocketNotifier>(m_listener, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &RawCore::accept);
    return true;
}

void RawCore::close()
{
    m_notifier.reset();
    m_clients.clear();
    if (m_listener >= 0)
        ::close(m_listener);
    m_listener = -1;
}

void RawCore::die()
{
    close();
}

void RawCore::leave()
{
    close();
    QFile::remove(m_path);
}

void RawCore::setPermission(const QString& state)
{
    setGlobal(u"permission"_s, permission(state));
}

QJsonObject RawCore::permission(const QString& state)
{
    return {{u"showAppBox"_s, false}, {u"zelInvites"_s, true}, {u"registrationState"_s, state}, {u"zelSetup"_s, true}};
}

void RawCore::changeGlobal(const QString& name, const QJsonObject& members)
{
    QJsonObject value = m_globals.value(name).toObject();
    for (auto it = members.begin(); it != members.end(); ++it)
        value.insert(it.key(), it.value());
    m_globals.insert(name, value);
    const QJsonArray elements{QJsonObject{{u"name"_s, name}, {u"value"_s, members}}};
    sendMessage(u"listChange"_s, {{u"type"_s, u"global"_s}, {u"elements"_s, elements}});
}

void RawCore::changeState(const QString& state)
{
    changeGlobal(u"permission"_s, {{u"registrationState"_s, state}});
}

QByteArray RawCore::recordOf(const QString& type, const QJsonObject& body)
{
    const QJsonObject message{{type, body}};
    return "@platform\ndat:json:" + QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n';
}

void RawCore::send(const QByteArray& record)
{
    for (const auto& client : m_clients)
        write(*client, record);
}

void RawCore::sendMessage(const QString& type, const QJsonObject& body)
{
    send(recordOf(type, body));
}

void RawCore::write(const Client& client, const QByteArray& record)
{
    ::send(client.descriptor, record.constData(), static_cast<std::size_t>(record.size()), MSG_NOSIGNAL);
}

QList<QJsonObject> RawCore::bodies(const QString& type) const
{
    QList<QJsonObject> result;
    for (const QByteArray& record : m_records) {
        const QJsonObject message =
            QJsonDocument::fromJson(record.mid(record.indexOf("dat:json:") + 9).trimmed()).object();
        if (message.contains(type))
            result += message.value(type).toObject();
    }
    return result;
}

QJsonObject RawCore::take(const QString& type)
{
    const int at = m_taken.value(type);
    if (!QTest::qWaitFor([&] { return bodies(type).size() > at; }, 10'000))
        return {};
    m_taken.insert(type, at + 1);
    return bodies(type).at(at);
}

bool RawCore::waitForClient()
{
    return QTest::qWaitFor([this] { return !m_clients.empty(); }, 10'000);
}

void RawCore::accept()
{
    const int socket = ::accept4(m_listener, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (socket < 0)
        return;
    auto client = std::make_unique<Client>(socket);
    Client* const handle = client.get();
    connect(&handle->notifier, &QSocketNotifier::activated, this, [this, handle] { read(handle); });
    m_clients.push_back(std::move(client));
}

void RawCore::read(Client* client)
{
    QByteArray record(1 << 20, Qt::Uninitialized);
    const ssize_t count = ::recv(client->descriptor, record.data(), static_cast<std::size_t>(record.size()), 0);
    if (count <= 0) {
        client->notifier.setEnabled(false); // gone; its place is kept until we go, too
        return;
    }
    record.resize(count);
    m_records += record;
    const QJsonObject message = QJsonDocument::fromJson(record.mid(record.indexOf("dat:json:") + 9).trimmed()).object();
    if (!message.isEmpty())
        answer(client, message.begin().key(), message.begin().value().toObject());
}

void RawCore::answer(Client* client, const QString& type, const QJsonObject& body)
{
    if (type == "requestListElements"_L1 && body.value("type"_L1).toString() == "global"_L1)
        answerElements(client, body);
    else if (type == "requestListAll"_L1 && m_servesLists)
        answerList(client, body);
}

void RawCore::answerElements(Client* client, const QJsonObject& request)
{
    QJsonArray elements;
    const QJsonArray wanted = request.value("elements"_L1).toArray();
    for (const QJsonValue& element : wanted) {
        const QString name = element.toObject().value("name"_L1).toString();
        if (m_globals.contains(name))
            elements += QJsonObject{{u"name"_s, name}, {u"value"_s, m_globals.value(name)}};
    }
    if (elements.isEmpty()) // a service that does not know yet does not answer
        return;
    const QString global = u"global"_s;
    write(*client, recordOf(u"listElements"_s, {{u"type"_s, global}, {u"cookie"_s, request.value("cookie"_L1)}}));
    write(*client, recordOf(u"listChunk"_s, {{u"type"_s, global}, {u"elements"_s, elements}, {u"last"_s, true}}));
}

void RawCore::answerList(Client* client, const QJsonObject& request)
{
    const QJsonValue type = request.value("type"_L1);
    write(*client, recordOf(u"listAll"_s, {{u"type"_s, type}}));
    write(*client, recordOf(u"listChunk"_s, {{u"type"_s, type}, {u"elements"_s, QJsonArray()}, {u"last"_s, true}}));
}
