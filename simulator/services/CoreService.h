// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/ServiceContext.h>
#include <simulator/services/ListService.h>
#include <simulator/services/ProfileService.h>
#include <simulator/services/Registrar.h>
#include <simulator/wire/Addressee.h>

#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QObject>

namespace zelcore {

/// The protocol: one session per connected application, and who answers which message.
///
/// An application that starts says so with its first message, "tpaApi". One that says nothing, or begins with
/// something else, was connected before this service came back: it is told everything anew, but for the lists that it
/// asks for by itself.
class CoreService : public QObject
{
    Q_OBJECT
public:
    /// \a world and \a outbox must outlive it.
    CoreService(World& world, Outbox& outbox, QObject* parent = nullptr);

    /// \a process is the number of the application's process.
    void connected(int client, qint64 process);
    void disconnected(int client);
    void received(int client, const QByteArray& record);
    /// All applications are gone at once because the service goes away; those that come back keep their registration.
    void suspend();

    /// Of everybody: who is connected, who is expected back, who comes later.
    void setRegistrationState(const QString& state);
    /// Of those who are meant and connected or expected back; what the user need not be asked again is not forgotten
    /// for others. Empty, or why not.
    QString setRegistrationState(const QString& state, const Addressee& whose);
    /// Null when nobody who is connected is meant.
    const Session* find(const Addressee& whose) const;
    /// The next request of this type that is in the form is refused.
    void refuseNext(const QString& type, const QString& why, const Addressee& whose);
    /// As in the beginning, but for the world.
    void reset();
    Registrar& registrar() { return m_registrar; }
    ServiceContext& context() { return m_context; }
    const ServiceContext& context() const { return m_context; }
    /// The state of the application that connected last.
    QString registrationState() const;

Q_SIGNALS:
    void messageReceived(int client, const QString& type, const QByteArray& json);
    void refused(const QString& line);

private:
    void settle(Session& session);
    QString takeRefusal(const QString& type, const Session& session);
    void refuse(int client, const QString& type, const QString& why);
    QString requestEcoId(Session& session, const QJsonObject& body);
    QString requestEcoIdStatus(Session& session, const QJsonObject& body);

    ServiceContext m_context;
    ListService m_lists;
    Registrar m_registrar;
    ProfileService m_profiles;
    QHash<QString, RequestHandler> m_handlers;
    struct Refusal
    {
        QString type;
        QString why;
        Addressee whose;
    };
    QList<Refusal> m_refusals;
    QList<Session> m_suspended; ///< In the order in which they had connected.
};

} // namespace zelcore
