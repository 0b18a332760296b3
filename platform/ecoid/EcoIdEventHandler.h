// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace vx::platform::zel {

class ServiceBridge;

/// What the eco ID manager reports which eco identifier belongs to a ppId to; it passes that on to the utilities
/// delegate. A value held by the manager; pushes do nothing until the bridge has introduced itself.
class EcoIdEventHandler
{
public:
    void setEcoIdBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdResponse(const QString& ppId, const QString& ecoId) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

} // namespace vx::platform::zel
