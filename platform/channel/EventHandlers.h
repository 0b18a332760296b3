// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QList>
#include <QtCore/QString>

namespace zelsplib {
class PlatformContact;
class ProfileBoxImage;
class ProfileBoxItem;
} // namespace zelsplib

// What the managers of the services core report to. Each handler is a value held by its manager and passes everything
// on to one of the bridge's delegates. Pushes do nothing until the bridge has introduced itself; the delegates go after
// the managers.
namespace vx::platform::zel {

class ServiceBridge;

/// What they have in common.
class EventHandler
{
protected:
    /// Traces a push. Answers whether there is anybody who takes it.
    bool isTaken(const char* push) const;

    ServiceBridge* m_bridge = nullptr;
};

/// Registration states, to the registrar.
class RegistrationEventHandler : EventHandler
{
public:
    void setRegistrationBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushPermissionEvent(const QString& code) const;
};

/// Changes of the own profile, each with the whole new record.
class UserProfileEventHandler : EventHandler
{
public:
    void setUserProfileBridge(ServiceBridge* bridge) { m_bridge = bridge; }

    void pushPlatformUserProfileDisplayNameChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfilePersonalMessageChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileStatusChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileAvatarChangedEvent(const zelsplib::PlatformContact& profile) const;
};

/// The contact list and its contacts.
class ContactListEventHandler : EventHandler
{
public:
    void setContactServiceBridge(ServiceBridge* bridge) { m_bridge = bridge; }

    void pushGetPlatformContactListEvent(const QList<zelsplib::PlatformContact>& contacts) const;
    void pushPlatformContactListResentEvent() const;
    void pushPlatformContactInstallAppEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactUninstallAppEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactUpdateEvent(const zelsplib::PlatformContact& before,
                                        const zelsplib::PlatformContact& after) const;
    void pushPlatformContactInvitationReceivedEvent(const zelsplib::PlatformContact& contact) const;
    void pushPlatformContactAvatarChangedEvent(const zelsplib::PlatformContact& contact) const;
};

/// There is nothing to report yet: no public class tells of connections.
class ConnectionEventHandler
{
};

/// The items and icons of the profile box.
class ProfileBoxEventHandler : EventHandler
{
public:
    void setProfileBoxBridge(ServiceBridge* bridge) { m_bridge = bridge; }

    void pushProfileBoxReceivedEvent() const;
    void pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushUpdateProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushUpdateProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
};

/// Which eco identifier belongs to a ppId.
class EcoIdEventHandler : EventHandler
{
public:
    void setEcoIdBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdResponse(const QString& ppId, const QString& ecoId) const;
};

/// The status of eco identifiers.
class EcoIdStatusEventHandler : EventHandler
{
public:
    void setEcoIdStatusBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdStatusResponse(const QString& ecoId, const QString& status) const;
};

} // namespace vx::platform::zel
