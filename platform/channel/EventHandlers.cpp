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

void RegistrationEventHandler::pushPermissionEvent(const QString& code) const
{
    qCDebug(lcPlatform) << "RegistrationEventHandler::pushPermissionEvent : -" << code << "-";
    if (m_bridge)
        m_bridge->registrar()->notifyRegistrationEvent(code);
}

void UserProfileEventHandler::setUserProfileBridge(ServiceBridge* bridge)
{
    m_delegate = bridge ? bridge->userProfile() : nullptr;
}

void UserProfileEventHandler::pushPlatformUserProfileDisplayNameChangedEvent(const PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyDisplayNameUpdated(profile.getDisplayName());
}

void UserProfileEventHandler::pushPlatformUserProfilePersonalMessageChangedEvent(const PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyPersonalMessageUpdated(profile.getPersonalMessage());
}

void UserProfileEventHandler::pushPlatformUserProfileStatusChangedEvent(const PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyStatusUpdated(profile.getShowBusy() ? UserStatus::Busy : UserStatus::Available,
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
    if (m_delegate)
        m_delegate->notifyAvatarUpdated(avatarId, HelperUtils::imageTypeFromString(mimeType), avatar);
}

void ContactListEventHandler::setContactServiceBridge(ServiceBridge* bridge)
{
    m_delegate = bridge ? bridge->contactService() : nullptr;
}

void ContactListEventHandler::pushGetPlatformContactListEvent(const QList<PlatformContact>& contacts) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushGetPlatformContactListEvent";
    if (m_delegate)
        m_delegate->setContactList(contacts);
}

void ContactListEventHandler::pushPlatformContactListResentEvent() const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactListResentEvent";
    if (m_delegate)
        m_delegate->notifyContactListResent();
}

void ContactListEventHandler::pushPlatformContactInstallAppEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactInstallAppEvent";
    if (m_delegate)
        m_delegate->notifyApplicationEnabled(contact);
}

void ContactListEventHandler::pushPlatformContactUninstallAppEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactUninstallAppEvent";
    if (m_delegate)
        m_delegate->notifyApplicationDisabled(contact);
}

void ContactListEventHandler::pushPlatformContactUpdateEvent(const PlatformContact&, const PlatformContact& after) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactUpdateEvent";
    if (m_delegate)
        m_delegate->notifyContactUpdated(after);
}

void ContactListEventHandler::pushPlatformContactInvitationReceivedEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactInvitationReceivedEvent";
    if (m_delegate)
        m_delegate->notifyInvitationReceived(contact.getHandle());
}

void ContactListEventHandler::pushPlatformContactAvatarChangedEvent(const PlatformContact& contact) const
{
    qCDebug(lcPlatform) << "ContactListEventHandler::pushPlatformContactAvatarChangedEvent";
    if (m_delegate)
        m_delegate->notifyAvatarUpdated(contact.getHandle(), contact.getAvatarId(), contact.getAvatarMimeType(),
                                        contact.getAvatarData());
}

void ProfileBoxEventHandler::setProfileBoxBridge(ServiceBridge* bridge)
{
    m_delegate = bridge ? bridge->profileBox() : nullptr;
}

void ProfileBoxEventHandler::pushProfileBoxReceivedEvent() const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushProfileBoxReceivedEvent";
    if (m_delegate)
        m_delegate->notifyReceived();
}

void ProfileBoxEventHandler::pushAddProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushAddProfileBoxItemEvent";
    if (m_delegate)
        m_delegate->notifyItemAdded(item.getItemId());
}

void ProfileBoxEventHandler::pushUpdateProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushUpdateProfileBoxItemEvent";
    if (m_delegate)
        m_delegate->notifyItemUpdated(item.getItemId());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent(const zelsplib::ProfileBoxItem& item) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRemoveProfileBoxItemEvent";
    if (m_delegate)
        m_delegate->notifyItemRemoved(item.getItemId());
}

void ProfileBoxEventHandler::pushAddProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushAddProfileBoxImageEvent";
    if (m_delegate)
        m_delegate->notifyIconRegistered(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRemoveProfileBoxImageEvent";
    if (m_delegate)
        m_delegate->notifyIconRemoved(image.getImageId().toInt());
}

void ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent(const zelsplib::ProfileBoxImage& image) const
{
    qCDebug(lcPlatform) << "ProfileBoxEventHandler::pushRetrievedProfileBoxImageEvent";
    if (!m_delegate)
        return;
    const auto icon = image.getImage();
    m_delegate->notifyIconRetrieved(image.getImageId().toInt(), HelperUtils::pictureTypeForAvatar(icon->getImageType()),
                                    icon->getData());
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
