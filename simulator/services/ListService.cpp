// SPDX-License-Identifier: Apache-2.0
#include <simulator/services/ListService.h>

#include <simulator/wire/Wire.h>

#include <QtCore/QJsonArray>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

constexpr QLatin1String listAll("listAll");
constexpr QLatin1String listElements("listElements");
constexpr QLatin1String listChunk("listChunk");
constexpr QLatin1String listAdd("listAdd");
constexpr QLatin1String listChange("listChange");
constexpr QLatin1String listRemove("listRemove");

/// Why there is no list as a request is about.
QString listProblem(const QJsonObject& body)
{
    const QString list = textOf(body, "type"_L1);
    const QString id = body.value("id"_L1).toString();
    return Lists::keyMember(list).isEmpty() || !id.isEmpty()
               ? u"there is no list \"%1/%2\""_s.arg(list.left(40), id.left(40))
               : QString();
}

/// The keys that a request names, in its order.
QStringList readKeys(const QJsonObject& body, const QString& list, QString* problem)
{
    const QJsonValue elements = body.value("elements"_L1);
    const QString member = Lists::keyMember(list);
    if (!elements.isArray())
        *problem = u"\"elements\" is missing or no array"_s;
    QStringList keys;
    const QJsonArray array = elements.toArray();
    for (const QJsonValue element : array) {
        const QJsonValue key = element.toObject().value(member);
        if (!key.isString())
            *problem = u"an element without \"%1\""_s.arg(member);
        keys.append(key.toString());
    }
    return keys;
}

/// The start of a transfer: what kind it is, and whose request it answers.
QByteArray transferBody(const QString& list, const QString& cookie)
{
    // Put together by hand: a generic writer would take a fifth of the time that a request for records takes in all.
    const QByteArray named = cookie.isEmpty() ? QByteArray("{") : "{\"cookie\":" + wire::text(cookie) + ',';
    return named + "\"id\":\"\",\"type\":" + wire::text(list) + '}';
}

} // namespace

ListService::ListService(ServiceContext& context, QObject* parent)
    : QObject(parent)
    , m_context(context)
{
    const World* world = &context.world;
    const auto relay = [&](auto signal, QLatin1String type, const QString& list) {
        connect(world, signal, this, [this, type, list](const QString& key) {
            const bool isGone = type == listRemove;
            broadcastElement(type, list, isGone ? Lists::keyJson(list, key) : m_context.lists.element(list, key, {}));
        });
    };
    relay(&World::contactInstalled, listAdd, Lists::platformContact);
    relay(&World::contactUninstalled, listRemove, Lists::platformContact);
    const auto relayBox = [&](auto signal, QLatin1String type, const QString& list) {
        connect(world, signal, this,
                [this, type, list](const QString& key, const QString& owner) { tellBox(type, list, key, owner); });
    };
    relayBox(&World::boxItemAdded, listAdd, Lists::profileBoxItem);
    relayBox(&World::boxItemChanged, listChange, Lists::profileBoxItem);
    relayBox(&World::boxItemRemoved, listRemove, Lists::profileBoxItem);
    relayBox(&World::boxIconAdded, listAdd, Lists::profileBoxImage);
    relayBox(&World::boxIconRemoved, listRemove, Lists::profileBoxImage);
    connect(world, &World::contactChanged, this, &ListService::broadcastContact);
    connect(world, &World::profileChanged, this, [this] {
        broadcastElement(listChange, Lists::global, m_context.lists.element(Lists::global, Lists::platformProfile, {}));
    });
    connect(world, &World::permissionsChanged, this, [this] {
        const auto everyone = m_context.sessions;
        for (const auto& [client, session] : everyone)
            sendPermission(*session);
    });
}

QString ListService::requestAll(Session& session, const QJsonObject& body)
{
    const QString list = textOf(body, "type"_L1);
    const QString problem = listProblem(body);
    if (!problem.isEmpty())
        return problem;
    session.unannounced.remove(list);
    transfer(session, listAll, list, {}, m_context.lists.elements(list, session));
    return {};
}

QString ListService::requestElements(Session& session, const QJsonObject& body)
{
    const QString list = textOf(body, "type"_L1);
    QString problem = listProblem(body);
    if (!problem.isEmpty())
        return problem;
    const QStringList keys = readKeys(body, list, &problem);
    if (!problem.isEmpty())
        return problem;

    QList<QByteArray> elements;
    for (const QString& key : keys) {
        const QByteArray element = m_context.lists.element(list, key, session);
        if (!element.isEmpty())
            elements.append(element);
        else
            problem = u"%1 has no element \"%2\"; it is left out"_s.arg(list, key.left(80));
    }
    transfer(session, listElements, list, body.value("cookie"_L1).toString(), elements);
    return problem;
}

QString ListService::requestRemove(Session& session, const QJsonObject& body)
{
    const QString list = textOf(body, "type"_L1);
    QString problem = listProblem(body);
    if (!problem.isEmpty())
        return problem;
    const bool isItem = list == Lists::profileBoxItem;
    if (!isItem && list != Lists::profileBoxImage)
        return u"applications may not remove from \"%1\""_s.arg(list);
    const QStringList keys = readKeys(body, list, &problem);
    if (!problem.isEmpty())
        return problem;
    const QString owner = m_context.lists.boxOwner(session);
    for (const QString& key : keys) {
        const QString failure =
            isItem ? m_context.world.removeBoxItem(key, owner) : m_context.world.removeBoxIcon(key, owner);
        if (!failure.isEmpty())
            problem = failure;
    }
    return problem;
}

void ListService::announce(Session& session)
{
    const QSet<QString> lists = std::exchange(session.unannounced, {});
    for (const QString& list : Lists::all()) {
        if (!lists.contains(list))
            continue;
        const QList<QByteArray> elements = m_context.lists.elements(list, session);
        // The keyed lists are never sent whole: who mirrors them takes additions as the newest state.
        if (list == Lists::global || list == Lists::platformUser)
            m_context.sendElements(session.client, listAdd, list, elements);
        else
            transfer(session, listAll, list, {}, elements);
    }
}

void ListService::transfer(const Session& session, QLatin1String type, const QString& list, const QString& cookie,
                           const QList<QByteArray>& elements)
{
    m_context.outbox.send(session.client, type, transferBody(list, cookie));
    for (const QByteArray& chunk : wire::packElements(elements, list, true))
        m_context.outbox.send(session.client, listChunk, chunk);
}

void ListService::sendPermission(const Session& session)
{
    const QByteArray element = m_context.lists.element(Lists::global, Lists::permission, session);
    m_context.sendElements(session.client, listChange, Lists::global, {element});
}

void ListService::broadcastElement(QLatin1String type, const QString& list, const QByteArray& element)
{
    if (!m_context.sessions.empty())
        m_context.broadcast(type, wire::packElements({element}, list, false).first());
}

/// To those who see this box.
void ListService::tellBox(QLatin1String type, const QString& list, const QString& key, const QString& owner)
{
    const auto everyone = m_context.sessions;
    for (const auto& [client, session] : everyone) {
        if (m_context.lists.boxOwner(*session) == owner)
            m_context.sendElements(
                client, type, list,
                {type == listRemove ? Lists::keyJson(list, key) : m_context.lists.element(list, key, *session)});
    }
}

void ListService::broadcastContact(const QString& userId, const QJsonObject& difference)
{
    QJsonObject element = difference;
    element.insert(Lists::keyMember(Lists::platformUser), userId);
    broadcastElement(listChange, Lists::platformUser, wire::text(element));
}

} // namespace zelcore
