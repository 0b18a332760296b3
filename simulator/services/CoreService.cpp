// SPDX-License-Identifier: Apache-2.0
#include <simulator/services/CoreService.h>

#include <simulator/wire/Wire.h>

#include <QtCore/QTimer>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// How long an application that connects may be silent before it is taken for one that comes back, in milliseconds:
/// long enough for the first words of one that runs slowly, in a debugger say, and short beside the second within which
/// an application is to find a service that came back.
constexpr int silence = 200;

QString missingText(const RequestHandler& handler, const QJsonObject& body)
{
    for (const QString& key : QString::fromLatin1(handler.texts).split(u' ', Qt::SkipEmptyParts)) {
        const QJsonValue member = body.value(key);
        if (!member.isString())
            return u"\"%1\" is %2"_s.arg(key, member.isUndefined() ? u"missing"_s : u"no string"_s);
    }
    return {};
}

/// Empty when there \a isAnybody who is meant.
QString nobodyProblem(bool isAnybody)
{
    return isAnybody ? QString() : u"no such application is connected"_s;
}

} // namespace

CoreService::CoreService(World& world, Outbox& outbox, QObject* parent)
    : QObject(parent)
    , m_context(world, outbox)
    , m_lists(m_context)
    , m_registrar(m_context, m_lists)
    , m_profiles(m_context)
{
    const auto bind = [](const char* texts, auto& service, auto operation) -> RequestHandler {
        return {texts, [&service, operation](Session& session, const QJsonObject& body) {
                    return (service.*operation)(session, body);
                }};
    };
    m_handlers = {
        // Which kind of library it is makes no difference here.
        {u"tpaApi"_s, {"", [](Session&, const QJsonObject&) { return QString(); }}},
        {u"registrationRequest"_s, bind("uuid", m_registrar, &Registrar::request)},
        {u"requestListAll"_s, bind("type", m_lists, &ListService::requestAll)},
        {u"requestListElements"_s, bind("type", m_lists, &ListService::requestElements)},
        {u"requestListRemove"_s, bind("type", m_lists, &ListService::requestRemove)},
        {u"requestListChange"_s, bind("type", m_profiles, &ProfileService::requestChange)},
        {u"requestUserAvatar"_s, bind("userId streamId", m_profiles, &ProfileService::requestUserPicture)},
        {u"createProfileBoxItem"_s, bind("text cookie", m_profiles, &ProfileService::createBoxItem)},
        {u"createProfileBoxImage"_s, bind("imageHash imageId", m_profiles, &ProfileService::createBoxIcon)},
        {u"requestProfileBoxImage"_s, bind("streamId imageId", m_profiles, &ProfileService::requestBoxIcon)},
        {u"stream"_s, bind("id value", m_profiles, &ProfileService::stream)},
        {u"requestEcoId"_s, bind("ppid", *this, &CoreService::requestEcoId)},
        {u"requestEcoIdStatus"_s, bind("ecoId", *this, &CoreService::requestEcoIdStatus)},
    };
}

void CoreService::connected(int client, qint64 process)
{
    auto session = std::make_shared<Session>();
    session->client = client;
    session->process = process;
    session->state = m_registrar.initialState();
    session->unannounced = QSet<QString>(Lists::all().cbegin(), Lists::all().cend());
    m_context.sessions.emplace(client, session);
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
    m_context.sessions.erase(client);
}

void CoreService::suspend()
{
    m_suspended.removeIf(
        [](const Session& session) { return ::kill(pid_t(session.process), 0) != 0 && errno == ESRCH; });
    for (const auto& [client, session] : std::exchange(m_context.sessions, {})) {
        settle(*session);
        m_suspended.append(*session);
    }
}

void CoreService::settle(Session& session)
{
    if (std::exchange(session.settled, true))
        return;
    // Connections have no names. A process that comes back is one that left; its several connections in the same order.
    const auto former = std::find_if(m_suspended.cbegin(), m_suspended.cend(),
                                     [&](const Session& left) { return left.process == session.process; });
    if (former == m_suspended.cend())
        return;
    session.uuid = former->uuid;
    session.state = former->state;
    m_suspended.erase(former);
}

void CoreService::received(int client, const QByteArray& record)
{
    const auto found = m_context.sessions.find(client);
    if (found == m_context.sessions.end())
        return;
    const std::shared_ptr<Session> session = found->second;

    QString problem;
    const std::optional<wire::Message> message = wire::parse(record, &problem);
    if (message && message->type == "tpaApi"_L1 && !session->settled) {
        session->settled = true;
        session->unannounced.clear();
    }
    settle(*session);
    if (!message) {
        Q_EMIT messageReceived(client, QString(), QByteArray());
        refuse(client, u"a record of %1 bytes"_s.arg(record.size()), problem);
        return;
    }

    Q_EMIT messageReceived(client, message->type, message->json);
    const auto handler = m_handlers.constFind(message->type);
    problem = handler == m_handlers.cend() ? u"no such message is known"_s : missingText(*handler, message->body);
    if (problem.isEmpty()) {
        problem = takeRefusal(message->type, *session);
        if (problem.isEmpty())
            problem = handler->answer(*session, message->body);
        else if (message->type == "requestListChange"_L1)
            m_profiles.refuseChange(*session, problem); // the only one of which an application hears
    }
    if (!problem.isEmpty())
        refuse(client, message->type, problem);
}

void CoreService::refuseNext(const QString& type, const QString& why, const Addressee& whose)
{
    m_refusals.append({type, why.isEmpty() ? u"it was told to refuse this"_s : why, whose});
}

/// Why a request is refused although nothing is wrong with it; empty when it is not.
QString CoreService::takeRefusal(const QString& type, const Session& session)
{
    const auto ordered = std::find_if(m_refusals.cbegin(), m_refusals.cend(), [&](const Refusal& refusal) {
        return refusal.type == type && refusal.whose.isMeant(session.client, session.uuid);
    });
    if (ordered == m_refusals.cend())
        return {};
    const QString why = ordered->why;
    m_refusals.erase(ordered);
    return why;
}

void CoreService::reset()
{
    m_refusals.clear();
    m_suspended.clear();
    m_registrar.reset();
}

/// The connected ones, in the order in which they came, as they are now: whoever watches what they are sent may make
/// applications come and go.
QList<std::shared_ptr<Session>> CoreService::meant(const Addressee& whose) const
{
    QList<std::shared_ptr<Session>> found;
    for (const auto& [client, session] : m_context.sessions) {
        if (whose.isMeant(client, session->uuid))
            found.append(session);
    }
    return found;
}

QString CoreService::setRegistrationState(const QString& state, const Addressee& whose)
{
    bool isAnybody = whose.isEverybody();
    const auto forget = [&](const Session& session) {
        if (state != "Success"_L1)
            m_registrar.setRegistered(session.uuid, false);
    };
    for (Session& session : m_suspended) {
        if (whose.isMeant(session.client, session.uuid)) {
            isAnybody = true;
            session.state = state;
            forget(session);
        }
    }
    if (whose.isEverybody()) {
        m_registrar.setState(state);
        return {};
    }
    for (const auto& session : meant(whose)) {
        isAnybody = true;
        forget(*session);
        m_registrar.setState(*session, state);
    }
    return nobodyProblem(isAnybody);
}

QString CoreService::registrationState(const Addressee& whose, QString* problem) const
{
    const QList<std::shared_ptr<Session>> sessions = meant(whose);
    if (!sessions.isEmpty())
        return sessions.last()->state;
    *problem = nobodyProblem(whose.isEverybody());
    return whose.isEverybody() ? m_registrar.initialState() : QString();
}

QString CoreService::sendMessage(const QString& type, const QJsonObject& body, const Addressee& whose)
{
    const QByteArray json = wire::text(QJsonObject{{type, body}});
    const QList<std::shared_ptr<Session>> sessions = meant(whose);
    for (const auto& session : sessions)
        m_context.outbox.sendJson(session->client, type, json);
    return nobodyProblem(whose.isEverybody() || !sessions.isEmpty());
}

QString CoreService::sendRecord(const QByteArray& record, const Addressee& whose)
{
    const QList<std::shared_ptr<Session>> sessions = meant(whose);
    for (const auto& session : sessions)
        m_context.outbox.sendRecord(session->client, record);
    return nobodyProblem(whose.isEverybody() || !sessions.isEmpty());
}

void CoreService::refuse(int client, const QString& type, const QString& why)
{
    Q_EMIT refused(u"application %1: %2: %3"_s.arg(QString::number(client), type.left(60), why));
}

QString CoreService::requestEcoId(Session& session, const QJsonObject& body)
{
    const QString ppId = textOf(body, "ppid"_L1);
    const QJsonObject answer{{u"ppid"_s, ppId}, {u"ecoId"_s, m_context.world.ecoId(ppId)}};
    m_context.outbox.send(session.client, "requestEcoIdResponse"_L1, wire::text(answer));
    return {};
}

QString CoreService::requestEcoIdStatus(Session& session, const QJsonObject& body)
{
    const QString ecoId = textOf(body, "ecoId"_L1);
    const QJsonObject answer{{u"ecoId"_s, ecoId}, {u"status"_s, m_context.world.ecoIdStatus(ecoId)}};
    m_context.outbox.send(session.client, "requestEcoIdStatusResponse"_L1, wire::text(answer));
    return {};
}

} // namespace zelcore
