// SPDX-License-Identifier: Apache-2.0
#include "Desk.h"

#include <platform/channel/ServiceBridge.h>
#include <platform/ecoid/UtilsDelegate.h>

#include <QtTest/QSignalSpy>

using namespace vx::platform::zel;

namespace {

QJsonObject globalElement(const QString& name, const QJsonObject& value)
{
    return {{QStringLiteral("name"), name}, {QStringLiteral("value"), value}};
}

} // namespace

Desk::Desk()
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

void Desk::changeState(const QString& state)
{
    changePermission("{\"registrationState\":\"" + state.toUtf8() + "\"}");
}

void Desk::change(const QString& name, const QByteArray& members)
{
    const QJsonObject changes = ScriptedCore::json(members);
    QJsonObject& record = globals[name];
    for (auto member = changes.begin(); member != changes.end(); ++member)
        record.insert(member.key(), member.value());
    sendElements(QStringLiteral("listChange"), QStringLiteral("global"), {globalElement(name, record)});
}

void Desk::sendList(const QString& type)
{
    core.send(QStringLiteral("listAll"), {{QStringLiteral("type"), type}});
    sendChunk(type, lists.value(type));
}

void Desk::sendElements(const QString& message, const QString& type, const QJsonArray& elements)
{
    core.send(message, {{QStringLiteral("type"), type}, {QStringLiteral("elements"), elements}});
}

void Desk::sendChunk(const QString& type, const QJsonArray& elements)
{
    core.send(QStringLiteral("listChunk"),
              {{QStringLiteral("type"), type}, {QStringLiteral("elements"), elements}, {QStringLiteral("last"), true}});
}

void Desk::sendStream(const QString& id, const QByteArray& data)
{
    core.send(QStringLiteral("stream"), {{QStringLiteral("id"), id},
                                         {QStringLiteral("value"), QString::fromLatin1(data.toBase64())},
                                         {QStringLiteral("last"), true}});
}

void Desk::answerElements(const QJsonObject& body)
{
    const QString type = body.value(QLatin1String("type")).toString();
    const QJsonArray keys = body.value(QLatin1String("elements")).toArray();
    QJsonArray elements;
    for (const QJsonValue& key : keys) {
        const QString name = key.toObject().begin().value().toString();
        if (heldBack.contains(name))
            continue;
        m_permissionAnswered |= name == QLatin1String("permission");
        if (type == QLatin1String("global"))
            elements.append(globalElement(name, globals.value(name)));
        else
            elements.append(records.value(type).value(name));
    }
    core.send(QStringLiteral("listElements"),
              {{QStringLiteral("type"), type}, {QStringLiteral("cookie"), body.value(QLatin1String("cookie"))}});
    sendChunk(type, elements);
}

QJsonObject Desk::contact(const QString& name, const QByteArray& members)
{
    QJsonObject record = ScriptedCore::json(members);
    record.insert(QStringLiteral("userId"), QString(QStringLiteral("u-") + name));
    if (!record.contains(QStringLiteral("handle")))
        record.insert(QStringLiteral("handle"), name);
    records[QStringLiteral("platformUser")].insert(QStringLiteral("u-") + name, record);
    return record;
}

bool Desk::settle()
{
    const QString mark = QStringLiteral("settled %1").arg(++m_marks);
    QSignalSpy marks(ServiceBridge::instance()->utils(), &UtilsDelegate::ecoIdUpdated);
    if (!QTest::qWaitFor([this] { return core.hasClient(); }))
        return false;
    core.send(QStringLiteral("requestEcoIdResponse"),
              {{QStringLiteral("ppid"), mark}, {QStringLiteral("ecoId"), QString()}});
    return QTest::qWaitFor([&] { return !marks.isEmpty() && marks.last().at(0).toString() == mark; });
}

bool Desk::nothingWritten()
{
    const QString mark = QStringLiteral("mark %1").arg(++m_marks);
    bool marked = false;
    bool clean = false;
    core.answer(QStringLiteral("tpaApi"), [&](const QJsonObject& body) {
        if (body.value(QLatin1String("apiType")).toString() != mark)
            return; // the library's own announcement
        marked = true;
        clean = !core.hasRecord();
    });
    Services::getServices()->globals()->sendTpaApi(mark);
    const bool arrived = QTest::qWaitFor([&] { return marked; });
    core.answer(QStringLiteral("tpaApi"), [](const QJsonObject&) {});
    return arrived && clean;
}

bool Desk::becomeAllowed()
{
    permission().insert(QStringLiteral("registrationState"), QStringLiteral("Success"));
    Context context(QUuid::createUuid());
    QSignalSpy states(&context, &Context::registrationStateUpdated);
    if (m_permissionAnswered)
        changeState(QStringLiteral("Success"));
    return QTest::qWaitFor([&] {
        return !states.isEmpty() && states.last().at(0).value<RegistrationState::Type>() == RegistrationState::Allowed;
    });
}
