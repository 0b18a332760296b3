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

    /// Of those who are meant and connected or expected back; of everybody also of who comes later. What the user need
    /// not be asked again is forgotten for them alone. Empty, or why not.
    QString setRegistrationState(const QString& state, const Addressee& whose);
    /// Of those who are meant, that of the one who connected last; of everybody, where nobody is connected, the one in
    /// which applications begin. Empty, with a sentence in \a problem, when nobody is meant.
    QString registrationState(const Addressee& whose, QString* problem) const;
    /// To those who are meant. Empty, or why not.
    QString sendMessage(const QString& type, const QJsonObject& body, const Addressee& whose);
    QString sendRecord(const QByteArray& record, const Addressee& whose);
    /// The next request of this type that is in the form is refused.
    void refuseNext(const QString& type, const QString& why, const Addressee& whose);
    /// As in the beginning, but for the world.
    void reset();
    Registrar& registrar() { return m_registrar; }
    ServiceContext& context() { return m_context; }
    const ServiceContext& context() const { return m_context; }

Q_SIGNALS:
    void messageReceived(int client, const QString& type, const QByteArray& json);
    void refused(const QString& line);

private:
    void settle(Session& session);
    QList<std::shared_ptr<Session>> meant(const Addressee& whose) const;
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
