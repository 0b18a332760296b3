// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace vx::platform::zel {

class ServiceBridge;

/// What the globals manager reports registration states to; it passes them on to the bridge's registrar. A value held
/// by the manager; pushes do nothing until the bridge has introduced itself.
class RegistrationEventHandler
{
public:
    void setRegistrationBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushPermissionEvent(const QString& code) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

} // namespace vx::platform::zel
