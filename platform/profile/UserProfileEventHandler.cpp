// SPDX-License-Identifier: Apache-2.0
#include <platform/profile/UserProfileEventHandler.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <platform/profile/UserProfileDelegate.h>
#include <splib/contacts/PlatformContact.h>

namespace vx::platform::zel {

void UserProfileEventHandler::setUserProfileBridge(ServiceBridge* bridge)
{
    m_delegate = bridge ? bridge->userProfile() : nullptr;
}

void UserProfileEventHandler::pushPlatformUserProfileDisplayNameChangedEvent(
    const zelsplib::PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyDisplayNameUpdated(profile.getDisplayName());
}

void UserProfileEventHandler::pushPlatformUserProfilePersonalMessageChangedEvent(
    const zelsplib::PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyPersonalMessageUpdated(profile.getPersonalMessage());
}

void UserProfileEventHandler::pushPlatformUserProfileStatusChangedEvent(const zelsplib::PlatformContact& profile) const
{
    if (m_delegate)
        m_delegate->notifyStatusUpdated(profile.getShowBusy() ? UserStatus::Busy : UserStatus::Available,
                                        profile.getStatusMessage());
}

void UserProfileEventHandler::pushPlatformUserProfileAvatarChangedEvent(const zelsplib::PlatformContact& profile) const
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

} // namespace vx::platform::zel
