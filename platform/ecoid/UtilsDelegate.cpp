// SPDX-License-Identifier: Apache-2.0
#include <platform/ecoid/UtilsDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>

namespace vx::platform::zel {

UtilsDelegate::UtilsDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
    qCDebug(lcPlatform) << "inside UtilsDelegate::UtilsDelegate";
}

bool UtilsDelegate::ecoIdRequest(const QString& ppId)
{
    qCDebug(lcPlatform) << "UtilsDelegate::ecoIdRequest";
    m_services->ecoId()->requestEcoId(ppId);
    return true;
}

bool UtilsDelegate::ecoIdStatusRequest(const QString& ecoId)
{
    if (ecoId.isEmpty()) {
        qCDebug(lcPlatform) << "UtilsDelegate::ecoIdStatusRequest: Invalid EcoId";
        return false;
    }
    qCDebug(lcPlatform) << "UtilsDelegate::ecoIdStatusRequest";
    m_services->ecoIdStatus()->requestEcoIdStatus(ecoId);
    return true;
}

void UtilsDelegate::notifyEcoIdResponse(const QString& ppId, const QString& ecoId)
{
    qCDebug(lcPlatform) << "notifyEcoIdResponse" << ppId << ecoId;
    m_toldEcoIds.tell(ppId, ecoId, [&] { Q_EMIT ecoIdUpdated(ppId, ecoId); });
}

void UtilsDelegate::notifyEcoIdStatusResponse(const QString& ecoId, const QString& status)
{
    qCDebug(lcPlatform) << "notifyEcoIdStatusResponse" << ecoId << status;
    const EcoIdStatus::Type type = HelperUtils::ecoIdStatusFromString(status);
    m_toldStatuses.tell(ecoId, type, [&] { Q_EMIT ecoIdStatusUpdated(ecoId, type); });
}

} // namespace vx::platform::zel
