// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/EventHandlers.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/contacts/ContactServiceDelegate.h>
#include <platform/context/ApplicationDelegate.h>
#include <platform/context/HelperUtils.h>
#include <platform/ecoid/UtilsDelegate.h>
#include <platform/profile/UserProfileDelegate.h>
#include <platform/profilebox/ProfileBoxDelegate.h>
#include <splib/contacts/PlatformContact.h>

namespace vx::platform::zel {

using zelsplib::PlatformContact;

bool EventHandler::isTaken(const char* push) const
{
    qCDebug(lcPlatform) << push;
    return m_bridge != nullptr;
}

void RegistrationEventHandler::pushPermissionEvent(const QString& code) const
{
    qCDebug(lcPlatform) << "RegistrationEventHandler::pushPermissionEvent : -" << code << "-";
    if (m_bridge)
        m_bridge->registrar()->notifyRegistrationEvent(code);
}

void UserProfileEventHandler::pushPlatformUserProfileDisplayNameChangedEvent(const PlatformContact& profile) const
{
    if (m_bridge)
        m_bridge->userProfile()->notifyDisplayNameUpdated(profile.getDisplayName());
}

void UserProfileEventHandler::pushPlatformUserProfilePersonalMessageChangedEvent(const PlatformContact& profile) const
{
    if (m_bridge)
        m_bridge->userProfile()->notifyPersonalMessageUpdated(profile.getPersonalMessage());
}

void UserProfileEventHandler::pushPlatformUserProfileStatusChangedEvent(const PlatformContact& profile) const
{
    if (m_bridge)
        m_bridge->userProfile()->notifyStatusUpdated(profile.getShowBusy() ? UserStatus::Busy : UserStatus::Available,
                                                     profile.getStatusMessage());
}

void UserProfileEventHandler::pushPlatformUserProfileAvatarChangedEvent(const PlatformContact& profile) const
{
    const QString avatarId = profile.getAvatarId();
    const QString mimeType = profile.getAvatarMimeType();
    const QByteArray avatar = profile.getAvatarData();
    // Of the picture only the size: the stream would write out all of its bytes.
    qCDebug(lcPlatform) << "UserProfileEventHandler::pushPlatformUserProfileAvatarChangedEvent" << avatarId << mimeType
                        << avatar.size();
    if (m_bridge)
        m_bridge->userProfile()->notifyAvatarUpdated(avatarId, HelperUtils::imageTypeFromString(mimeType), avatar);
}

void ContactListEventHandler::pushGetPlatformContactListEvent(const QList<PlatformContact>& contacts) const
{
    if (isTaken("ContactListEventHandler::pushGetPlatformContactListEvent"))
        m_bridge->contactService()->setContactList(contacts);
}

void ContactListEventHandler::pushPlatformContactListResentEvent() const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactListResentEvent"))
        m_bridge->contactService()->notifyContactListResent();
}

void ContactListEventHandler::pushPlatformContactInstallAppEvent(const PlatformContact& contact) const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactInstallAppEvent"))
        m_bridge->contactService()->notifyApplicationEnabled(contact);
}

void ContactListEventHandler::pushPlatformContactUninstallAppEvent(const PlatformContact& contact) const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactUninstallAppEvent"))
        m_bridge->contactService()->notifyApplicationDisabled(contact);
}

void ContactListEventHandler::pushPlatformContactUpdateEvent(const PlatformContact&, const PlatformContact& after) const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactUpdateEvent"))
        m_bridge->contactService()->notifyContactUpdated(after);
}

void ContactListEventHandler::pushPlatformContactInvitationReceivedEvent(const PlatformContact& contact) const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactInvitationReceivedEvent"))
        m_bridge->contactService()->notifyInvitationReceived(contact.getHandle());
}

void ContactListEventHandler::pushPlatformContactAvatarChangedEvent(const PlatformContact& contact) const
{
    if (isTaken("ContactListEventHandler::pushPlatformContactAvatarChangedEvent"))
        m_bridge->contactService()->notifyAvatarUpdated(contact.getHandle(), contact.getAvatarId(),
                                                        contact.getAvatarMimeType(), contact.getAvatarData());
}

void ProfileBoxEventHandler::pushProfileBoxReceivedEvent() const
{
    if (isTaken("ProfileBoxEventHandler::pushProfileBoxReceivedEvent"))
        m_bridge->profileBox()->notifyReceived();
}

void ProfileBoxEventHandler::pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    if (isTaken("ProfileBoxEventHandler::pushAddProfileBoxItemEvent"))
        m_bridge->profileBox()->notifyItemAdded(item.getItemId());
}

void ProfileBoxEventHandler::pushUpdateProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    if (isTaken("ProfileBoxEventHandler::pushUpdateProfileBoxItemEvent"))
        m_bridge->profileBox()->notifyItemUpdated(item.getItemId());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    if (isTaken("ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent"))
        m_bridge->profileBox()->notifyItemRemoved(item.getItemId());
}

void ProfileBoxEventHandler::pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    if (isTaken("ProfileBoxEventHandler::pushAddProfileBoxImageEvent"))
        m_bridge->profileBox()->notifyIconRegistered(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushUpdateProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    if (isTaken("ProfileBoxEventHandler::pushUpdateProfileBoxImageEvent"))
        m_bridge->profileBox()->notifyIconUpdated(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    if (isTaken("ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent"))
        m_bridge->profileBox()->notifyIconRemoved(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    if (!isTaken("ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent"))
        return;
    const auto icon = image.getImage();
    m_bridge->profileBox()->notifyIconRetrieved(
        image.getImageId().toInt(), HelperUtils::pictureTypeForAvatar(icon->getImageType()), icon->getData());
}

void EcoIdEventHandler::pushEcoIdResponse(const QString& ppId, const QString& ecoId) const
{
    qCDebug(lcPlatform) << "EcoIdEventHandler::pushEcoIdResponse" << ppId << ecoId;
    if (m_bridge)
        m_bridge->utils()->notifyEcoIdResponse(ppId, ecoId);
}

void EcoIdStatusEventHandler::pushEcoIdStatusResponse(const QString& ecoId, const QString& status) const
{
    qCDebug(lcPlatform) << "EcoIdStatusEventHandler::pushEcoIdStatusResponse" << ecoId << status;
    if (m_bridge)
        m_bridge->utils()->notifyEcoIdStatusResponse(ecoId, status);
}

} // namespace vx::platform::zel
