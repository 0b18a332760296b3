// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/wire/Way.h>

#include <QtCore/QObject>

namespace vx::system {
class ObjectServer;
}

namespace zelcore {

/// The way out to the applications.
class Outbox : public QObject
{
    Q_OBJECT
public:
    /// \a server must outlive the outbox, and what \a uuidOf needs.
    Outbox(vx::system::ObjectServer& server, Way::UuidOf uuidOf, QObject* parent = nullptr);

    /// Sends the message {"TYPE":BODY}. A client that is gone is nobody's fault and silently skipped.
    void send(int client, QLatin1String type, const QByteArray& body);
    /// The same for a message whose whole text there is.
    void sendJson(int client, const QString& type, const QByteArray& json);
    /// Sends bytes as they are; faults do not apply.
    void sendRecord(int client, const QByteArray& record) { m_way.passAsItIs(client, record); }

    Way& way() { return m_way; }

Q_SIGNALS:
    void sent(int client, const QString& type, const QByteArray& json);
    void passed(int client, const QByteArray& record);
    void lost(int client, const QString& why);

private:
    void deliver(int client, const QByteArray& record);

    vx::system::ObjectServer& m_server;
    Way m_way;
};

} // namespace zelcore
