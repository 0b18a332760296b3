// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/EventQueue.h>
#include <splib/contacts/PlatformContact.h>
#include <splib/globals/Avatar.h>
#include <splib/globals/GlobalVar.h>
#include <splib/globals/OwnPicture.h>
#include <splib/globals/PlatformPermissions.h>
#include <splib/globals/RegistrationRequest.h>

#include <zel/JsonStream.h>
#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/ListApiMultiplexer.h>
#include <zel/LiveMap.h>

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
    GlobalsManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& listApi,
                       const QSharedPointer<zel::JsonStream>& jsonStream, RegistrationHandler* registrationHandler);

    /// Starts to follow the own profile and to take pictures. Called once, by the facade.
    void init();

    /// Asks for the application's registration; an application that already is registered is told so at once.
    void sendRegistration(const QString& uuid, bool silent);
    /// Tells the core service which programming interface the application uses.
    void sendTpaApi(const QString& apiType);

    /// Tracked reads of the last record; defaults until one has arrived.
    PlatformPermissions getPermissions() const;
    QString getAccessCode() const { return getPermissions().registrationState; }
    /// Tracked read of the last record; never holds the picture.
    PlatformContact getMyProfile() const;
    /// The own picture as last told; empty when there is none.
    QByteArray getMyAvatar() const { return m_picture; }

    /// Asks for a change of the own profile: of the fields marked in `contact`, or of all when none is marked.
    void setMyProfile(const PlatformContact& contact);
    /// Asks for a new own picture. False, with a line in the log, when the picture cannot be one or while another
    /// waits to be confirmed.
    bool setProfileAvatar(Avatar::ImageType type, const char* data, unsigned int size)
    {
        return m_ownPicture.offer(type, data, size);
    }

    /// Asks for the picture that the own profile names, and again until it comes.
    void requestProfileAvatar() { m_ownPicture.request(m_profile.getAvatarId()); }
    /// Takes `data` as the own picture and tells so.
    void setUserProfileAvatar(const QByteArray& data);
    /// The core service wants the own picture on the stream `streamId`, or will send it there.
    void avatarRequested(const QString& streamId) { m_ownPicture.handleRequest(streamId); }

    /// Hands a registration state to the registration event handler.
    virtual void pushRegistrationEvent(const QString& state) = 0;

private:
    using GlobalMap = zel::LiveMap<QString, GlobalVar>;

    virtual void pushDisplayNameChanged(const PlatformContact& profile) = 0;
    virtual void pushPersonalMessageChanged(const PlatformContact& profile) = 0;
    virtual void pushStatusChanged(const PlatformContact& profile) = 0;
    virtual void pushAvatarChanged(const PlatformContact& profile) = 0;

    void follow(const QString& name, void (GlobalsManagerBase::*changed)());
    void readAgain(const QString& name) const;
    void sendAvatar(const Avatar& avatar);
    void postAvatar(const QByteArray& data);
    void postProfileChanges(const PlatformContact& before, const PlatformContact& after);

    void permissionCallback();
    void platformProfileCallback();
    void requestUserAvatarCallback(QObject* sender, const iface::JsonReaderAttribute& message);
    void profileChangeResponseCallback(QObject* sender, const iface::JsonReaderAttribute& message);
    void listChunkCallback(QObject* sender, const iface::JsonReaderAttribute& message);
    void streamDataAvailable(const QString& streamId, const QVariant& data);

    const QSharedPointer<zel::JsonStream> m_jsonStream;
    RegistrationHandler* const m_registrationHandler;
    const GlobalMap::Pointer m_globalMap;
    std::unique_ptr<zel::JsonStreamFunctorAdapter> m_streamAdapter;
    EventQueue m_events;

    RegistrationRequest m_registration;
    PlatformPermissions m_permissions; ///< as last told
    PlatformContact m_profile;         ///< as last told, without its picture
    bool m_profileInitialized = false;

    OwnPicture m_ownPicture;
    QByteArray m_picture; ///< as last told
};

} // namespace zelsplib
