// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QList>
#include <QtCore/QObject>

namespace vx::system {
class ObjectServer;
}

namespace zelcore {

/// The way out to the applications, with the mishaps that were ordered for it.
class Outbox : public QObject
{
    Q_OBJECT
public:
    /// \a server must outlive the outbox.
    explicit Outbox(vx::system::ObjectServer& server, QObject* parent = nullptr);

    /// Sends the message {"TYPE":BODY}. A client that is gone is nobody's fault and silently skipped.
    void send(int client, QLatin1String type, const QByteArray& body);
    /// The same for a message whose whole text there is.
    void sendJson(int client, const QString& type, const QByteArray& json);
    /// Sends bytes as they are; faults do not apply.
    void sendRecord(int client, const QByteArray& record);

    void addFault(Simulator::Fault fault, int amount, const QString& type);

Q_SIGNALS:
    void sent(int client, const QString& type, const QByteArray& json);
    void passed(int client, const QByteArray& record);
    void lost(int client, const QString& why);

private:
    struct OrderedFault
    {
        Simulator::Fault fault;
        int amount;
        QString type; ///< Empty for any message.
    };

    void suffer(const OrderedFault& ordered, int client, const QByteArray& record);

    vx::system::ObjectServer& m_server;
    QList<OrderedFault> m_faults;
};

} // namespace zelcore
