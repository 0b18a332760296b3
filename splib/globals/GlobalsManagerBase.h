// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>
#include <splib/globals/Avatar.h>
#include <splib/globals/GlobalVar.h>
#include <splib/globals/PlatformPermissions.h>

#include <zel/JsonStream.h>
#include <zel/ListApiMultiplexer.h>

#include <iface/JsonReaderAttribute.h>

#include <QtCore/QByteArray>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <memory>

namespace zelsplib {

class RegistrationHandler;

/// What GlobalsManager does whatever its event handlers are: mirrors the "global" list, asks for the registration,
/// and keeps the own profile and its picture.
///
/// Used on the thread of the event loop. Events are told one by one in the order in which their causes arrived. A
/// handler may spin an event loop: what arrives meanwhile is told there and then, after what was still to be told.
class GlobalsManagerBase : public QObject
{
    Q_OBJECT

public:
    ~GlobalsManagerBase() override;

    /// Starts to follow the own profile and to take pictures. Called once, by the facade.
    void init();

    /// Asks for the application's registration; an application that already is registered is told so at once.
    void sendRegistration(const QString& uuid, bool silent);
    /// Tells the core service which programming interface the application uses.
    void sendTpaApi(const QString& apiType);

    /// Tracked reads of the last record; defaults until one has arrived.
    PlatformPermissions getPermissions() const;
    QString getAccessCode() const;
    /// Tracked read of the last record; never holds the picture.
    PlatformContact getMyProfile() const;
    /// The own picture as last told; empty when there is none.
    QByteArray getMyAvatar() const;

    /// Asks for a change of the own profile: of the fields marked in `contact`, or of all when none is marked.
    void setMyProfile(const PlatformContact& contact);
    /// Asks for a new own picture. False, with a line in the log, when the picture cannot be one or while another
    /// waits to be confirmed.
    bool setProfileAvatar(Avatar::ImageType type, const char* data, unsigned int size);

    /// Asks for the picture that the own profile names, and again until it comes.
    void requestProfileAvatar();
    /// Takes `data` as the own picture and tells so.
    void setUserProfileAvatar(const QByteArray& data);
    /// The core service wants the own picture on the stream `streamId`, or will send it there.
    void avatarRequested(const QString& streamId);

    /// Hands a registration state to the registration event handler.
    void pushRegistrationEvent(const QString& state);

protected:
    GlobalsManagerBase(QSharedPointer<zel::ListApiMultiplexer> listApi, QSharedPointer<zel::JsonStream> jsonStream,
                       RegistrationHandler* registrationHandler);

private:
    virtual void pushPermissionEvent(const QString& code) = 0;
    virtual void pushDisplayNameChanged(const PlatformContact& profile) = 0;
    virtual void pushPersonalMessageChanged(const PlatformContact& profile) = 0;
    virtual void pushStatusChanged(const PlatformContact& profile) = 0;
    virtual void pushAvatarChanged(const PlatformContact& profile) = 0;

    void postAvatar(const QByteArray& data);
    void postProfileChanges(const PlatformContact& before, const PlatformContact& after);

    void permissionCallback();
    void platformProfileCallback();
    void requestUserAvatarCallback(QObject* sender, iface::JsonReaderAttribute message);
    void profileChangeResponseCallback(QObject* sender, iface::JsonReaderAttribute message);
    void streamDataAvailable(const QString& streamId, const QVariant& data);

    struct Private;
    std::unique_ptr<Private> const d;
};

} // namespace zelsplib
