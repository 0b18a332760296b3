// SPDX-License-Identifier: Apache-2.0
#include <simulator/services/Registrar.h>

#include <QtCore/QFile>
#include <QtCore/QRegularExpression>
#include <QtCore/QSaveFile>
#include <QtCore/QTimer>
#include <QtCore/QUuid>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

bool isUuid(const QString& text)
{
    static const QRegularExpression form(
        u"\\A[0-9a-fA-F]{8}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{4}-[0-9a-fA-F]{12}\\z"_s);
    return form.match(text).hasMatch() && !QUuid::fromString(text).isNull();
}

} // namespace

Registrar::Registrar(ServiceContext& context, ListService& lists, QObject* parent)
    : QObject(parent)
    , m_context(context)
    , m_lists(lists)
{
}

void Registrar::setPolicy(Simulator::RegistrationPolicy policy, const QString& fixedState, int delay)
{
    m_policy = policy;
    m_outcome = policy == Simulator::RegistrationPolicy::Fixed ? fixedState : u"Success"_s;
    m_delay = qMax(0, delay);
}

QString Registrar::request(Session& session, const QJsonObject& body)
{
    const QString uuid = textOf(body, "uuid"_L1);
    QString problem;
    if (!body.value("silent"_L1).isBool())
        return u"\"silent\" is missing or neither true nor false"_s;

    const bool silent = body.value("silent"_L1).toBool();
    session.uuid = uuid;
    if (!isUuid(uuid)) {
        problem = u"\"%1\" is no UUID"_s.arg(uuid.left(80));
        setState(session, u"InvalidUuid"_s);
    } else if (session.state == "Success"_L1) {
        // Nothing changes, but whoever asks wants to hear.
        m_lists.sendPermission(session);
    } else if (m_policy == Simulator::RegistrationPolicy::Automatic && m_registered.contains(uuid.toLower())) {
        setState(session, m_outcome);
    } else {
        // A silent request asks the user nothing, so there is nothing to wait for.
        if (!silent)
            setState(session, u"Pending"_s);
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
    const auto found = m_context.sessions.find(client);
    if (found == m_context.sessions.end() || found->second->state != "Pending"_L1)
        return;
    const std::shared_ptr<Session> session = found->second;
    setState(*session, m_outcome);
}

void Registrar::setState(const QString& state)
{
    m_initialState = state;
    changeRegistered({});
    const auto everyone = m_context.sessions;
    for (const auto& [client, session] : everyone)
        setState(*session, state);
    if (everyone.empty())
        Q_EMIT stateChanged(state);
}

void Registrar::setState(Session& session, const QString& state)
{
    session.state = state;
    if (state == "Success"_L1)
        setRegistered(session.uuid, true);
    m_lists.sendPermission(session);
    Q_EMIT stateChanged(state);
}

// --- What is remembered -----------------------------------------------------------------------------------------

QStringList Registrar::registered() const
{
    return {m_registered.cbegin(), m_registered.cend()};
}

QString Registrar::setRegistered(const QString& uuid, bool registered)
{
    if (!isUuid(uuid))
        return u"\"%1\" is no UUID"_s.arg(uuid.left(80));
    std::set<QString> changed = m_registered;
    changed.erase(uuid.toLower());
    if (registered)
        changed.insert(uuid.toLower());
    changeRegistered(changed);
    return {};
}

QString Registrar::remember(const QString& path)
{
    std::set<QString> read = m_registered;
    QFile file(path);
    if (file.exists() && !file.open(QIODevice::ReadOnly))
        return u"%1: %2"_s.arg(path, file.errorString());
    for (int line = 1; file.isOpen() && !file.atEnd(); ++line) {
        const QString uuid = QString::fromUtf8(file.readLine()).trimmed();
        if (!isUuid(uuid))
            return u"%1: line %2: \"%3\" is no UUID"_s.arg(path, QString::number(line), uuid.left(80));
        read.insert(uuid.toLower());
    }
    m_file = path;
    m_registered.clear();
    changeRegistered(read);
    return {};
}

void Registrar::changeRegistered(const std::set<QString>& registered)
{
    if (registered == m_registered)
        return;
    m_registered = registered;
    if (m_file.isEmpty())
        return;
    QByteArray lines;
    for (const QString& uuid : registered)
        lines += uuid.toLatin1() + '\n';
    QSaveFile file(m_file);
    if (!file.open(QIODevice::WriteOnly) || file.write(lines) < 0 || !file.commit())
        Q_EMIT forgetful(u"%1: %2"_s.arg(m_file, file.errorString()));
}

void Registrar::reset()
{
    m_file.clear();
    m_registered.clear();
    m_initialState = u"Unregistered"_s;
    setPolicy(Simulator::RegistrationPolicy::Automatic, QString(), 0);
}

} // namespace zelcore
