// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/ScriptedCore.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QJsonArray>
#include <QtCore/QMap>
#include <QtTest/QSignalSpy>

/// A core service that has one user, some contacts and a box, and an application before it. What the library asks of
/// the lists is answered from the members below; whatever else it writes is left to the test.
class Desk
{
public:
    using Context = vx::platform::zel::Context;
    using RegistrationState = vx::platform::zel::RegistrationState;

    Desk()
    {
        core.answer(QStringLiteral("tpaApi"), [](const QJsonObject&) {});
        core.answer(QStringLiteral("requestListElements"), [this](const QJsonObject& body) { answerElements(body); });
        core.answer(QStringLiteral("requestListAll"), [this](const QJsonObject& body) {
            const QString type = body.value(QLatin1String("type")).toString();
            if (!heldBack.contains(type))
                sendList(type);
        });
        core.answer(QStringLiteral("requestUserAvatar"), [this](const QJsonObject& body) {
            const QString id = body.value(QLatin1String("streamId")).toString();
            if (pictures.contains(id))
                sendStream(id, pictures.value(id));
        });
    }

    /// Tells the library what changed in the permission record.
    void changePermission(const QByteArray& members) { change(QStringLiteral("permission"), members); }
    void changeState(const QString& state) { changePermission("{\"registrationState\":\"" + state.toUtf8() + "\"}"); }
    void changeProfile(const QByteArray& members) { change(QStringLiteral("platformProfile"), members); }

    void sendList(const QString& type)
    {
        core.send(QStringLiteral("listAll"), {{QStringLiteral("type"), type}});
        sendChunk(type, lists.value(type));
    }
    void sendElements(const QString& message, const QString& type, const QJsonArray& elements)
    {
        core.send(message, {{QStringLiteral("type"), type}, {QStringLiteral("elements"), elements}});
    }
    void sendStream(const QString& id, const QByteArray& data)
    {
        core.send(QStringLiteral("stream"), {{QStringLiteral("id"), id},
                                             {QStringLiteral("value"), QString::fromLatin1(data.toBase64())},
                                             {QStringLiteral("last"), true}});
    }

    /// Puts a contact on the list, known by "u-<name>" to the service and by "<name>" to the application.
    QJsonObject contact(const QString& name, const QByteArray& members = "{}")
    {
        QJsonObject record = ScriptedCore::json(members);
        record.insert(QStringLiteral("userId"), QString(QStringLiteral("u-") + name));
        record.insert(QStringLiteral("handle"), name);
        records[QStringLiteral("platformUser")].insert(QStringLiteral("u-") + name, record);
        return record;
    }
    static QJsonObject contactId(const QString& name)
    {
        return {{QStringLiteral("userId"), QString(QStringLiteral("u-") + name)}};
    }

    /// Whether the library has handled everything sent so far: a mark follows and has come out at the other end.
    bool settle()
    {
        const QString mark = QStringLiteral("settled %1").arg(++m_marks);
        auto* utils = vx::platform::zel::ServiceBridge::instance()->utils();
        QSignalSpy marks(utils, &vx::platform::zel::UtilsDelegate::ecoIdUpdated);
        if (!QTest::qWaitFor([this] { return core.hasClient(); }))
            return false;
        core.send(QStringLiteral("requestEcoIdResponse"),
                  {{QStringLiteral("ppid"), mark}, {QStringLiteral("ecoId"), QString()}});
        return QTest::qWaitFor([&] { return !marks.isEmpty() && marks.last().at(0).toString() == mark; });
    }
    /// Whether the library wrote nothing up to now: the next record is one that is written here.
    bool nothingWritten()
    {
        core.leaveToTest(QStringLiteral("tpaApi"));
        Services()->sendTpaApi(QStringLiteral("mark"));
        return core.nextMessage() == "{\"tpaApi\":{\"apiType\":\"mark\"}}" && !core.hasRecord();
    }

    /// Registers: the very first permission record says so, and all that it takes is answered.
    bool becomeAllowed()
    {
        permission().insert(QStringLiteral("registrationState"), QStringLiteral("Success"));
        Context context(QUuid::createUuid());
        QSignalSpy states(&context, &Context::registrationStateUpdated);
        return QTest::qWaitFor([&] { return !states.isEmpty(); }) &&
               states.last().at(0).value<RegistrationState::Type>() == RegistrationState::Allowed;
    }

    QJsonObject& permission() { return globals[QStringLiteral("permission")]; }
    QJsonObject& profile() { return globals[QStringLiteral("platformProfile")]; }

    ScriptedCore core;
    QMap<QString, QJsonObject> globals{
        {QStringLiteral("permission"), ScriptedCore::json(R"({"showAppBox":false,"zelInvites":false,
            "registrationState":"Unregistered","zelSetup":true})")},
        {QStringLiteral("platformProfile"), ScriptedCore::json(R"({"userId":"me","handle":"my-handle","ppid":"my-ppid",
            "appVersion":"1.2","displayName":"Ada","personalMessage":"Hello","currentStatus":"here","avatarId":"",
            "platformVersion":200,"clientVersion":77,"showBusy":false})")}};
    QMap<QString, QMap<QString, QJsonObject>> records; ///< of lists asked for by key: by type, by key
    QMap<QString, QJsonArray> lists;                   ///< of lists asked for whole: by type
    QMap<QString, QByteArray> pictures;                ///< by stream id
    QStringList heldBack;                              ///< lists, and global elements, that are not answered yet

private:
    static auto Services() { return vx::platform::zel::Services::getServices()->globals(); }

    static QJsonObject globalElement(const QString& name, const QJsonObject& value)
    {
        return {{QStringLiteral("name"), name}, {QStringLiteral("value"), value}};
    }

    void change(const QString& name, const QByteArray& members)
    {
        const QJsonObject changes = ScriptedCore::json(members);
        QJsonObject& record = globals[name];
        for (auto member = changes.begin(); member != changes.end(); ++member)
            record.insert(member.key(), member.value());
        sendElements(QStringLiteral("listChange"), QStringLiteral("global"), {globalElement(name, record)});
    }

    void sendChunk(const QString& type, const QJsonArray& elements)
    {
        core.send(
            QStringLiteral("listChunk"),
            {{QStringLiteral("type"), type}, {QStringLiteral("elements"), elements}, {QStringLiteral("last"), true}});
    }

    void answerElements(const QJsonObject& body)
    {
        const QString type = body.value(QLatin1String("type")).toString();
        const QJsonArray keys = body.value(QLatin1String("elements")).toArray();
        QJsonArray elements;
        for (const QJsonValue& key : keys) {
            const QString name = key.toObject().begin().value().toString();
            if (heldBack.contains(name))
                continue;
            if (type == QLatin1String("global"))
                elements.append(globalElement(name, globals.value(name)));
            else
                elements.append(records.value(type).value(name));
        }
        core.send(QStringLiteral("listElements"),
                  {{QStringLiteral("type"), type}, {QStringLiteral("cookie"), body.value(QLatin1String("cookie"))}});
        sendChunk(type, elements);
    }

    int m_marks = 0;
};
