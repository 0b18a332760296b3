// SPDX-License-Identifier: Apache-2.0
#include <simulator/ListService.h>

#include <simulator/Wire.h>

#include <QtCore/QJsonArray>

#include <utility>

namespace zelcore {

namespace {

constexpr QLatin1String listAll("listAll");
constexpr QLatin1String listElements("listElements");
constexpr QLatin1String listChunk("listChunk");
constexpr QLatin1String listAdd("listAdd");
constexpr QLatin1String listChange("listChange");
constexpr QLatin1String listRemove("listRemove");

/// Reads which list a request is about.
bool readList(const QJsonObject& body, QString* list, QString* problem)
{
    if (!readString(body, QLatin1String("type"), list, problem))
        return false;
    const QString id = body.value(QLatin1String("id")).toString();
    if (Lists::keyMember(*list).isEmpty() || !id.isEmpty())
        *problem = QStringLiteral("there is no list \"%1/%2\"").arg(list->left(40), id.left(40));
    return problem->isEmpty();
}

/// The keys that a request names, in its order.
QStringList readKeys(const QJsonObject& body, const QString& list, QString* problem)
{
    const QJsonValue elements = body.value(QLatin1String("elements"));
    const QString member = Lists::keyMember(list);
    if (!elements.isArray())
        *problem = QStringLiteral("\"elements\" is missing or no array");
    QStringList keys;
    const QJsonArray array = elements.toArray();
    for (const QJsonValue element : array) {
        const QJsonValue key = element.toObject().value(member);
        if (!key.isString())
            *problem = QStringLiteral("an element without \"%1\"").arg(member);
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

ListService::ListService(Desk& desk, QObject* parent)
    : QObject(parent)
    , m_desk(desk)
{
    const World* world = &desk.world;
    connect(world, &World::permissionsChanged, this, [this] {
        const auto everyone = m_desk.sessions;
        for (const auto& [client, session] : everyone)
            sendPermission(*session);
    });
    connect(world, &World::profileChanged, this, [this] {
        broadcastElement(listChange, Lists::global, m_desk.lists.element(Lists::global, Lists::platformProfile, {}));
    });
    connect(world, &World::contactInstalled, this, [this](const QString& userId) {
        broadcastElement(listAdd, Lists::platformContact, Lists::keyJson(Lists::platformContact, userId));
    });
    connect(world, &World::contactUninstalled, this, [this](const QString& userId) {
        broadcastElement(listRemove, Lists::platformContact, Lists::keyJson(Lists::platformContact, userId));
    });
    connect(world, &World::contactChanged, this, &ListService::broadcastContact);
    connect(world, &World::boxItemAdded, this,
            [this](const BoxItem& item) { broadcastElement(listAdd, Lists::profileBoxItem, Lists::itemJson(item)); });
    connect(world, &World::boxItemChanged, this, [this](const BoxItem& item) {
        broadcastElement(listChange, Lists::profileBoxItem, Lists::itemJson(item));
    });
    connect(world, &World::boxItemRemoved, this, [this](const QString& id) {
        broadcastElement(listRemove, Lists::profileBoxItem, Lists::keyJson(Lists::profileBoxItem, id));
    });
    connect(world, &World::boxIconAdded, this,
            [this](const BoxIcon& icon) { broadcastElement(listAdd, Lists::profileBoxImage, Lists::iconJson(icon)); });
    connect(world, &World::boxIconRemoved, this, [this](const QString& id) {
        broadcastElement(listRemove, Lists::profileBoxImage, Lists::keyJson(Lists::profileBoxImage, id));
    });
}

QString ListService::requestAll(Session& session, const QJsonObject& body)
{
    QString problem;
    QString list;
    if (!readList(body, &list, &problem))
        return problem;
    session.unannounced.remove(list);
    m_desk.outbox.send(session.client, listAll, transferBody(list, {}));
    for (const QByteArray& chunk : wire::packElements(m_desk.lists.elements(list, session.state), list, true))
        m_desk.outbox.send(session.client, listChunk, chunk);
    return {};
}

QString ListService::requestElements(Session& session, const QJsonObject& body)
{
    QString problem;
    QString list;
    if (!readList(body, &list, &problem))
        return problem;
    const QStringList keys = readKeys(body, list, &problem);
    if (!problem.isEmpty())
        return problem;

    session.unannounced.remove(list);
    QList<QByteArray> elements;
    elements.reserve(keys.size());
    for (const QString& key : keys) {
        const QByteArray element = m_desk.lists.element(list, key, session.state);
        if (!element.isEmpty())
            elements.append(element);
        else
            problem = QStringLiteral("%1 has no element \"%2\"; it is left out").arg(list, key.left(80));
    }
    const QString cookie = body.value(QLatin1String("cookie")).toString();
    m_desk.outbox.send(session.client, listElements, transferBody(list, cookie));
    for (const QByteArray& chunk : wire::packElements(elements, list, true))
        m_desk.outbox.send(session.client, listChunk, chunk);
    return problem;
}

QString ListService::requestRemove(Session&, const QJsonObject& body)
{
    QString problem;
    QString list;
    if (!readList(body, &list, &problem))
        return problem;
    const bool isItem = list == Lists::profileBoxItem;
    if (!isItem && list != Lists::profileBoxImage)
        return QStringLiteral("applications may not remove from \"%1\"").arg(list);
    const QStringList keys = readKeys(body, list, &problem);
    if (!problem.isEmpty())
        return problem;
    for (const QString& key : keys) {
        const QString failure = isItem ? m_desk.world.removeBoxItem(key) : m_desk.world.removeBoxIcon(key);
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
        const QList<QByteArray> elements = m_desk.lists.elements(list, session.state);
        // The keyed lists are never sent whole: who mirrors them takes additions as the newest state.
        if (list == Lists::global || list == Lists::platformUser) {
            m_desk.sendElements(session.client, listAdd, list, elements);
            continue;
        }
        m_desk.outbox.send(session.client, listAll, transferBody(list, {}));
        for (const QByteArray& chunk : wire::packElements(elements, list, true))
            m_desk.outbox.send(session.client, listChunk, chunk);
    }
}

void ListService::sendPermission(const Session& session)
{
    const QByteArray element = m_desk.lists.element(Lists::global, Lists::permission, session.state);
    m_desk.sendElements(session.client, listChange, Lists::global, {element});
}

void ListService::broadcastElement(QLatin1String type, const QString& list, const QByteArray& element)
{
    if (!m_desk.sessions.empty())
        m_desk.broadcast(type, wire::packElements({element}, list, false).first());
}

void ListService::broadcastContact(const QString& userId, const QJsonObject& difference)
{
    QJsonObject element = difference;
    element.insert(Lists::keyMember(Lists::platformUser), userId);
    broadcastElement(listChange, Lists::platformUser, wire::text(element));
}

} // namespace zelcore
