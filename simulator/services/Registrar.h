// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/ServiceContext.h>
#include <simulator/services/ListService.h>

#include <QtCore/QObject>
#include <QtCore/QSet>

namespace zelcore {

/// Registers applications, as it was told to.
class Registrar : public QObject
{
    Q_OBJECT
public:
    /// \a context and \a lists must outlive it.
    Registrar(ServiceContext& context, ListService& lists, QObject* parent = nullptr);

    void setPolicy(Simulator::RegistrationPolicy policy, const QString& fixedState, int delay);
    Simulator::RegistrationPolicy policy() const { return m_policy; }
    QString request(Session& session, const QJsonObject& body);

    /// The state in which applications begin.
    const QString& initialState() const { return m_initialState; }
    void setState(const QString& state);
    void setState(Session& session, const QString& state);

Q_SIGNALS:
    void requested(const QString& uuid, bool silent);
    void stateChanged(const QString& state);

private:
    void conclude(int client);

    ServiceContext& m_context;
    ListService& m_lists;
    QString m_initialState = QStringLiteral("Unregistered");
    Simulator::RegistrationPolicy m_policy = Simulator::RegistrationPolicy::Automatic;
    QString m_outcome = QStringLiteral("Success");
    int m_delay = 0;
    QSet<QString> m_registered; ///< The UUIDs that the user need not be asked about again.
};

} // namespace zelcore
