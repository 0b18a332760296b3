// SPDX-License-Identifier: Apache-2.0
#include <platform/profile/UserProfileDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <splib/globals/OwnPicture.h>
#include <vx/platform/zel/UserProfile.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

UserProfileDelegate::UserProfileDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
    qCDebug(lcPlatform) << "inside UserProfileDelegate::UserProfileDelegate";
}

// The record goes out with the fields that are set and no others, so a change of one never blanks another.
void UserProfileDelegate::setPersonalMessage(const QString& personalMessage)
{
    zelsplib::PlatformContact change;
    change.setPersonalMessage(personalMessage);
    m_services->globals()->setMyProfile(change);
}

void UserProfileDelegate::setStatus(UserStatus::Type status, const QString& statusMessage)
{
    zelsplib::PlatformContact change;
    change.setShowBusy(status == UserStatus::Busy);
    change.setStatusMessage(statusMessage);
    m_services->globals()->setMyProfile(change);
}

bool UserProfileDelegate::setAvatar(ImageType::Type type, const QByteArray& avatar)
{
    // Beyond what the manager can count a picture would go out cut.
    if (avatar.isEmpty() || avatar.size() > std::numeric_limits<unsigned int>::max())
        return false;
    return m_services->globals()->setProfileAvatar(HelperUtils::avatarTypeForPicture(type), avatar.constData(),
                                                   static_cast<unsigned int>(avatar.size()));
}

QString UserProfileDelegate::whyRefused(const QByteArray& avatar)
{
    static_assert(UserProfile::maximumPictureSize == zelsplib::DEFAULT_MAX_AVATAR_DATA_SIZE);
    const bool isTooBig = avatar.size() > UserProfile::maximumPictureSize;
    if (avatar.isEmpty() || isTooBig)
        return u"the picture is %1; give it 1 to %2 bytes"_s.arg(isTooBig ? u"too big"_s : u"empty"_s)
            .arg(UserProfile::maximumPictureSize);
    return u"another picture is under way; wait for displayPictureUpdated()"_s;
}

void UserProfileDelegate::notifyDisplayNameUpdated(const QString& value)
{
    qCDebug(lcPlatform) << "displayNameUpdated";
    m_told.setDisplayName(value);
    Q_EMIT displayNameUpdated(value);
}

void UserProfileDelegate::notifyPersonalMessageUpdated(const QString& value)
{
    qCDebug(lcPlatform) << "personalMessageUpdated";
    m_told.setPersonalMessage(value);
    Q_EMIT personalMessageUpdated(value);
}

void UserProfileDelegate::notifyStatusUpdated(UserStatus::Type status, const QString& statusMessage)
{
    qCDebug(lcPlatform) << "UserProfileDelegate::notifyStatusUpdated";
    m_told.setShowBusy(status == UserStatus::Busy);
    m_told.setStatusMessage(statusMessage);
    Q_EMIT statusUpdated(status, statusMessage);
}

void UserProfileDelegate::notifyAvatarUpdated(const QString& avatarId, ImageType::Type avatarMimeType,
                                              const QByteArray& avatar)
{
    qCDebug(lcPlatform) << "avatar changed - id: " << avatarId;
    m_told.setAvatarId(avatarId);
    m_told.setAvatarMimeType(ImageType::mimeType(avatarMimeType));
    m_told.setAvatarData(avatar);
    Q_EMIT avatarUpdated(avatarId, avatarMimeType, avatar);
}

} // namespace vx::platform::zel
