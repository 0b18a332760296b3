// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/ServiceContext.h>
#include <simulator/services/ListService.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>

#include <set>

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
    const QString& outcome() const { return m_outcome; }
    int delay() const { return m_delay; }
    QString request(Session& session, const QJsonObject& body);

    /// The state in which applications begin.
    const QString& initialState() const { return m_initialState; }
    void setState(const QString& state);
    void setState(Session& session, const QString& state);

    /// The UUIDs that the user need not be asked about again, in small letters.
    QStringList registered() const;
    /// Empty, or why not.
    QString setRegistered(const QString& uuid, bool registered);
    /// Takes the UUIDs from a file, where there is one, and keeps them there from now on. Empty, or why not.
    QString remember(const QString& path);
    /// As in the beginning; a file of UUIDs stays as it is.
    void reset();

Q_SIGNALS:
    void requested(const QString& uuid, bool silent);
    void stateChanged(const QString& state);
    /// What is registered could not be kept.
    void forgetful(const QString& why);

private:
    void conclude(int client);
    void changeRegistered(const std::set<QString>& registered);

    ServiceContext& m_context;
    ListService& m_lists;
    QString m_initialState = QStringLiteral("Unregistered");
    Simulator::RegistrationPolicy m_policy = Simulator::RegistrationPolicy::Automatic;
    QString m_outcome = QStringLiteral("Success");
    int m_delay = 0;
    std::set<QString> m_registered; ///< As registered().
    QString m_file;                 ///< Where they are kept; empty when nowhere.
};

} // namespace zelcore
