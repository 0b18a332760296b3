// SPDX-License-Identifier: Apache-2.0
#include "Core.h"

#include <pps/object.h>

#include <QtCore/QJsonDocument>

#include <cstdio>
#include <cstdlib>

#include <sys/socket.h>
#include <unistd.h>

namespace {

QString text(const char* latin1)
{
    return QString::fromLatin1(latin1);
}

QJsonObject elementsBody(const QString& list, const QJsonArray& elements)
{
    return {{text("type"), list}, {text("elements"), elements}};
}

QJsonObject userId(int number)
{
    return {{text("userId"), QString(QChar(u'a' + number % 26) + (number < 26 ? QString() : QString::number(number)))}};
}

QJsonObject contactOf(QJsonObject key)
{
    const QJsonValue id = key.value(text("userId"));
    key.insert(text("handle"), id);
    key.insert(text("displayName"), id);
    key.insert(text("avatarId"), text("a"));
    return key;
}

QJsonObject globalOf(QJsonObject key)
{
    if (key.value(text("name")) == text("permission"))
        key.insert(text("value"), QJsonObject{{text("showAppBox"), true},
                                              {text("zelInvites"), true},
                                              {text("zelSetup"), true},
                                              {text("registrationState"), text("Success")}});
    else
        key.insert(text("value"), QJsonObject{{text("userId"), text("me")},
                                              {text("handle"), text("my-handle")},
                                              {text("avatarId"), text("a")}});
    return key;
}

} // namespace

Core& Core::instance()
{
    static Core core;
    return core;
}

int Core::open()
{
    int ends[2] = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK | SOCK_CLOEXEC, 0, ends) != 0) {
        std::perror("socketpair");
        std::abort();
    }
    if (m_descriptor != -1)
        ::close(m_descriptor);
    m_descriptor = ends[0];
    return ends[1];
}

void Core::send(const QByteArray& record)
{
    // What finds no room is lost, as with a service that does not wait.
    [[maybe_unused]] const auto sent =
        ::send(m_descriptor, record.constData(), static_cast<size_t>(record.size()), MSG_NOSIGNAL);
}

void Core::takeRequests()
{
    static QByteArray buffer(1 << 18, Qt::Uninitialized);
    for (;;) {
        const ssize_t size = ::recv(m_descriptor, buffer.data(), static_cast<size_t>(buffer.size()), 0);
        if (size <= 0)
            return;
        take(buffer.first(size));
    }
}

void Core::take(const QByteArray& record)
{
    constexpr QByteArrayView head("msg::zel\ndat:json:");
    QJsonParseError error;
    const QJsonDocument request = QJsonDocument::fromJson(record.sliced(head.size()).trimmed(), &error);
    if (!record.startsWith(head) || !request.isObject()) {
        std::fprintf(stderr, "the library wrote what is no request: %s\n%s\n", qPrintable(error.errorString()),
                     record.constData());
        std::abort();
    }
    const QJsonObject body = request.object().begin()->toObject();
    const auto latin1 = [&body](const char* name) { return body.value(text(name)).toString().toLatin1(); };
    if (body.contains(text("cookie")))
        m_learned.cookies.insert(latin1("type"), latin1("cookie"));
    if (body.contains(text("streamId")))
        m_learned.streamId = latin1("streamId");
    if (body.contains(text("imageHash")))
        m_learned.imageHash = latin1("imageHash");
    constexpr qsizetype mostRequests = 64;
    if (m_requests.size() == mostRequests)
        m_requests.removeFirst();
    m_requests.append(request.object());
}

bool Core::answerRequests(int contacts)
{
    m_contacts = contacts;
    const QList<QJsonObject> requests = std::exchange(m_requests, {});
    for (const QJsonObject& request : requests)
        answer(request.begin().key(), request.begin()->toObject());
    return !requests.isEmpty();
}

void Core::announceEverything()
{
    m_contacts = 2;
    tellElements("listAdd", text("global"), {globalOf({{text("name"), text("permission")}})});
    tellElements("listAdd", text("global"), {globalOf({{text("name"), text("platformProfile")}})});
    for (const char* list : {"platformContact", "profileBoxItem", "profileBoxImage"})
        answerList({{text("type"), text(list)}});
    tellElements("listAdd", text("platformUser"), {contactOf(userId(0)), contactOf(userId(1))});
}

void Core::reset()
{
    m_learned = {};
    m_requests.clear();
    m_itemsMade = 0;
}

void Core::answer(const QString& type, const QJsonObject& body)
{
    const auto is = [&type](const char* name) { return type == QLatin1String(name); };
    const QJsonValue streamId = body.value(text("streamId"));
    const QJsonValue imageId = body.value(text("imageId"));
    if (is("requestListAll")) {
        answerList(body);
    } else if (is("requestListElements")) {
        answerElements(body);
    } else if (is("requestListChange")) {
        tell("listChange", body);
        tell("profileChangeResponse", {{text("status"), text("Success")}});
    } else if (is("requestListRemove")) {
        tell("listRemove", body);
    } else if (is("registrationRequest")) {
        const QJsonObject permission = globalOf({{text("name"), text("permission")}});
        tellElements("listChange", text("global"), {permission});
    } else if (is("requestUserAvatar") || is("requestProfileBoxImage")) {
        tell("stream", {{text("id"), streamId}, {text("value"), text("R0lGODlhAAAA")}, {text("last"), true}});
    } else if (is("createProfileBoxImage")) {
        tell("requestNewProfileBoxImage", {{text("imageId"), imageId}, {text("streamId"), text("a")}});
        tellElements("listAdd", text("profileBoxImage"), {body});
    } else if (is("createProfileBoxItem")) {
        QJsonObject item = body;
        item.insert(text("itemId"), QString(QChar(u'a' + m_itemsMade++ % 8)));
        tellElements("listAdd", text("profileBoxItem"), {item});
    } else if (is("requestEcoId")) {
        tell("requestEcoIdResponse", body);
    } else if (is("requestEcoIdStatus")) {
        tell("requestEcoIdStatusResponse", body);
    }
}

void Core::answerList(const QJsonObject& body)
{
    const QString list = body.value(text("type")).toString();
    QJsonArray elements;
    if (list == text("platformContact")) {
        for (int i = 0; i < m_contacts; ++i)
            elements.append(userId(i));
    } else if (list == text("profileBoxItem")) {
        elements.append(QJsonObject{{text("itemId"), text("a")}, {text("text"), text("a")}});
    } else {
        elements.append(QJsonObject{{text("imageId"), text("0")}, {text("imageHash"), text("a")}});
    }
    tell("listAll", {{text("type"), list}});
    QJsonObject chunk = elementsBody(list, elements);
    chunk.insert(text("last"), true);
    tell("listChunk", chunk);
}

void Core::answerElements(const QJsonObject& body)
{
    const QString list = body.value(text("type")).toString();
    const QJsonArray keys = body.value(text("elements")).toArray();
    QJsonArray elements;
    for (const QJsonValue& key : keys)
        elements.append(list == text("global") ? globalOf(key.toObject()) : contactOf(key.toObject()));
    tell("listElements", {{text("type"), list}, {text("cookie"), body.value(text("cookie"))}});
    QJsonObject chunk = elementsBody(list, elements);
    chunk.insert(text("last"), true);
    tell("listChunk", chunk);
}

void Core::tell(const char* type, const QJsonObject& body)
{
    sendMessage(QJsonDocument(QJsonObject{{text(type), body}}).toJson(QJsonDocument::Compact));
}

void Core::tellElements(const char* type, const QString& list, const QJsonArray& elements)
{
    tell(type, elementsBody(list, elements));
}

/// Takes the place of the device's.
int pps_object_open(const char*, int)
{
    return Core::instance().open();
}
