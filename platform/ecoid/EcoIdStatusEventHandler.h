// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace vx::platform::zel {

class ServiceBridge;

/// What the eco ID status manager reports the status of eco identifiers to; it passes that on to the utilities
/// delegate. A value held by the manager; pushes do nothing until the bridge has introduced itself.
class EcoIdStatusEventHandler
{
public:
    void setEcoIdStatusBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdStatusResponse(const QString& ecoId, const QString& status) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

} // namespace vx::platform::zel
