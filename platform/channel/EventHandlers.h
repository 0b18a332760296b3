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

class ContactServiceDelegate;
class ProfileBoxDelegate;
class ServiceBridge;
class UserProfileDelegate;

/// Registration states, to the registrar.
class RegistrationEventHandler
{
public:
    void setRegistrationBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushPermissionEvent(const QString& code) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

/// Changes of the own profile, each with the whole new record.
class UserProfileEventHandler
{
public:
    void setUserProfileBridge(ServiceBridge* bridge);

    void pushPlatformUserProfileDisplayNameChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfilePersonalMessageChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileStatusChangedEvent(const zelsplib::PlatformContact& profile) const;
    void pushPlatformUserProfileAvatarChangedEvent(const zelsplib::PlatformContact& profile) const;

private:
    UserProfileDelegate* m_delegate = nullptr;
};

/// The contact list and its contacts.
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

/// There is nothing to report yet: no public class tells of connections.
class ConnectionEventHandler
{
};

/// The items and icons of the profile box.
class ProfileBoxEventHandler
{
public:
    void setProfileBoxBridge(ServiceBridge* bridge);

    void pushProfileBoxReceivedEvent() const;
    void pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushUpdateProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const;
    void pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;
    void pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const;

private:
    ProfileBoxDelegate* m_delegate = nullptr;
};

/// Which eco identifier belongs to a ppId.
class EcoIdEventHandler
{
public:
    void setEcoIdBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdResponse(const QString& ppId, const QString& ecoId) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

/// The status of eco identifiers.
class EcoIdStatusEventHandler
{
public:
    void setEcoIdStatusBridge(ServiceBridge* bridge) { m_bridge = bridge; }
    void pushEcoIdStatusResponse(const QString& ecoId, const QString& status) const;

private:
    ServiceBridge* m_bridge = nullptr;
};

} // namespace vx::platform::zel
