// SPDX-License-Identifier: Apache-2.0
#include <simulator/Registrar.h>

#include <QtCore/QRegularExpression>
#include <QtCore/QTimer>
#include <QtCore/QUuid>

namespace zelcore {

namespace {

bool isUuid(const QString& text)
{
    static const QRegularExpression form(
        QStringLiteral("\\A[0-9a-fA-F]{8}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{12}\\z"));
    return form.match(text).hasMatch() && !QUuid::fromString(text).isNull();
}

} // namespace

Registrar::Registrar(Desk& desk, ListService& lists, QObject* parent)
    : QObject(parent)
    , m_desk(desk)
    , m_lists(lists)
{
}

void Registrar::setPolicy(Simulator::RegistrationPolicy policy, const QString& fixedState, int delay)
{
    m_policy = policy;
    m_outcome = policy == Simulator::RegistrationPolicy::Fixed ? fixedState : QStringLiteral("Success");
    m_delay = qMax(0, delay);
}

QString Registrar::request(Session& session, const QJsonObject& body)
{
    QString uuid;
    QString problem;
    if (!readString(body, QLatin1String("uuid"), &uuid, &problem))
        return problem;
    if (!body.value(QLatin1String("silent")).isBool())
        return QStringLiteral("\"silent\" is missing or neither true nor false");

    const bool silent = body.value(QLatin1String("silent")).toBool();
    session.uuid = uuid;
    if (!isUuid(uuid)) {
        problem = QStringLiteral("\"%1\" is no UUID").arg(uuid.left(80));
        setState(session, QStringLiteral("InvalidUuid"));
    } else if (session.state == QLatin1String("Success")) {
        // Nothing changes, but whoever asks wants to hear.
        m_lists.sendPermission(session);
    } else {
        // A silent request asks the user nothing, so there is nothing to wait for.
        if (!silent)
            setState(session, QStringLiteral("Pending"));
        if (m_policy != Simulator::RegistrationPolicy::Manual && (silent || m_delay == 0))
            setState(session, m_outcome);
        else if (m_policy != Simulator::RegistrationPolicy::Manual)
            QTimer::singleShot(m_delay, this, [this, client = session.client] { conclude(client); });
    }
    Q_EMIT requested(uuid, silent);
    return problem;
}

void Registrar::conclude(int client)
{
    const auto found = m_desk.sessions.find(client);
    if (found == m_desk.sessions.end() || found->second->state != QLatin1String("Pending"))
        return;
    const std::shared_ptr<Session> session = found->second;
    setState(*session, m_outcome);
}

void Registrar::setState(const QString& state)
{
    m_initialState = state;
    const auto everyone = m_desk.sessions;
    for (const auto& [client, session] : everyone)
        setState(*session, state);
    if (everyone.empty())
        Q_EMIT stateChanged(state);
}

void Registrar::setState(Session& session, const QString& state)
{
    session.state = state;
    m_lists.sendPermission(session);
    Q_EMIT stateChanged(state);
}

} // namespace zelcore
