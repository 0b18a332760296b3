// SPDX-License-Identifier: Apache-2.0
#include <platform/ecoid/EcoIdEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/ecoid/UtilsDelegate.h>

namespace vx::platform::zel {

void EcoIdEventHandler::pushEcoIdResponse(const QString& ppId, const QString& ecoId) const
{
    qCDebug(lcPlatform) << "EcoIdEventHandler::pushEcoIdResponse" << ppId << ecoId;
    if (m_bridge)
        m_bridge->utils()->notifyEcoIdResponse(ppId, ecoId);
}

} // namespace vx::platform::zel
