// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/InvocationTargets.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

const QString socialTarget = u"sys.socialplatform"_s;

}

using vx::system::ObjectServer;

InvocationTargets::InvocationTargets(QObject* parent)
    : QObject(parent)
{
}

InvocationTargets::~InvocationTargets() = default;

QStringList InvocationTargets::names()
{
    return {socialTarget, u"sys.zel.chathandler"_s};
}

bool InvocationTargets::start(const QString& root, QString* error)
{
    m_folder = root + u"/services/invocation/"_s;
    for (const QString& target : names()) {
        *error = open(target);
        if (!error->isEmpty()) {
            stop();
            return false;
        }
    }
    return true;
}

void InvocationTargets::stop()
{
    for (const QString& target : names())
        close(target);
    m_folder.clear();
}

QString InvocationTargets::setState(const QString& target, Simulator::TargetState state)
{
    if (!names().contains(target))
        return u"there is no target \"%1\"; there are: %2"_s.arg(target, names().join(", "_L1));
    close(target);
    m_states.insert(target, state);
    return open(target);
}

QString InvocationTargets::open(const QString& target)
{
    QString problem;
    if (m_folder.isEmpty() || state(target) == Simulator::TargetState::Missing)
        return problem;
    if (state(target) == Simulator::TargetState::Refusing) {
        // Nobody ever listens there, so whoever connects is refused.
        QFile closed(m_folder + target);
        if (!QDir().mkpath(m_folder) || !closed.open(QIODevice::WriteOnly))
            return closed.errorString();
        m_closed.insert(target);
        return problem;
    }
    auto server = std::make_unique<ObjectServer>();
    connect(server.get(), &ObjectServer::recordReceived, this,
            [this, target, from = server.get()](int client, const QByteArray& record) {
                Q_EMIT passed(target, from->processOf(client), record);
                take(target, record);
            });
    if (server->listen(m_folder + target, &problem))
        m_servers.emplace(target, std::move(server));
    return problem;
}

void InvocationTargets::close(const QString& target)
{
    m_servers.erase(target);
    if (m_closed.remove(target))
        QFile::remove(m_folder + target);
}

void InvocationTargets::take(const QString& target, const QByteArray& record)
{
    const QJsonObject request = QJsonDocument::fromJson(record).object();
    const QString named = request.value("target"_L1).toString();
    if (named != target) {
        Q_EMIT refused(u"%1: %2"_s.arg(
            target, named.isEmpty() ? u"a request of %1 bytes that is not in the form"_s.arg(record.size())
                                    : u"a request for \"%1\""_s.arg(named.left(80))));
        return;
    }
    const QString action = request.value("action"_L1).toString();
    const QByteArray data = request.value("data"_L1).toString().toUtf8();
    const QJsonObject invitation = QJsonDocument::fromJson(data).object().value("contactInvitation"_L1).toObject();
    const QString ecoId = invitation.value("ecoid"_L1).toString();
    // The chat application, or another request of this one, invites nobody, whatever it is told.
    if (target == socialTarget && action == "vx.action.INVITEZEL"_L1 && !ecoId.isEmpty())
        Q_EMIT invited(ecoId);
    Q_EMIT received(target, action, request.value("mimeType"_L1).toString(), data);
}

} // namespace zelcore
