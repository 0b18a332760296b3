// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <platform/channel/Services.h>
#include <vx/platform/zel/ImageType.h>
#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace vx::platform::zel {

/// The own profile for all profile objects of the process. Made and owned by the bridge; lives on its thread. A slot of
/// its signals may do anything, also spin an event loop in which the next change is told: of two announcements that
/// nest, the outer one reaches the last of its slots after the inner one, with what is no longer true. Slots take what
/// was told last from here.
class UserProfileDelegate : public QObject
{
    Q_OBJECT

public:
    UserProfileDelegate(Services* services, QObject* parent);

    /// The profile as it is now.
    zelsplib::PlatformContact userProfile() const { return m_services->globals()->getMyProfile(); }
    /// The own picture as it is now.
    QByteArray getAvatar() const { return m_services->globals()->getMyAvatar(); }

    /// What was told last of each: display name, personal message, status, and the picture with its id and type.
    const zelsplib::PlatformContact& told() const { return m_told; }

    void setPersonalMessage(const QString& personalMessage);
    void setStatus(UserStatus::Type status, const QString& statusMessage);
    /// Why setAvatar() has refused this picture.
    static QString whyRefused(const QByteArray& avatar);
    bool setAvatar(ImageType::Type type, const QByteArray& avatar);

    void notifyDisplayNameUpdated(const QString& value);
    void notifyPersonalMessageUpdated(const QString& value);
    void notifyStatusUpdated(UserStatus::Type status, const QString& statusMessage);
    void notifyAvatarUpdated(const QString& avatarId, ImageType::Type avatarMimeType, const QByteArray& avatar);

Q_SIGNALS:
    void displayNameUpdated(QString value);
    void personalMessageUpdated(QString value);
    void statusUpdated(vx::platform::zel::UserStatus::Type status, QString statusMessage);
    void avatarUpdated(QString avatarId, vx::platform::zel::ImageType::Type avatarMimeType, QByteArray avatar);

private:
    Services* const m_services;
    zelsplib::PlatformContact m_told;
};

} // namespace vx::platform::zel
