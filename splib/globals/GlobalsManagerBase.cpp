// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalsManagerBase.h>

#include <splib/EventQueue.h>
#include <splib/JsonFields.h>
#include <splib/RegistrationHandler.h>
#include <splib/contacts/AvatarRequest.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/GlobalVarsJsonAdapter.h>
#include <splib/globals/OwnPicture.h>
#include <splib/globals/RegistrationRequest.h>
#include <splib/log/Logging.h>

#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/LiveMap.h>

#include <iface/ObserverFunctorAdapter.h>

#include <QtCore/QMetaObject>

#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

struct GlobalsManagerBase::Private
{
    using GlobalMap = zel::LiveMap<QString, GlobalVar>;

    const QSharedPointer<zel::JsonStream> jsonStream;
    RegistrationHandler* const registrationHandler;
    const GlobalMap::Pointer globalMap;
    std::unique_ptr<zel::JsonStreamFunctorAdapter> streamAdapter;
    EventQueue events;

    RegistrationRequest registration;
    PlatformPermissions permissions; ///< as last told
    PlatformContact profile;         ///< as last told, without its picture
    bool profileInitialized = false;

    OwnPicture ownPicture;
    QByteArray picture; ///< as last told

    Private(GlobalsManagerBase* manager, const QSharedPointer<zel::ListApiMultiplexer>& listApi,
            const QSharedPointer<zel::JsonStream>& stream, RegistrationHandler* handler)
        : jsonStream(stream)
        , registrationHandler(handler)
        , globalMap(GlobalMap::create(listApi, QSharedPointer<GlobalVarsJsonAdapter>::create(), u"global"_s, {}))
        , registration({[this](const QString& uuid, bool silent) { sendRegistration(uuid, silent); },
                        [this] { readAgain(globalnames::permission()); }})
        , ownPicture(stream, {[this](const Avatar& avatar) { sendAvatar(avatar); },
                              [this] { readAgain(globalnames::platformProfile()); },
                              [this](const QString& streamId) { sendAvatarRequest(streamId); },
                              [manager](const QByteArray& data) { manager->postAvatar(data); }})
    {
    }

    /// News of it may have been lost. Nobody waits for the answer: without a cookie it is nobody's.
    void readAgain(const QString& name) const { globalMap->requestListElements({name}, QString()); }

    void sendRegistration(const QString& uuid, bool silent) const
    {
        jsonStream->pipe()->send(makeRequest("registrationRequest", "uuid", uuid, "silent", silent));
    }

    /// An answer that tells the state as it was is heard by nobody who follows the list.
    void handleListChunk(const iface::JsonObjectReader& listChunk)
    {
        QString type;
        QString id;
        listChunk.readFields("type", type, "id", id);
        if (type != globalMap->type() || !id.isEmpty())
            return;
        const iface::JsonArrayReader elements = listChunk["elements"].array();
        for (int i = 0, count = elements.numChildren(); i < count; ++i) {
            QString name;
            elements[i].object().readString("name", name);
            if (name == globalnames::permission())
                registration.handleAnswer();
        }
    }

    void sendProfile(const PlatformContact& change) const
    {
        QList<GlobalVar> changes{{globalnames::platformProfile(), QVariant::fromValue(change)}};
        globalMap->requestListChange(changes);
    }

    void sendAvatar(const Avatar& avatar) const
    {
        PlatformContact change;
        change.setAvatarId(avatar.getHash());
        change.setAvatarMimeType(avatar.getMimeType());
        sendProfile(change);
    }

    void sendAvatarRequest(const QString& streamId) const
    {
        zelsplib::sendAvatarRequest(*jsonStream->pipe(), profile.getUri(), streamId);
    }

    /// The values are watched directly and not by a monitor: a monitor runs again only when its function has returned,
    /// and here the application's slots run inside it, for as long as a dialog stays open.
    void follow(QObject* owner, const QString& name, const std::function<void()>& changed) const
    {
        const auto value = globalMap->get(name);
        value.impl()->addObserver(new iface::ObserverFunctorAdapter(changed, owner));
        // What has arrived unasked is looked at from the event loop, not from within the caller.
        QMetaObject::invokeMethod(owner, changed, Qt::QueuedConnection);
    }
};

GlobalsManagerBase::GlobalsManagerBase(QSharedPointer<zel::ListApiMultiplexer> listApi,
                                       QSharedPointer<zel::JsonStream> jsonStream,
                                       RegistrationHandler* registrationHandler)
    : d(new Private(this, listApi, jsonStream, registrationHandler))
{
    qRegisterMetaType<PlatformPermissions>("zelsplib::PlatformPermissions");
    qRegisterMetaType<PlatformContact>("zelsplib::PlatformContact");

    d->follow(this, globalnames::permission(), [this] { permissionCallback(); });

    const auto pipe = d->jsonStream->pipe();
    pipe->addListener(this, u"requestNewAvatarImage"_s, [this](QObject* sender, iface::JsonReaderAttribute message) {
        requestUserAvatarCallback(sender, message);
    });
    pipe->addListener(this, u"profileChangeResponse"_s, [this](QObject* sender, iface::JsonReaderAttribute message) {
        profileChangeResponseCallback(sender, message);
    });
    pipe->addListener(this, u"listChunk"_s, [this](QObject*, const iface::JsonReaderAttribute& message) {
        d->handleListChunk(message.object());
    });
}

GlobalsManagerBase::~GlobalsManagerBase() = default;

void GlobalsManagerBase::init()
{
    d->streamAdapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        d->jsonStream, [this](const QString& id, const QVariant& data) { streamDataAvailable(id, data); });
    d->follow(this, globalnames::platformProfile(), [this] { platformProfileCallback(); });
}

void GlobalsManagerBase::sendRegistration(const QString& uuid, bool silent)
{
    const QString state = getAccessCode();
    if (state == globalnames::success()) {
        pushPermissionEvent(state);
        return;
    }
    d->registration.begin(uuid, silent);
}

void GlobalsManagerBase::sendTpaApi(const QString& apiType)
{
    d->jsonStream->pipe()->send(makeRequest("tpaApi", "apiType", apiType));
}

PlatformPermissions GlobalsManagerBase::getPermissions() const
{
    return d->globalMap->get(globalnames::permission()).getValue().value.value<PlatformPermissions>();
}

QString GlobalsManagerBase::getAccessCode() const
{
    return getPermissions().registrationState;
}

PlatformContact GlobalsManagerBase::getMyProfile() const
{
    return d->globalMap->get(globalnames::platformProfile()).getValue().value.value<PlatformContact>();
}

QByteArray GlobalsManagerBase::getMyAvatar() const
{
    return d->picture;
}

void GlobalsManagerBase::setMyProfile(const PlatformContact& contact)
{
    d->sendProfile(contact);
}

bool GlobalsManagerBase::setProfileAvatar(Avatar::ImageType type, const char* data, unsigned int size)
{
    return d->ownPicture.offer(type, data, size);
}

void GlobalsManagerBase::requestProfileAvatar()
{
    d->ownPicture.request(d->profile.getAvatarId());
}

void GlobalsManagerBase::setUserProfileAvatar(const QByteArray& data)
{
    postAvatar(data);
    d->events.deliver();
}

void GlobalsManagerBase::postAvatar(const QByteArray& data)
{
    d->picture = data;
    // The bytes go with the record that they belong to: who hears of them reads the picture's type there.
    PlatformContact profile = d->profile;
    profile.setAvatarData(data);
    d->events.post([this, profile] { pushAvatarChanged(profile); });
    d->events.post([this] { d->registrationHandler->userProfileAvatarIsReady(); });
}

void GlobalsManagerBase::avatarRequested(const QString& streamId)
{
    d->ownPicture.handleRequest(streamId);
}

void GlobalsManagerBase::pushRegistrationEvent(const QString& state)
{
    pushPermissionEvent(state);
}

void GlobalsManagerBase::permissionCallback()
{
    const PlatformPermissions permissions = getPermissions();
    const PlatformPermissions before = std::exchange(d->permissions, permissions);
    const QString state = permissions.registrationState;
    if (state == before.registrationState)
        return;
    d->registration.handleState(state);
    // The application hears of its success later, from the facade, when all that belongs to it is there.
    if (state == globalnames::success())
        d->events.post([this] { d->registrationHandler->registered(); });
    else
        d->events.post([this, state] { pushPermissionEvent(state); });
    d->events.deliver();
}

void GlobalsManagerBase::platformProfileCallback()
{
    const PlatformContact profile = getMyProfile();
    const PlatformContact before = std::exchange(d->profile, profile);
    const bool avatarChanged = profile.getAvatarId() != before.getAvatarId();
    if (d->profileInitialized) {
        postProfileChanges(before, profile);
    } else if (!profile.getUri().isNull()) {
        d->profileInitialized = true;
        d->events.post([this] { d->registrationHandler->userProfileIsReady(); });
        // Nothing changes for a profile that comes without a picture, so nothing else would say that there is none.
        if (!avatarChanged && profile.getAvatarId().isEmpty())
            postAvatar({});
    }
    if (avatarChanged)
        d->ownPicture.follow(profile.getAvatarId());
    d->events.deliver();
}

void GlobalsManagerBase::postProfileChanges(const PlatformContact& before, const PlatformContact& after)
{
    PlatformContact profile = after;
    profile.setAvatarData(d->picture);
    if (before.getDisplayName() != after.getDisplayName())
        d->events.post([this, profile] { pushDisplayNameChanged(profile); });
    if (before.getPersonalMessage() != after.getPersonalMessage())
        d->events.post([this, profile] { pushPersonalMessageChanged(profile); });
    if (before.getStatusMessage() != after.getStatusMessage() || before.getShowBusy() != after.getShowBusy())
        d->events.post([this, profile] { pushStatusChanged(profile); });
}

void GlobalsManagerBase::requestUserAvatarCallback(QObject*, iface::JsonReaderAttribute message)
{
    QString streamId;
    message.object().readString("streamId", streamId);
    avatarRequested(streamId);
}

void GlobalsManagerBase::profileChangeResponseCallback(QObject*, iface::JsonReaderAttribute message)
{
    QString status;
    const bool isRefused = message.object().readString("status", status) && status != globalnames::success();
    d->ownPicture.handleResponse(isRefused, d->profile.getAvatarId());
    d->events.deliver();
}

void GlobalsManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    const QByteArray picture = data.toByteArray();
    if (!d->ownPicture.handleData(streamId, picture))
        return;
    Log<ZELSP_AVATAR_RECEIVED>({}, d->profile.getUri(), streamId, static_cast<unsigned>(picture.size()));
    d->events.deliver();
}

} // namespace zelsplib
