// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <quick/ContextObject.h>

#include <vx/platform/zel/UserProfile.h>

#include <QtCore/QByteArray>
#include <QtCore/QString>
#include <QtCore/QUrl>

namespace zelquick {

/// The user's own profile, to read and to change. It may be made at any time and answers defaults until the context is
/// ready and while access is lost. A request answers whether it was handed on; what comes of it shows in the
/// properties.
class UserProfile : public zelquick::ContextObject
{
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString displayName READ displayName NOTIFY profileChanged FINAL)
    Q_PROPERTY(QString personalMessage READ personalMessage NOTIFY profileChanged FINAL)
    Q_PROPERTY(vx::platform::zel::UserStatus::Type status READ status NOTIFY profileChanged FINAL)
    Q_PROPERTY(QString statusMessage READ statusMessage NOTIFY profileChanged FINAL)
    Q_PROPERTY(QString ppId READ ppId NOTIFY profileChanged FINAL)
    Q_PROPERTY(QString handle READ handle NOTIFY profileChanged FINAL)
    Q_PROPERTY(QString applicationVersion READ applicationVersion NOTIFY profileChanged FINAL)
    Q_PROPERTY(int zelVersion READ zelVersion NOTIFY profileChanged FINAL)
    /// The display picture, for an Image.
    Q_PROPERTY(QUrl picture READ picture NOTIFY pictureChanged FINAL)
    Q_PROPERTY(int maximumPictureSize READ maximumPictureSize CONSTANT FINAL)

public:
    explicit UserProfile(QObject* parent = nullptr);

    QString displayName() const { return m_profile ? m_profile->displayName() : QString(); }
    QString personalMessage() const { return m_profile ? m_profile->personalMessage() : QString(); }
    zel::UserStatus::Type status() const { return m_profile ? m_profile->status() : zel::UserStatus::Available; }
    QString statusMessage() const { return m_profile ? m_profile->statusMessage() : QString(); }
    QString ppId() const { return m_profile ? m_profile->ppId() : QString(); }
    QString handle() const { return m_profile ? m_profile->handle() : QString(); }
    QString applicationVersion() const { return m_profile ? m_profile->applicationVersion() : QString(); }
    int zelVersion() const { return m_profile ? m_profile->zelVersion() : 0; }
    QUrl picture() const;
    int maximumPictureSize() const { return zel::UserProfile::maximumPictureSize; }

    Q_INVOKABLE bool requestUpdatePersonalMessage(const QString& personalMessage);
    Q_INVOKABLE bool requestUpdateStatus(vx::platform::zel::UserStatus::Type status, const QString& statusMessage);
    Q_INVOKABLE bool requestUpdateDisplayPicture(vx::platform::zel::ImageType::Type type,
                                                 const QByteArray& displayPicture);
    /// The picture in a file; one that is too big for the service is made smaller. False, with a warning, for a file
    /// that cannot be read or is no picture.
    Q_INVOKABLE bool requestUpdateDisplayPictureFile(const QUrl& file);

Q_SIGNALS:
    void profileChanged();
    void pictureChanged();

protected:
    void start(zel::Context* context, QObject* owner) override;
    void forget() override;

private:
    zel::UserProfile* m_profile = nullptr;
};

} // namespace zelquick
