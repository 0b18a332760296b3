// SPDX-License-Identifier: Apache-2.0
#include <platform/ecoid/EcoIdStatusEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/ecoid/UtilsDelegate.h>

namespace vx::platform::zel {

void EcoIdStatusEventHandler::pushEcoIdStatusResponse(const QString& ecoId, const QString& status) const
{
    qCDebug(lcPlatform) << "EcoIdStatusEventHandler::pushEcoIdStatusResponse" << ecoId << status;
    if (m_bridge)
        m_bridge->utils()->notifyEcoIdStatusResponse(ecoId, status);
}

} // namespace vx::platform::zel
