// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/InvocationTargets.h>

#include <vx/system/ObjectServer.h>

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

bool InvocationTargets::start(const QString& root, QString* error)
{
    for (const QString& target : {socialTarget, u"sys.zel.chathandler"_s}) {
        auto server = std::make_unique<ObjectServer>();
        if (!server->listen(root + u"/services/invocation/"_s + target, error)) {
            stop();
            return false;
        }
        connect(server.get(), &ObjectServer::recordReceived, this,
                [this, target, from = server.get()](int client, const QByteArray& record) {
                    Q_EMIT passed(target, from->processOf(client), record);
                    take(target, record);
                });
        m_servers.push_back(std::move(server));
    }
    return true;
}

void InvocationTargets::stop()
{
    m_servers.clear();
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
