// SPDX-License-Identifier: Apache-2.0
#include <platform/context/RegistrationEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/context/ApplicationDelegate.h>

namespace vx::platform::zel {

void RegistrationEventHandler::pushPermissionEvent(const QString& code) const
{
    qCDebug(lcPlatform) << "RegistrationEventHandler::pushPermissionEvent : -" << code << "-";
    if (m_bridge)
        m_bridge->registrar()->notifyRegistrationEvent(code);
}

} // namespace vx::platform::zel
