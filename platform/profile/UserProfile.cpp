// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/UserProfile.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <platform/context/PrivatePart.h>
#include <platform/profile/UserProfileDelegate.h>
#include <splib/contacts/PlatformContact.h>

namespace vx::platform::zel {

/// Keeps a copy of the profile and follows the delegate's changes in it before the public object announces them.
class UserProfilePrivate : public PrivatePart<UserProfile, UserProfileDelegate>
{
    Q_OBJECT

public:
    UserProfilePrivate(Context* givenContext, UserProfile* userProfile)
        : PrivatePart(userProfile, "UserProfile", givenContext, mistakes::Needs::Readiness, &ServiceBridge::userProfile)
    {
        qCDebug(lcPlatform) << "entering UserProfilePrivate::UserProfilePrivate";
        if (!delegate)
            return;
        profile = delegate->userProfile();
        connect(delegate, &UserProfileDelegate::displayNameUpdated, this, &UserProfilePrivate::displayNameUpdated);
        connect(delegate, &UserProfileDelegate::personalMessageUpdated, this,
                &UserProfilePrivate::personalMessageUpdated);
        connect(delegate, &UserProfileDelegate::statusUpdated, this, &UserProfilePrivate::statusUpdated);
        connect(delegate, &UserProfileDelegate::avatarUpdated, this, &UserProfilePrivate::avatarUpdated);

        // After those above, so that properties are announced behind what changed them.
        const auto announce = &UserProfilePrivate::announceProperties;
        connect(delegate, &UserProfileDelegate::displayNameUpdated, this, announce);
        connect(delegate, &UserProfileDelegate::personalMessageUpdated, this, announce);
        connect(delegate, &UserProfileDelegate::statusUpdated, this, announce);
        connect(delegate, &UserProfileDelegate::avatarUpdated, this, announce);
        connect(context, &Context::registrationStateUpdated, this, &UserProfilePrivate::announceAccess);
    }

    zelsplib::PlatformContact profile;

    // What was told last, not what the signal says: where a slot of another profile has spun an event loop meanwhile,
    // that is older. In each of these the signal comes last: a slot may destroy the public object and this one with it.
public Q_SLOTS:
    void displayNameUpdated(QString)
    {
        qCDebug(lcPlatform) << "inside UserProfilePrivate::displayNameUpdated";
        const QString value = delegate->told().getDisplayName();
        profile.setDisplayName(value);
        Q_EMIT q->displayNameUpdated(value);
    }

    void personalMessageUpdated(QString)
    {
        const QString value = delegate->told().getPersonalMessage();
        profile.setPersonalMessage(value);
        Q_EMIT q->personalMessageUpdated(value);
    }

    void statusUpdated(vx::platform::zel::UserStatus::Type, QString)
    {
        qCDebug(lcPlatform) << "UserProfilePrivate::statusUpdated";
        const bool isBusy = delegate->told().getShowBusy();
        const QString statusMessage = delegate->told().getStatusMessage();
        profile.setShowBusy(isBusy);
        profile.setStatusMessage(statusMessage);
        Q_EMIT q->statusUpdated(isBusy ? UserStatus::Busy : UserStatus::Available, statusMessage);
    }

    void avatarUpdated(QString, vx::platform::zel::ImageType::Type, QByteArray)
    {
        qCDebug(lcPlatform) << "UserProfilePrivate::avatarUpdated";
        const zelsplib::PlatformContact told = delegate->told();
        profile.setAvatarMimeType(told.getAvatarMimeType());
        Q_EMIT q->displayPictureUpdated(HelperUtils::imageTypeFromString(told.getAvatarMimeType()),
                                        told.getAvatarData());
    }

private:
    void announceAccess()
    {
        if (isAllowed() != m_allowedBefore)
            announceProperties();
    }

    void announceProperties()
    {
        m_allowedBefore = isAllowed();
        Q_EMIT q->profileChanged(UserProfile::QPrivateSignal());
    }

    bool m_allowedBefore = true;
};

UserProfile::UserProfile(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<UserProfilePrivate>(context, this))
{
}

UserProfile::~UserProfile() = default;

/// The name that the user goes by.
QString UserProfile::displayName() const
{
    return d->isAllowed() ? d->profile.getDisplayName() : QString();
}

/// The line that the user has written about themselves.
QString UserProfile::personalMessage() const
{
    return d->isAllowed() ? d->profile.getPersonalMessage() : QString();
}

/// Whether the user may be disturbed. Available without access.
UserStatus::Type UserProfile::status() const
{
    if (!d->isAllowed())
        return UserStatus::Available;
    const bool busy = d->profile.getShowBusy();
    qCDebug(lcPlatform) << "UserProfile::status - getShowBusy" << busy;
    return busy ? UserStatus::Busy : UserStatus::Available;
}

/// What the user says about the status.
QString UserProfile::statusMessage() const
{
    if (!d->isAllowed())
        return {};
    qCDebug(lcPlatform) << "UserProfile::statusMessage - getShowBusy" << d->profile.getShowBusy();
    return d->profile.getStatusMessage();
}

/// The user's identifier across applications, as it was when this object was made.
QString UserProfile::ppId() const
{
    return d->isAllowed() ? d->profile.getPpid() : QString();
}

/// The user's name within the application, as it was when this object was made.
QString UserProfile::handle() const
{
    return d->isAllowed() ? d->profile.getHandle() : QString();
}

/// The format of displayPicture(). Unsupported without access, and for a picture whose format the service does not name
/// or this version does not know.
ImageType::Type UserProfile::displayPictureMimeType() const
{
    return d->isAllowed() ? HelperUtils::imageTypeFromString(d->profile.getAvatarMimeType()) : ImageType::Unsupported;
}

/// The picture as the library has it now, which may be newer than the rest of this object.
QByteArray UserProfile::displayPicture() const
{
    return d->isAllowed() ? d->delegate->getAvatar() : QByteArray();
}

/// The version of the application as the service knows it, as it was when this object was made.
QString UserProfile::applicationVersion() const
{
    return d->isAllowed() ? d->profile.getAppVersion() : QString();
}

/// The version of the messaging service, as it was when this object was made; 0 without access.
int UserProfile::zelVersion() const
{
    return d->isAllowed() ? d->profile.getZelVersion() : 0;
}

/// The version of this library, with or without access.
int UserProfile::sdkVersion() const
{
    return 200;
}

/// Asks for \a personalMessage to be the personal message; see personalMessageUpdated(). False without access.
bool UserProfile::requestUpdatePersonalMessage(const QString& personalMessage)
{
    if (!d->mayRequest("UserProfile::requestUpdatePersonalMessage"))
        return false;
    d->delegate->setPersonalMessage(personalMessage);
    return true;
}

/// Asks for \a status and \a statusMessage to be the user's, and changes nothing else of the profile; see
/// statusUpdated(). Any status but Busy means available.
bool UserProfile::requestUpdateStatus(UserStatus::Type status, const QString& statusMessage)
{
    if (!d->mayRequest("UserProfile::requestUpdateStatus"))
        return false;
    d->delegate->setStatus(status, statusMessage);
    return true;
}

/// Asks for \a displayPicture, of 1 to maximumPictureSize bytes, to be the picture; it goes out as a JPEG when \a type
/// is Unsupported. Also false while an earlier picture waits for the service to take it. While it waits it is asked for
/// again; when the service refuses any change of the profile meanwhile, it counts as given up, and another may be set.
bool UserProfile::requestUpdateDisplayPicture(ImageType::Type type, const QByteArray& displayPicture)
{
    constexpr const char* where = "UserProfile::requestUpdateDisplayPicture";
    return d->mayRequest(where) && (d->delegate->setAvatar(type, displayPicture) ||
                                    mistakes::warn(where, UserProfileDelegate::whyRefused(displayPicture)));
}

} // namespace vx::platform::zel

#include "UserProfile.moc"
