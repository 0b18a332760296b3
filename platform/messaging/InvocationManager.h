// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace vx::platform::zel {

class ServiceBridge;

/// Hands invitations and chats to the applications that are there for them. A value held by the connections manager;
/// is introduced to the bridge like its fellows, and needs none for what it does.
class InvocationManager
{
public:
    void setMessageServiceBridge(ServiceBridge*) {}

    /// Each answers whether the other application took the request.
    bool sendContactInvitation(const QString& ecoId, const QString& displayName, const QString& message) const;
    bool invokeChat(const QString& ecoId) const;
};

} // namespace vx::platform::zel
