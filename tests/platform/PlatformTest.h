// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/Heard.h>
#include <common/TestMain.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

#include <vx/platform/zel/ContactService.h>
#include <vx/platform/zel/Context.h>
#include <vx/system/ObjectServer.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QMetaProperty>
#include <QtCore/QTemporaryDir>
#include <QtCore/QUuid>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <memory>
#include <utility>

using namespace Qt::StringLiterals;
using namespace vx::platform::zel;

/// Plays the core service. It has one user, three contacts and a box, which the user allows. It serves the platform
/// object below a PPS_ROOT of its own. What the library asks of the lists and the own picture is answered from the
/// members below; whatever else it writes is left to the test.
class FakeService : public QObject
{
public:
    FakeService()
        : records{{u"permission"_s, json(R"({"showAppBox":true,"zelInvites":true,"registrationState":"Unregistered",
                       "zelSetup":true})")},
                  {u"platformProfile"_s,
                   json(R"({"userId":"me","handle":"my-handle","ppid":"my-ppid","appVersion":"1.2",
                       "displayName":"Ada","personalMessage":"Hello","currentStatus":"here","avatarId":"first",
                       "avatarMimeType":"image/png","platformVersion":200,"clientVersion":77,"showBusy":false})")}}
        , lists{{u"profileBoxItem"_s,
                 {json(R"({"itemId":"1","text":"one","imageId":"7","cookie":"c1"})"),
                  json(R"({"itemId":"2","text":"two"})"),
                  json(R"({"itemId":"3","text":"three","imageId":"no number"})")}},
                {u"profileBoxImage"_s, {json(R"({"imageId":"7"})")}}}
    {
        addContact(u"bea"_s);
        addContact(u"ada"_s, R"({"displayName":"Ada","showBusy":true})");
        addContact(u"cem"_s);
        qputenv("PPS_ROOT", m_root.path().toLocal8Bit());
        if (!m_server.listen(u"/pps/services/zelcore/platform"_s, nullptr))
            qFatal("cannot serve the platform object");
        connect(&m_server, &vx::system::ObjectServer::recordReceived, this,
                [this](int, const QByteArray& record) { receive(record); });
    }

    static QJsonObject json(const QByteArray& text) { return QJsonDocument::fromJson(text).object(); }
    void goAway() { m_server.close(); }

    /// Each changes members of a record and tells the library.
    void changePermission(const QByteArray& members) { changeGlobal(QStringLiteral("permission"), members); }
    void changeState(const QString& state) { changePermission("{\"registrationState\":\"" + state.toUtf8() + "\"}"); }
    void changeProfile(const QByteArray& members) { changeGlobal(QStringLiteral("platformProfile"), members); }
    /// "u-<name>" to the service and "<name>" to the application, unless the members have another handle.
    void addContact(const QString& name, const QByteArray& members = "{}")
    {
        const QString id = u"u-"_s + name;
        const QJsonObject key{{u"userId"_s, id}};
        records.insert(id, merged({{u"userId"_s, id}, {u"handle"_s, name}}, members));
        lists[u"platformContact"_s].append(key);
        tell(u"listAdd"_s, u"platformContact"_s, QJsonArray{key});
    }

    void send(const QString& type, const QJsonObject& body)
    {
        const QByteArray message = QJsonDocument(QJsonObject{{type, body}}).toJson(QJsonDocument::Compact);
        const QList<int> clients = m_server.clients();
        for (int client : clients)
            m_server.send(client, "@platform\ndat:json:" + message + '\n');
    }
    /// A message with elements of a list.
    void tell(const QString& message, const QString& list, const QJsonArray& elements)
    {
        send(message, {{u"type"_s, list}, {u"elements"_s, elements}, {u"last"_s, true}});
    }
    void tell(const QString& message, const QString& list, const QByteArray& element)
    {
        tell(message, list, QJsonArray{json(element)});
    }
    void tellList(const QString& list)
    {
        send(u"listAll"_s, {{u"type"_s, list}});
        tell(u"listChunk"_s, list, lists.value(list));
    }
    void tellStream(const QString& id, const QByteArray& data)
    {
        send(u"stream"_s, {{u"id"_s, id}, {u"value"_s, QString::fromLatin1(data.toBase64())}, {u"last"_s, true}});
    }

    /// Whether the library has handled everything sent so far: a mark follows and has come out at the other end.
    bool settle()
    {
        const QString mark = u"mark %1"_s.arg(++m_marks);
        QSignalSpy marks(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated);
        if (!QTest::qWaitFor([this] { return !m_server.clients().isEmpty(); }))
            return false;
        send(u"requestEcoIdResponse"_s, {{u"ppid"_s, mark}});
        return QTest::qWaitFor([&] { return !marks.isEmpty() && marks.last().at(0).toString() == mark; });
    }
    /// Waits for a message with this in it that is not answered.
    bool hears(const QByteArray& text) const
    {
        return QTest::qWaitFor([&] { return !m_messages.isEmpty() && m_messages.last().contains(text); });
    }
    /// What the library has written since the last time and was not answered, without the lines around it: what comes
    /// before a mark.
    QByteArrayList written()
    {
        Services::getServices()->ecoIdStatus()->requestEcoIdStatus(u"mark"_s);
        const bool isHeard = hears("\"mark\"");
        const QByteArrayList messages = std::exchange(m_messages, {});
        return isHeard ? messages.mid(0, messages.size() - 1) : QByteArrayList{"the mark does not come"};
    }

    QMap<QString, QJsonObject> records; ///< the user's own by name, those of contacts by user id
    QMap<QString, QJsonArray> lists;    ///< those asked for whole, by type
    QStringList heldBack;               ///< lists, records and types of messages that are not answered yet

private:
    static QJsonObject merged(const QJsonObject& record, const QByteArray& members)
    {
        QVariantMap all = record.toVariantMap();
        all.insert(json(members).toVariantMap());
        return QJsonObject::fromVariantMap(all);
    }
    void changeGlobal(const QString& name, const QByteArray& members)
    {
        const QJsonObject record = records[name] = merged(records.value(name), members);
        tell(u"listChange"_s, u"global"_s, QJsonArray{QJsonObject{{u"name"_s, name}, {u"value"_s, record}}});
    }
    void receive(const QByteArray& record)
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
            m_messages.append(text);
    }
    void answerElements(const QJsonObject& body)
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

    QTemporaryDir m_root;
    vx::system::ObjectServer m_server;
    QByteArrayList m_messages;
    int m_marks = 0;
};

/// Values as words.
template <typename... Values>
QString words(const Values&... values)
{
    return QStringList{QVariant::fromValue(values).toString()...}.join(u' ');
}

/// The properties of a public object or value, each as "name=value".
template <class Public>
QString shown(const Public& object)
{
    QStringList all;
    const QMetaObject& type = Public::staticMetaObject;
    for (int i = type.propertyOffset(); i < type.propertyCount(); ++i) {
        QVariant value;
        if constexpr (std::is_base_of_v<QObject, Public>)
            value = type.property(i).read(&object);
        else
            value = type.property(i).readOnGadget(&object);
        all.append(QLatin1String(type.property(i).name()) + u'=' + value.toString());
    }
    return all.join(u' ');
}

/// Each case has a service of its own, and the library begins as in a new process.
class PlatformTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_handlerBefore = qInstallMessageHandler(noteWarning);
        m_service = std::make_unique<FakeService>();
    }
    void cleanup()
    {
        takeWarnings();
        qInstallMessageHandler(m_handlerBefore);
        m_context.reset();
        QVERIFY(ServiceBridge::letGo());
        m_service.reset();
    }

protected:
    /// The context of an application that is registered and has everything.
    Context* ready()
    {
        m_service->changeState(u"Success"_s);
        if (!m_context)
            m_context = std::make_unique<Context>(m_uuid);
        const bool isReady = QTest::qWaitFor([this] { return m_context->isReady(); });
        const ContactService contacts(m_context.get());
        if (!isReady || !QTest::qWaitFor([&] { return contacts.isComplete(); }))
            QTest::qFail("the application does not get ready", __FILE__, __LINE__);
        return m_context.get();
    }
    /// What the library has warned of since it was asked last.
    static QStringList takeWarnings() { return std::exchange(m_untaken, {}); }

    QUuid const m_uuid{QStringLiteral("{6F8D2C4E-5B0A-4A37-9D0E-0C8F3F1F2A10}")};
    std::unique_ptr<FakeService> m_service;
    std::unique_ptr<Context> m_context;

private:
    static void noteWarning(QtMsgType type, const QMessageLogContext& context, const QString& text)
    {
        if (type == QtWarningMsg && qstrcmp(context.category, "zel.platform") == 0)
            m_untaken.append(text);
        else
            m_handlerBefore(type, context, text);
    }

    static inline QtMessageHandler m_handlerBefore = nullptr;
    static inline QStringList m_untaken;
};
