// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/services/ServiceContext.h>

#include <QtCore/QObject>

namespace zelcore {

/// Answers requests for lists and elements, and tells applications of every change of the world.
class ListService : public QObject
{
    Q_OBJECT
public:
    /// \a context must outlive it.
    explicit ListService(ServiceContext& context, QObject* parent = nullptr);

    QString requestAll(Session& session, const QJsonObject& body);
    QString requestElements(Session& session, const QJsonObject& body);
    QString requestRemove(Session& session, const QJsonObject& body);

    /// Tells an application that came back the lists that it has not asked for itself meanwhile.
    void announce(Session& session);
    /// Tells one application of its permissions and registration.
    void sendPermission(const Session& session);

private:
    void transfer(const Session& session, QLatin1String type, const QString& list, const QString& cookie,
                  const QList<QByteArray>& elements);
    void broadcastElement(QLatin1String type, const QString& list, const QByteArray& element);
    void tellBox(QLatin1String type, const QString& list, const QString& key, const QString& owner);
    void broadcastContact(const QString& userId, const QJsonObject& difference);

    ServiceContext& m_context;
};

} // namespace zelcore
