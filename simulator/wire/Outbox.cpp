// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Outbox.h>

#include <simulator/wire/Wire.h>

#include <vx/system/ObjectServer.h>

#include <utility>

using namespace Qt::StringLiterals;

namespace zelcore {

Outbox::Outbox(vx::system::ObjectServer& server, Way::UuidOf uuidOf, QObject* parent)
    : QObject(parent)
    , m_server(server)
    , m_way([this](int client, const QByteArray& record) { deliver(client, record); }, std::move(uuidOf))
{
}

void Outbox::send(int client, QLatin1String type, const QByteArray& body)
{
    sendJson(client, QString(type), wire::envelope(type, body));
}

void Outbox::sendJson(int client, const QString& type, const QByteArray& json)
{
    Q_EMIT sent(client, type, json);
    m_way.pass(client, type, wire::record(json));
}

void Outbox::deliver(int client, const QByteArray& record)
{
    if (m_server.send(client, record))
        Q_EMIT passed(client, record);
    else if (m_server.clients().contains(client))
        Q_EMIT lost(client, u"a record of %1 bytes could not be sent"_s.arg(record.size()));
}

} // namespace zelcore
