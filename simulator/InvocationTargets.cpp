// SPDX-License-Identifier: Apache-2.0
#include <simulator/InvocationTargets.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

namespace zelcore {

using vx::system::ObjectServer;

InvocationTargets::InvocationTargets(QObject* parent)
    : QObject(parent)
{
}

InvocationTargets::~InvocationTargets() = default;

bool InvocationTargets::start(const QString& root, QString* error)
{
    for (const QString& target : {QStringLiteral("sys.socialplatform"), QStringLiteral("sys.zel.chathandler")}) {
        auto server = std::make_unique<ObjectServer>();
        if (!server->listen(root + QStringLiteral("/services/invocation/") + target, error)) {
            stop();
            return false;
        }
        connect(server.get(), &ObjectServer::recordReceived, this,
                [this, target](int, const QByteArray& record) { take(target, record); });
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
    const QString named = request.value(QLatin1String("target")).toString();
    if (named != target) {
        Q_EMIT refused(QStringLiteral("%1: %2").arg(
            target, named.isEmpty() ? QStringLiteral("a request of %1 bytes that is not in the form").arg(record.size())
                                    : QStringLiteral("a request for \"%1\"").arg(named.left(80))));
        return;
    }
    const QByteArray data = request.value(QLatin1String("data")).toString().toUtf8();
    const QJsonObject invitation =
        QJsonDocument::fromJson(data).object().value(QLatin1String("contactInvitation")).toObject();
    const QString ecoId = invitation.value(QLatin1String("ecoid")).toString();
    if (!ecoId.isEmpty())
        Q_EMIT invited(ecoId);
    Q_EMIT received(target, request.value(QLatin1String("action")).toString(),
                    request.value(QLatin1String("mimeType")).toString(), data);
}

} // namespace zelcore
