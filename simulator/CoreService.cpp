// SPDX-License-Identifier: Apache-2.0
#include <simulator/CoreService.h>

#include <simulator/Wire.h>

#include <QtCore/QTimer>

#include <utility>

namespace zelcore {

namespace {

/// How long an application that connects may be silent before it is taken for one that comes back, in milliseconds:
/// long enough for the first words of one that runs slowly, in a debugger say, and short beside the second within which
/// an application is to find a service that came back.
constexpr int silence = 200;

} // namespace

CoreService::CoreService(World& world, Outbox& outbox, QObject* parent)
    : QObject(parent)
    , m_desk(world, outbox)
    , m_lists(m_desk)
    , m_registrar(m_desk, m_lists)
    , m_profiles(m_desk)
{
    const auto bind = [](auto& service, auto operation) -> RequestHandler {
        return [&service, operation](Session& session, const QJsonObject& body) {
            return (service.*operation)(session, body);
        };
    };
    m_handlers = {
        // Which kind of library it is makes no difference here.
        {QStringLiteral("tpaApi"), [](Session&, const QJsonObject&) { return QString(); }},
        {QStringLiteral("registrationRequest"), bind(m_registrar, &Registrar::request)},
        {QStringLiteral("requestListAll"), bind(m_lists, &ListService::requestAll)},
        {QStringLiteral("requestListElements"), bind(m_lists, &ListService::requestElements)},
        {QStringLiteral("requestListRemove"), bind(m_lists, &ListService::requestRemove)},
        {QStringLiteral("requestListChange"), bind(m_profiles, &ProfileService::requestChange)},
        {QStringLiteral("requestUserAvatar"), bind(m_profiles, &ProfileService::requestUserPicture)},
        {QStringLiteral("createProfileBoxItem"), bind(m_profiles, &ProfileService::createBoxItem)},
        {QStringLiteral("createProfileBoxImage"), bind(m_profiles, &ProfileService::createBoxIcon)},
        {QStringLiteral("requestProfileBoxImage"), bind(m_profiles, &ProfileService::requestBoxIcon)},
        {QStringLiteral("stream"), bind(m_profiles, &ProfileService::stream)},
        {QStringLiteral("requestEcoId"), bind(*this, &CoreService::requestEcoId)},
        {QStringLiteral("requestEcoIdStatus"), bind(*this, &CoreService::requestEcoIdStatus)},
    };
}

void CoreService::connected(int client)
{
    auto session = std::make_shared<Session>();
    session->client = client;
    session->state = m_registrar.initialState();
    session->unannounced = QSet<QString>(Lists::all().cbegin(), Lists::all().cend());
    m_desk.sessions.emplace(client, session);
    QTimer::singleShot(silence, this, [this, weak = std::weak_ptr<Session>(session)] {
        const std::shared_ptr<Session> waiting = weak.lock();
        if (!waiting)
            return;
        settle(*waiting);
        m_lists.announce(*waiting);
    });
}

void CoreService::disconnected(int client)
{
    m_desk.sessions.erase(client);
}

void CoreService::suspend()
{
    for (const auto& [client, session] : m_desk.sessions) {
        settle(*session);
        m_suspended.append(*session);
    }
    m_desk.sessions.clear();
}

void CoreService::settle(Session& session)
{
    if (std::exchange(session.settled, true) || m_suspended.isEmpty())
        return;
    // Connections have no names: those who come back are taken to be those who left, in the same order.
    const Session former = m_suspended.takeFirst();
    session.uuid = former.uuid;
    session.state = former.state;
}

void CoreService::received(int client, const QByteArray& record)
{
    const auto found = m_desk.sessions.find(client);
    if (found == m_desk.sessions.end())
        return;
    const std::shared_ptr<Session> session = found->second;

    QString problem;
    const std::optional<wire::Message> message = wire::parse(record, &problem);
    if (message && message->type == QLatin1String("tpaApi") && !session->settled) {
        session->settled = true;
        session->unannounced.clear();
    }
    settle(*session);
    if (!message) {
        Q_EMIT messageReceived(client, QString(), QByteArray());
        refuse(client, QStringLiteral("a record of %1 bytes").arg(record.size()), problem);
        return;
    }

    Q_EMIT messageReceived(client, message->type, message->json);
    const auto handler = m_handlers.constFind(message->type);
    problem =
        handler == m_handlers.cend() ? QStringLiteral("no such message is known") : (*handler)(*session, message->body);
    if (!problem.isEmpty())
        refuse(client, message->type, problem);
}

void CoreService::refuse(int client, const QString& type, const QString& why)
{
    Q_EMIT refused(QStringLiteral("application %1: %2: %3").arg(QString::number(client), type.left(60), why));
}

void CoreService::setRegistrationState(const QString& state)
{
    for (Session& session : m_suspended)
        session.state = state;
    m_registrar.setState(state);
}

QString CoreService::registrationState() const
{
    return m_desk.sessions.empty() ? m_registrar.initialState() : m_desk.sessions.rbegin()->second->state;
}

QString CoreService::requestEcoId(Session& session, const QJsonObject& body)
{
    QString ppId;
    QString problem;
    if (!readString(body, QLatin1String("ppid"), &ppId, &problem))
        return problem;
    const QJsonObject answer{{QStringLiteral("ppid"), ppId}, {QStringLiteral("ecoId"), m_desk.world.ecoId(ppId)}};
    m_desk.outbox.send(session.client, QLatin1String("requestEcoIdResponse"), wire::text(answer));
    return {};
}

QString CoreService::requestEcoIdStatus(Session& session, const QJsonObject& body)
{
    QString ecoId;
    QString problem;
    if (!readString(body, QLatin1String("ecoId"), &ecoId, &problem))
        return problem;
    const QJsonObject answer{{QStringLiteral("ecoId"), ecoId},
                             {QStringLiteral("status"), m_desk.world.ecoIdStatus(ecoId)}};
    m_desk.outbox.send(session.client, QLatin1String("requestEcoIdStatusResponse"), wire::text(answer));
    return {};
}

} // namespace zelcore
