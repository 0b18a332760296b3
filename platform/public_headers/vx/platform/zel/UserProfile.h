// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/UserStatus.h>
#include <iface/Export.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

class Context;
class UserProfilePrivate;

/// The user's own profile, to read and to change.
///
/// Make it when the context is ready, as whenReady() tells: one that is made without a context, or while it gives no
/// access, answers defaults and refuses requests for its life. It keeps a copy of the profile as it was then, and
/// follows the changes of the display name, personal message, status and picture. While access is lost it answers
/// defaults; the copy is kept current and shows again when access returns. The context is held guarded and may go
/// first. The application owns its profile objects and may have several.
///
/// A request answers whether it was handed on, and no more: what the service makes of it shows in the signals. A
/// picture has 1 to maximumPictureSize bytes; another one is refused until the service has answered the one before.
///
/// Thread: that of the context. In a slot anything may be done, including destroying this object.
class ZEL_EXPORT UserProfile : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QString displayName READ displayName NOTIFY profileChanged)
    Q_PROPERTY(QString personalMessage READ personalMessage NOTIFY profileChanged)
    Q_PROPERTY(vx::platform::zel::UserStatus::Type status READ status NOTIFY profileChanged)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY profileChanged)
    Q_PROPERTY(QString ppId READ ppId NOTIFY profileChanged)
    Q_PROPERTY(QString handle READ handle NOTIFY profileChanged)
    Q_PROPERTY(
        vx::platform::zel::ImageType::Type displayPictureMimeType READ displayPictureMimeType NOTIFY profileChanged)
    Q_PROPERTY(QByteArray displayPicture READ displayPicture NOTIFY profileChanged)
    Q_PROPERTY(QString applicationVersion READ applicationVersion NOTIFY profileChanged)
    Q_PROPERTY(int zelVersion READ zelVersion NOTIFY profileChanged)
    Q_PROPERTY(int sdkVersion READ sdkVersion CONSTANT)

public:
    /// The biggest picture, in bytes: 32 KiB.
    static constexpr int maximumPictureSize = 32768;

    /// The profile of the user for whom \a context gives access; \a parent may own this object.
    explicit UserProfile(Context* context, QObject* parent = nullptr);
    ~UserProfile() override;

    QString displayName() const;
    QString personalMessage() const;
    UserStatus::Type status() const;
    QString statusMessage() const;
    QString ppId() const;
    QString handle() const;
    ImageType::Type displayPictureMimeType() const;
    QByteArray displayPicture() const;
    QString applicationVersion() const;
    int zelVersion() const;
    int sdkVersion() const;

    bool requestUpdatePersonalMessage(const QString& personalMessage);
    bool requestUpdateStatus(UserStatus::Type status, const QString& statusMessage);
    bool requestUpdateDisplayPicture(ImageType::Type type, const QByteArray& displayPicture);

Q_SIGNALS:
    // Each comes after this object shows the new value, and while access is lost, too. A change that the application
    // requested itself is announced like any other, once the service has taken it; what changes nothing is not, but for
    // a picture. Each carries what is true when it comes: where a slot of another profile has spun an event loop in
    // which the same has changed again, both announcements carry the newer value.

    /// displayName() is another one, \a value is what it answers.
    void displayNameUpdated(QString value);
    /// personalMessage() is another one, \a value is what it answers.
    void personalMessageUpdated(QString value);
    /// status() or statusMessage() is another one; they answer \a status and \a statusMessage now.
    void statusUpdated(vx::platform::zel::UserStatus::Type status, QString statusMessage);
    /// The picture has come, or was replaced: it is \a displayPicture now, in the format \a displayPictureMimeType.
    /// An empty one: there is none.
    void displayPictureUpdated(vx::platform::zel::ImageType::Type displayPictureMimeType, QByteArray displayPicture);

    /// For bindings: after each of those above, and when access was lost or came back, with which every property
    /// changes.
    void profileChanged(QPrivateSignal);

private:
    friend class UserProfilePrivate;
    std::unique_ptr<UserProfilePrivate> const d;
};

} // namespace vx::platform::zel
