// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalsManagerBase.h>

#include <splib/JsonFields.h>
#include <splib/RegistrationHandler.h>
#include <splib/contacts/AvatarRequest.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/GlobalVarsJsonAdapter.h>
#include <splib/log/Logging.h>

#include <iface/ObserverFunctorAdapter.h>

#include <QtCore/QMetaObject>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

GlobalsManagerBase::GlobalsManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& listApi,
                                       const QSharedPointer<zel::JsonStream>& jsonStream,
                                       RegistrationHandler* registrationHandler)
    : m_jsonStream(jsonStream)
    , m_registrationHandler(registrationHandler)
    , m_globalMap(GlobalMap::create(listApi, QSharedPointer<GlobalVarsJsonAdapter>::create(), u"global"_s, {}))
    , m_registration(
          [this](const QString& uuid, bool silent) {
              m_jsonStream->pipe()->send(makeRequest("registrationRequest", "uuid", uuid, "silent", silent));
          },
          [this] { readAgain(globalnames::permission()); })
    , m_ownPicture(
          jsonStream,
          {[this](const Avatar& avatar) { sendAvatar(avatar); }, [this] { readAgain(globalnames::platformProfile()); },
           [this](const QString& streamId) { sendAvatarRequest(*m_jsonStream->pipe(), m_profile.getUri(), streamId); },
           [this](const QByteArray& data) { postAvatar(data); }})
{
    qRegisterMetaType<PlatformPermissions>("zelsplib::PlatformPermissions");
    qRegisterMetaType<PlatformContact>("zelsplib::PlatformContact");

    follow(globalnames::permission(), &GlobalsManagerBase::permissionCallback);

    const auto pipe = m_jsonStream->pipe();
    pipe->addListener(this, u"requestNewAvatarImage"_s,
                      std::bind_front(&GlobalsManagerBase::requestUserAvatarCallback, this));
    pipe->addListener(this, u"profileChangeResponse"_s,
                      std::bind_front(&GlobalsManagerBase::profileChangeResponseCallback, this));
    pipe->addListener(this, u"listChunk"_s, std::bind_front(&GlobalsManagerBase::listChunkCallback, this));
}

void GlobalsManagerBase::init()
{
    m_streamAdapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        m_jsonStream, std::bind_front(&GlobalsManagerBase::streamDataAvailable, this));
    follow(globalnames::platformProfile(), &GlobalsManagerBase::platformProfileCallback);
}

/// The values are watched directly and not by a monitor: a monitor runs again only when its function has returned, and
/// here the application's slots run inside it, for as long as a dialog stays open.
void GlobalsManagerBase::follow(const QString& name, void (GlobalsManagerBase::*changed)())
{
    const auto value = m_globalMap->get(name);
    value.impl()->addObserver(new iface::ObserverFunctorAdapter(std::bind_front(changed, this), this));
    // What has arrived unasked is looked at from the event loop, not from within the caller.
    QMetaObject::invokeMethod(this, changed, Qt::QueuedConnection);
}

/// News of it may have been lost. Nobody waits for the answer: without a cookie it is nobody's.
void GlobalsManagerBase::readAgain(const QString& name) const
{
    m_globalMap->requestListElements({name}, {});
}

void GlobalsManagerBase::sendRegistration(const QString& uuid, bool silent)
{
    const QString state = getAccessCode();
    if (state == globalnames::success()) {
        pushRegistrationEvent(state);
        return;
    }
    m_registration.begin(uuid, silent);
}

void GlobalsManagerBase::sendTpaApi(const QString& apiType)
{
    m_jsonStream->pipe()->send(makeRequest("tpaApi", "apiType", apiType));
}

PlatformPermissions GlobalsManagerBase::getPermissions() const
{
    return m_globalMap->get(globalnames::permission()).getValue().value.value<PlatformPermissions>();
}

PlatformContact GlobalsManagerBase::getMyProfile() const
{
    return m_globalMap->get(globalnames::platformProfile()).getValue().value.value<PlatformContact>();
}

void GlobalsManagerBase::setMyProfile(const PlatformContact& contact)
{
    m_globalMap->requestListChange({GlobalVar{globalnames::platformProfile(), QVariant::fromValue(contact)}});
}

void GlobalsManagerBase::sendAvatar(const Avatar& avatar)
{
    PlatformContact change;
    change.setAvatarId(avatar.getHash());
    change.setAvatarMimeType(avatar.getMimeType());
    setMyProfile(change);
}

void GlobalsManagerBase::setUserProfileAvatar(const QByteArray& data)
{
    postAvatar(data);
    m_events.deliver();
}

void GlobalsManagerBase::postAvatar(const QByteArray& data)
{
    m_picture = data;
    // The bytes go with the record that they belong to: who hears of them reads the picture's type there.
    PlatformContact profile = m_profile;
    profile.setAvatarData(data);
    m_events.post([this, profile] { pushAvatarChanged(profile); });
    m_events.post([this] { m_registrationHandler->userProfileAvatarIsReady(); });
}

void GlobalsManagerBase::permissionCallback()
{
    const PlatformPermissions permissions = getPermissions();
    const PlatformPermissions before = std::exchange(m_permissions, permissions);
    const QString state = permissions.registrationState;
    if (state == before.registrationState)
        return;
    m_registration.handleState(state);
    // The application hears of its success later, from the facade, when all that belongs to it is there.
    if (state == globalnames::success())
        m_events.post([this] { m_registrationHandler->registered(); });
    else
        m_events.post([this, state] { pushRegistrationEvent(state); });
    m_events.deliver();
}

void GlobalsManagerBase::platformProfileCallback()
{
    const PlatformContact profile = getMyProfile();
    const PlatformContact before = std::exchange(m_profile, profile);
    const bool avatarChanged = profile.getAvatarId() != before.getAvatarId();
    if (m_profileInitialized) {
        postProfileChanges(before, profile);
    } else if (!profile.getUri().isNull()) {
        m_profileInitialized = true;
        m_events.post([this] { m_registrationHandler->userProfileIsReady(); });
        // Nothing changes for a profile that comes without a picture, so nothing else would say that there is none.
        if (!avatarChanged && profile.getAvatarId().isEmpty())
            postAvatar({});
    }
    if (avatarChanged)
        m_ownPicture.follow(profile.getAvatarId());
    m_events.deliver();
}

void GlobalsManagerBase::postProfileChanges(const PlatformContact& before, const PlatformContact& after)
{
    PlatformContact profile = after;
    profile.setAvatarData(m_picture);
    if (before.getDisplayName() != after.getDisplayName())
        m_events.post([this, profile] { pushDisplayNameChanged(profile); });
    if (before.getPersonalMessage() != after.getPersonalMessage())
        m_events.post([this, profile] { pushPersonalMessageChanged(profile); });
    if (before.getStatusMessage() != after.getStatusMessage() || before.getShowBusy() != after.getShowBusy())
        m_events.post([this, profile] { pushStatusChanged(profile); });
}

/// An answer that tells the state as it was is heard by nobody who follows the list.
void GlobalsManagerBase::listChunkCallback(QObject*, const iface::JsonReaderAttribute& message)
{
    const iface::JsonObjectReader listChunk = message.object();
    QString type;
    QString id;
    listChunk.readFields("type", type, "id", id);
    if (type != m_globalMap->type() || !id.isEmpty())
        return;
    const iface::JsonArrayReader elements = listChunk["elements"].array();
    for (int i = 0, count = elements.numChildren(); i < count; ++i) {
        QString name;
        elements[i].object().readString("name", name);
        if (name == globalnames::permission())
            m_registration.handleAnswer();
    }
}

void GlobalsManagerBase::requestUserAvatarCallback(QObject*, const iface::JsonReaderAttribute& message)
{
    QString streamId;
    message.object().readString("streamId", streamId);
    avatarRequested(streamId);
}

void GlobalsManagerBase::profileChangeResponseCallback(QObject*, const iface::JsonReaderAttribute& message)
{
    QString status;
    const bool isRefused = message.object().readString("status", status) && status != globalnames::success();
    m_ownPicture.handleResponse(isRefused, m_profile.getAvatarId());
    m_events.deliver();
}

void GlobalsManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    const QByteArray picture = data.toByteArray();
    if (!m_ownPicture.handleData(streamId, picture))
        return;
    Log<ZELSP_AVATAR_RECEIVED>({}, m_profile.getUri(), streamId, static_cast<unsigned>(picture.size()));
    m_events.deliver();
}

} // namespace zelsplib
