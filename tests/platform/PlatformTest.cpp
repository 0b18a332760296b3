// SPDX-License-Identifier: Apache-2.0
#include "PlatformTest.h"

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

#include <vx/platform/zel/ContactService.h>

#include <QtTest/QSignalSpy>

using namespace vx::platform::zel;
using namespace Qt::StringLiterals;

Desk::Desk()
    : records{{u"permission"_s, json(R"({"showAppBox":true,"zelInvites":true,"registrationState":"Unregistered",
                   "zelSetup":true})")},
              {u"platformProfile"_s, json(R"({"userId":"me","handle":"my-handle","ppid":"my-ppid","appVersion":"1.2",
                   "displayName":"Ada","personalMessage":"Hello","currentStatus":"here","avatarId":"first",
                   "avatarMimeType":"image/png","platformVersion":200,"clientVersion":77,"showBusy":false})")}}
    , lists{{u"profileBoxItem"_s,
             {json(R"({"itemId":"1","text":"one","imageId":"7","cookie":"c1"})"),
              json(R"({"itemId":"2","text":"two"})"), json(R"({"itemId":"3","text":"three","imageId":"no number"})")}},
            {u"profileBoxImage"_s, {json(R"({"imageId":"7"})")}}}
{
    addContact(u"bea"_s);
    addContact(u"ada"_s, R"({"ppid":"p","appVersion":"3","displayName":"Ada","personalMessage":"Hi","showBusy":true,
                             "currentStatus":"out","platformVersion":150,"clientVersion":9})");
    addContact(u"cem"_s);
    qputenv("PPS_ROOT", m_root.path().toLocal8Bit());
    if (!m_server.listen(u"/pps/services/zelcore/platform"_s, nullptr))
        qFatal("cannot serve the platform object");
    connect(&m_server, &vx::system::ObjectServer::recordReceived, this,
            [this](int, const QByteArray& record) { receive(record); });
}

void Desk::receive(const QByteArray& record)
{
    const QByteArray head = "msg::zel\ndat:json:";
    const QByteArray text = record.startsWith(head) ? record.mid(head.size()).chopped(1) : record;
    const QJsonObject message = json(text);
    const QString type = message.keys().value(0);
    const QJsonObject body = message.value(type).toObject();
    const QString id = body.value("streamId"_L1).toString();
    const QString list = body.value("type"_L1).toString();
    if (type == "requestListElements"_L1)
        answerElements(body);
    else if (type == "requestListAll"_L1 && !heldBack.contains(list))
        tellList(list);
    else if (type == "requestUserAvatar"_L1 && !heldBack.contains(type))
        tellStream(id, id.toUtf8() + " picture");
    else if (type != "requestListAll"_L1 && type != "tpaApi"_L1)
        m_messages.enqueue(text);
}

static QJsonObject merged(QJsonObject record, const QByteArray& members)
{
    const QJsonObject changes = Desk::json(members);
    for (auto member = changes.begin(); member != changes.end(); ++member)
        record.insert(member.key(), member.value());
    return record;
}

void Desk::changeState(const QString& state)
{
    changePermission("{\"registrationState\":\"" + state.toUtf8() + "\"}");
}

void Desk::changeGlobal(const QString& name, const QByteArray& members)
{
    const QJsonObject record = records[name] = merged(records.value(name), members);
    tell(u"listChange"_s, u"global"_s, QJsonArray{QJsonObject{{u"name"_s, name}, {u"value"_s, record}}});
}

void Desk::changeContact(const QString& name, const QByteArray& members)
{
    QJsonObject& record = records[u"u-"_s + name];
    record = merged(record, members);
    tell(u"listChange"_s, u"platformUser"_s, QJsonArray{record});
}

void Desk::addContact(const QString& name, const QByteArray& members)
{
    const QJsonObject key{{u"userId"_s, QString(u"u-"_s + name)}};
    QJsonObject record = key;
    record.insert(u"handle"_s, name);
    records.insert(u"u-"_s + name, merged(record, members));
    lists[u"platformContact"_s].append(key);
    tell(u"listAdd"_s, u"platformContact"_s, QJsonArray{key});
}

void Desk::send(const QString& type, const QJsonObject& body)
{
    const QByteArray message = QJsonDocument(QJsonObject{{type, body}}).toJson(QJsonDocument::Compact);
    const QList<int> clients = m_server.clients();
    for (int client : clients)
        m_server.send(client, "@platform\ndat:json:" + message + '\n');
}

void Desk::tell(const QString& message, const QString& list, const QJsonArray& elements)
{
    send(message, {{u"type"_s, list}, {u"elements"_s, elements}, {u"last"_s, true}});
}

void Desk::tell(const QString& message, const QString& list, const QByteArray& element)
{
    tell(message, list, QJsonArray{json(element)});
}

void Desk::tellList(const QString& list)
{
    send(u"listAll"_s, {{u"type"_s, list}});
    tell(u"listChunk"_s, list, lists.value(list));
}

void Desk::tellStream(const QString& id, const QByteArray& data)
{
    send(u"stream"_s, {{u"id"_s, id}, {u"value"_s, QString::fromLatin1(data.toBase64())}, {u"last"_s, true}});
}

void Desk::answerElements(const QJsonObject& body)
{
    const QString list = body.value("type"_L1).toString();
    QJsonArray elements;
    for (const QJsonValue key : body.value("elements"_L1).toArray()) {
        QJsonObject element = key.toObject();
        const QString name = element.begin().value().toString();
        const QJsonObject record = records.value(name);
        element.insert(u"value"_s, record);
        if (!heldBack.contains(name))
            elements.append(list == "global"_L1 ? element : record);
    }
    send(u"listElements"_s, {{u"type"_s, list}, {u"cookie"_s, body.value("cookie"_L1)}});
    tell(u"listChunk"_s, list, elements);
}

bool Desk::settle()
{
    const QString mark = u"mark %1"_s.arg(++m_marks);
    QSignalSpy marks(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated);
    if (!QTest::qWaitFor([this] { return !m_server.clients().isEmpty(); }))
        return false;
    send(u"requestEcoIdResponse"_s, {{u"ppid"_s, mark}});
    return QTest::qWaitFor([&] { return !marks.isEmpty() && marks.last().at(0).toString() == mark; });
}

QByteArray Desk::nextMessage()
{
    return QTest::qWaitFor([this] { return !m_messages.isEmpty(); }) ? m_messages.dequeue() : QByteArray();
}

QByteArrayList Desk::written()
{
    Services::getServices()->ecoIdStatus()->requestEcoIdStatus(u"mark"_s);
    QByteArrayList messages;
    for (QByteArray next = nextMessage(); !next.contains("\"mark\""); next = nextMessage()) {
        messages.append(next);
        if (next.isEmpty()) // the mark does not come
            break;
    }
    return messages;
}

static QtMessageHandler handlerBefore = nullptr;
static QStringList warnings;

static void noteWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    if (type == QtWarningMsg && qstrcmp(context.category, "zel.platform") == 0)
        warnings.append(text);
    else
        handlerBefore(type, context, text);
}

QStringList PlatformTest::takeWarnings()
{
    return std::exchange(warnings, {});
}

void PlatformTest::init()
{
    handlerBefore = qInstallMessageHandler(noteWarning);
    m_desk = std::make_unique<Desk>();
}

void PlatformTest::cleanup()
{
    takeWarnings();
    qInstallMessageHandler(handlerBefore);
    m_context.reset();
    QVERIFY(ServiceBridge::letGo());
    m_desk.reset();
}

Context* PlatformTest::ready()
{
    m_desk->changeState(u"Success"_s);
    if (!m_context)
        m_context = std::make_unique<Context>(m_uuid);
    const bool isReady = QTest::qWaitFor([this] { return m_context->isReady(); });
    const ContactService contacts(m_context.get());
    if (!isReady || !QTest::qWaitFor([&] { return contacts.isComplete(); }))
        QTest::qFail("the application does not get ready", __FILE__, __LINE__);
    return m_context.get();
}
