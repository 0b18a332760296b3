// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QList>

namespace zelsplib {
class PlatformContact;
}

namespace vx::platform::zel {

class ContactServiceDelegate;
class ServiceBridge;

/// What the contact manager reports to; it passes everything on to the contact delegate. A value held by the manager;
/// pushes do nothing until the bridge has introduced itself.
class ContactListEventHandler
{
public:
    void setContactServiceBridge(ServiceBridge* bridge);

    void pushGetPlatformContactListEvent(const QList<zelsplib::PlatformContact>& contacts) const;
    void pushPlatformContactListResentEvent() const;
    void pushPlatformContactInstallAppEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactUninstallAppEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactUpdateEvent(const zelsplib::PlatformContact& before,
                                        const zelsplib::PlatformContact& after) const;
    void pushPlatformContactInvitationReceivedEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactAvatarChangedEvent(const zelsplib::PlatformContact& contact) const;

private:
    ContactServiceDelegate* m_delegate = nullptr;
};

} // namespace vx::platform::zel
