// SPDX-License-Identifier: Apache-2.0
#include "Core.h"

#include <pps/object.h>

#include <QtCore/QJsonDocument>

#include <cstdio>
#include <cstdlib>

#include <sys/socket.h>
#include <unistd.h>

// Texts are put together and taken apart by hand: with documents the core would take more time than the library.

namespace {

/// A member's text as it is written, quotes and all; empty when there is none.
QByteArray memberOf(const QByteArray& object, const char* name)
{
    const QByteArray key = '"' + QByteArray(name) + "\":\"";
    const qsizetype at = object.indexOf(key);
    if (at < 0)
        return {};
    const qsizetype start = at + key.size() - 1;
    qsizetype end = start + 1;
    while (object.at(end) != '"')
        end += object.at(end) == '\\' ? 2 : 1;
    return object.sliced(start, end + 1 - start);
}

QByteArray unquoted(const QByteArray& text)
{
    return text.size() < 2 ? QByteArray() : text.sliced(1, text.size() - 2);
}

/// The elements of a request, each an object with one member.
QByteArrayList keysOf(const QByteArray& body)
{
    constexpr QByteArrayView name("\"elements\":[{");
    const qsizetype start = body.indexOf(name);
    const qsizetype end = body.lastIndexOf("}]");
    if (start < 0 || end < start)
        return {};
    QByteArrayList keys;
    for (qsizetype at = start + name.size(); at <= end;) {
        const qsizetype next = body.indexOf("},{", at);
        const qsizetype last = next < 0 ? end : next;
        keys.append(body.sliced(at, last - at));
        at = last + 3;
    }
    return keys;
}

QByteArray userId(int number)
{
    const QByteArray letter(1, static_cast<char>('a' + number % 26));
    return "\"userId\":\"" + letter + (number < 26 ? "" : QByteArray::number(number)) + '"';
}

QByteArray contactOf(const QByteArray& key)
{
    const QByteArray id = memberOf(key, "userId");
    return '{' + key + ",\"handle\":" + id + ",\"displayName\":" + id + ",\"avatarId\":\"a\"}";
}

QByteArray globalOf(const QByteArray& key)
{
    const bool isPermission = key.contains("permission");
    return '{' + key + ",\"value\":" +
           (isPermission ? R"({"showAppBox":true,"zelInvites":true,"zelSetup":true,"registrationState":"Success"}})"
                         : R"({"userId":"me","handle":"my-handle","avatarId":"a"}})");
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
    const QByteArray json = record.startsWith(head) ? record.sliced(head.size()).trimmed() : QByteArray();
    if (!QJsonDocument::fromJson(json).isObject()) {
        std::fprintf(stderr, "the library wrote what is no request:\n%s\n", record.constData());
        std::abort();
    }
    const qsizetype colon = json.indexOf(':');
    const Request request = {json.sliced(2, colon - 3), json.sliced(colon + 1).chopped(1)};
    const QByteArray type = unquoted(memberOf(request.body, "type"));
    if (const QByteArray cookie = memberOf(request.body, "cookie"); !cookie.isEmpty())
        m_learned.cookies.insert(type, unquoted(cookie));
    if (const QByteArray streamId = memberOf(request.body, "streamId"); !streamId.isEmpty())
        m_learned.streamId = unquoted(streamId);
    if (const QByteArray hash = memberOf(request.body, "imageHash"); !hash.isEmpty())
        m_learned.imageHash = unquoted(hash);
    constexpr qsizetype mostRequests = 64;
    if (m_requests.size() == mostRequests)
        m_requests.removeFirst();
    m_requests.append(request);
}

bool Core::answerRequests(int contacts)
{
    m_contacts = contacts;
    const QList<Request> requests = std::exchange(m_requests, {});
    for (const Request& request : requests)
        answer(request);
    return !requests.isEmpty();
}

void Core::announceEverything()
{
    m_contacts = 2;
    tellElements("listAdd", "global", globalOf(R"("name":"permission")"));
    tellElements("listAdd", "global", globalOf(R"("name":"platformProfile")"));
    for (const char* list : {"platformContact", "profileBoxItem", "profileBoxImage"})
        answerList(list);
    tellElements("listAdd", "platformUser", contactOf(userId(0)) + ',' + contactOf(userId(1)));
}

void Core::reset()
{
    m_learned = {};
    m_requests.clear();
    m_itemsMade = 0;
}

void Core::answer(const Request& request)
{
    const QByteArray& body = request.body;
    const auto is = [&request](const char* name) { return request.type == name; };
    if (is("requestListAll")) {
        answerList(unquoted(memberOf(body, "type")));
    } else if (is("requestListElements")) {
        answerElements(body);
    } else if (is("requestListChange")) {
        tell("listChange", body);
        tell("profileChangeResponse", R"({"status":"Success"})");
    } else if (is("requestListRemove")) {
        tell("listRemove", body);
    } else if (is("registrationRequest")) {
        tellElements("listChange", "global", globalOf(R"("name":"permission")"));
    } else if (is("requestUserAvatar") || is("requestProfileBoxImage")) {
        tell("stream", "{\"id\":" + memberOf(body, "streamId") + R"(,"value":"R0lGODlhAAAA","last":true})");
    } else if (is("createProfileBoxImage")) {
        tell("requestNewProfileBoxImage", "{\"streamId\":\"a\"," + body.sliced(1));
        tellElements("listAdd", "profileBoxImage", body);
    } else if (is("createProfileBoxItem")) {
        const QByteArray id(1, static_cast<char>('a' + m_itemsMade++ % 8));
        tellElements("listAdd", "profileBoxItem", "{\"itemId\":\"" + id + "\"," + body.sliced(1));
    } else if (is("requestEcoId")) {
        tell("requestEcoIdResponse", body);
    } else if (is("requestEcoIdStatus")) {
        tell("requestEcoIdStatusResponse", body);
    }
}

void Core::answerList(const QByteArray& list)
{
    QByteArrayList elements;
    if (list == "platformContact") {
        for (int i = 0; i < m_contacts; ++i)
            elements.append('{' + userId(i) + '}');
    } else if (list == "profileBoxItem") {
        elements.append(R"({"itemId":"a","text":"a"})");
    } else {
        elements.append(R"({"imageId":"0","imageHash":"a"})");
    }
    tell("listAll", "{\"type\":\"" + list + "\"}");
    tellChunk(list, elements.join(','));
}

void Core::answerElements(const QByteArray& body)
{
    const QByteArray list = unquoted(memberOf(body, "type"));
    QByteArrayList elements;
    for (const QByteArray& key : keysOf(body))
        elements.append(list == "global" ? globalOf(key) : contactOf(key));
    tell("listElements", "{\"type\":\"" + list + "\",\"cookie\":" + memberOf(body, "cookie") + '}');
    tellChunk(list, elements.join(','));
}

void Core::tell(const char* type, const QByteArray& body)
{
    sendMessage("{\"" + QByteArray(type) + "\":" + body + '}');
}

void Core::tellElements(const char* type, const QByteArray& list, const QByteArray& elements)
{
    tell(type, "{\"type\":\"" + list + "\",\"elements\":[" + elements + "]}");
}

void Core::tellChunk(const QByteArray& list, const QByteArray& elements)
{
    tell("listChunk", "{\"type\":\"" + list + "\",\"elements\":[" + elements + R"(],"last":true})");
}

/// Takes the place of the device's.
int pps_object_open(const char*, int)
{
    return Core::instance().open();
}
