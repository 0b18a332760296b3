// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalsManagerBase.h>

#include <splib/EventQueue.h>
#include <splib/RegistrationHandler.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/GlobalVarsJsonAdapter.h>
#include <splib/log/Logging.h>

#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/JsonWriter.h>
#include <zel/LiveMap.h>

#include <iface/ObserverFunctorAdapter.h>
#include <iface/RetryTimer.h>

#include <QExplicitlySharedDataPointer>
#include <QMetaObject>
#include <QSharedDataPointer>
#include <QStringView>

#include <functional>
#include <utility>

namespace zelsplib {

using namespace logging;

namespace {

constexpr QStringView success(u"Success");

} // namespace

struct GlobalsManagerBase::Private
{
    using GlobalMap = zel::LiveMap<QString, GlobalVar>;

    QSharedPointer<zel::ListApiMultiplexer> listApi;
    QSharedPointer<zel::JsonStream> jsonStream;
    RegistrationHandler* registrationHandler;
    GlobalMap::Pointer globalMap;
    std::unique_ptr<zel::JsonStreamFunctorAdapter> streamAdapter;
    EventQueue events;

    PlatformPermissions permissions; ///< as last told
    PlatformContact profile;         ///< as last told, without its picture
    bool profileInitialized = false;

    QByteArray picture;                          ///< the own picture as last told
    QSharedDataPointer<Avatar> pendingPicture;   ///< set by the application, not confirmed yet; null when none is
    QSharedDataPointer<Avatar> confirmedPicture; ///< the last one that was; the service may still ask for its bytes
    /// A request that was lost while the service was away would be pending for ever, and no other picture be taken.
    iface::RetryTimer pictureRetry{[this] { sendPendingPicture(); }};
    QString requestedAvatarId; ///< the stream that the profile's picture was asked for on, empty when it came
    QString announcedStreamId; ///< a stream that the service means to send the picture on, empty when it came

    void sendProfile(const PlatformContact& change) const
    {
        QList<GlobalVar> changes{{globalnames::platformProfile(), QVariant::fromValue(change)}};
        globalMap->requestListChange(changes);
    }

    void sendPendingPicture() const
    {
        PlatformContact change;
        change.setAvatarId(pendingPicture->getHash());
        change.setAvatarMimeType(pendingPicture->getMimeType());
        sendProfile(change);
    }

    QSharedDataPointer<Avatar> takePendingPicture()
    {
        pictureRetry.stop();
        return std::exchange(pendingPicture, {});
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
    : d(new Private)
{
    qRegisterMetaType<PlatformPermissions>("zelsplib::PlatformPermissions");
    qRegisterMetaType<PlatformContact>("zelsplib::PlatformContact");

    d->listApi = std::move(listApi);
    d->jsonStream = std::move(jsonStream);
    d->registrationHandler = registrationHandler;
    d->globalMap = Private::GlobalMap::create(d->listApi, QSharedPointer<GlobalVarsJsonAdapter>::create(),
                                              QStringLiteral("global"), {});
    d->follow(this, globalnames::permission(), [this] { permissionCallback(); });

    const auto pipe = d->jsonStream->pipe();
    pipe->addListener(
        this, QStringLiteral("requestNewAvatarImage"),
        [this](QObject* sender, iface::JsonReaderAttribute message) { requestUserAvatarCallback(sender, message); });
    pipe->addListener(this, QStringLiteral("profileChangeResponse"),
                      [this](QObject* sender, iface::JsonReaderAttribute message) {
                          profileChangeResponseCallback(sender, message);
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
    if (state == success) {
        pushPermissionEvent(state);
        return;
    }
    const auto request =
        QSharedPointer<zel::JsonWriter>::create(QStringLiteral("registrationRequest"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("uuid"), uuid);
    request->addAttribute(QStringLiteral("silent"), silent);
    d->jsonStream->pipe()->send(request);
}

void GlobalsManagerBase::sendTpaApi(const QString& apiType)
{
    const auto message = QSharedPointer<zel::JsonWriter>::create(QStringLiteral("tpaApi"), QStringLiteral("zel"));
    message->addAttribute(QStringLiteral("apiType"), apiType);
    d->jsonStream->pipe()->send(message);
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
    if (size == 0) {
        Log<GENERAL_ERROR>({}, "Avatar size == 0");
        return false;
    }
    if (!data) {
        Log<GENERAL_ERROR>({}, "Avatar data is null");
        return false;
    }
    if (size > DEFAULT_MAX_AVATAR_DATA_SIZE) {
        Log<GENERAL_ERROR>({}, QStringLiteral("Avatar size %1 exceeds %2").arg(size).arg(DEFAULT_MAX_AVATAR_DATA_SIZE));
        return false;
    }
    if (d->pendingPicture) {
        Log<GENERAL_ERROR>({},
                           "m_pendingAvatarSetRequest != 0; this request will be ignored since a request is already "
                           "pending");
        return false;
    }
    d->pendingPicture = new Avatar(type, QByteArray(data, static_cast<qsizetype>(size)));
    d->pictureRetry.start();
    d->sendPendingPicture();
    return true;
}

void GlobalsManagerBase::requestProfileAvatar()
{
    const QString userId = d->profile.getUri();
    d->requestedAvatarId = d->profile.getAvatarId();
    const auto request =
        QSharedPointer<zel::JsonWriter>::create(QStringLiteral("requestUserAvatar"), QStringLiteral("zel"));
    request->addAttribute(QStringLiteral("userId"), userId);
    request->addAttribute(QStringLiteral("streamId"), d->requestedAvatarId);
    Log<ZELSP_AVATAR_REQUEST_SEND>({}, userId, d->requestedAvatarId);
    d->jsonStream->pipe()->send(request);
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

void GlobalsManagerBase::postConfirmedAvatar()
{
    d->confirmedPicture = d->takePendingPicture();
    postAvatar(d->confirmedPicture.constData()->getData());
}

void GlobalsManagerBase::avatarRequested(const QString& streamId)
{
    if (streamId.isEmpty())
        return;
    const Avatar* pending = d->pendingPicture.constData();
    const Avatar* confirmed = d->confirmedPicture.constData();
    if (pending)
        d->jsonStream->send(streamId, pending->getData());
    else if (confirmed && confirmed->getHash() == streamId)
        d->jsonStream->send(streamId, confirmed->getData());
    else
        d->announcedStreamId = streamId;
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
    // The application hears of its success later, from the facade, when all that belongs to it is there.
    if (state == success)
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
        followAvatar(profile.getAvatarId());
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

void GlobalsManagerBase::followAvatar(const QString& avatarId)
{
    // Whatever was asked for is no longer the profile's picture.
    d->requestedAvatarId.clear();
    if (d->pendingPicture) {
        postConfirmedAvatar();
    } else if (avatarId.isEmpty()) {
        postAvatar({});
    } else {
        d->events.post([this, avatarId] {
            if (d->profile.getAvatarId() == avatarId)
                requestProfileAvatar();
        });
    }
}

void GlobalsManagerBase::requestUserAvatarCallback(QObject*, iface::JsonReaderAttribute message)
{
    QString streamId;
    message.object().readString("streamId", streamId);
    avatarRequested(streamId);
}

void GlobalsManagerBase::profileChangeResponseCallback(QObject*, iface::JsonReaderAttribute message)
{
    if (!d->pendingPicture)
        return;
    QString status;
    if (message.object().readString("status", status) && status != success) {
        Log<GENERAL_WARNING_INFO>({}, "the own picture was refused");
        d->takePendingPicture();
    } else if (d->pendingPicture.constData()->getHash() == d->profile.getAvatarId()) {
        // Setting the picture that the profile already has changes nothing that could confirm it.
        postConfirmedAvatar();
        d->events.deliver();
    }
}

void GlobalsManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    if (streamId.isEmpty() || (streamId != d->requestedAvatarId && streamId != d->announcedStreamId))
        return;
    for (QString* asked : {&d->requestedAvatarId, &d->announcedStreamId}) {
        if (*asked == streamId)
            asked->clear();
    }
    const QByteArray picture = data.toByteArray();
    Log<ZELSP_AVATAR_RECEIVED>({}, d->profile.getUri(), streamId, static_cast<unsigned>(picture.size()));
    setUserProfileAvatar(picture);
}

} // namespace zelsplib
