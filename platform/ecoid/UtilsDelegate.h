// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <platform/channel/ToldLast.h>
#include <vx/platform/zel/EcoIdStatus.h>

#include <QtCore/QObject>
#include <QtCore/QString>

namespace vx::platform::zel {

/// Eco identifiers, invitations and chats for all Utils of the process. Made and owned by the bridge; lives on its
/// thread. A slot of its signals may do anything.
class UtilsDelegate : public QObject
{
    Q_OBJECT

public:
    UtilsDelegate(Services* services, QObject* parent);

    bool ecoIdRequest(const QString& ppId);
    bool ecoIdStatusRequest(const QString& ecoId);
    bool sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message)
    {
        return m_services->messaging()->sendZELInvite(ecoId, displayName, message);
    }
    bool invokeChat(const QString& ecoId) { return m_services->messaging()->invokeChat(ecoId); }

    void notifyEcoIdResponse(const QString& ppId, const QString& ecoId);
    void notifyEcoIdStatusResponse(const QString& ecoId, const QString& status);

    /// What was told last of the one whom ecoIdUpdated() or ecoIdStatusUpdated() is about.
    QString toldEcoId(const QString& ppId) const { return m_toldEcoIds.of(ppId); }
    EcoIdStatus::Type toldStatus(const QString& ecoId) const { return m_toldStatuses.of(ecoId); }

Q_SIGNALS:
    void ecoIdUpdated(const QString& ppId, const QString& ecoId);
    void ecoIdStatusUpdated(const QString& ecoId, vx::platform::zel::EcoIdStatus::Type status);

private:
    Services* const m_services;
    ToldLast<QString, QString> m_toldEcoIds;
    ToldLast<QString, EcoIdStatus::Type> m_toldStatuses;
};

} // namespace vx::platform::zel
