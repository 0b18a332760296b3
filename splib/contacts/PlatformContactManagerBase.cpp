// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactManagerBase.h>

#include <splib/EventQueue.h>
#include <splib/RegistrationHandler.h>
#include <splib/channel/StreamRequests.h>
#include <splib/contacts/AvatarRequest.h>
#include <splib/contacts/ContactLists.h>
#include <splib/contacts/PlatformUserJsonAdapter.h>
#include <splib/log/Logging.h>

#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/JsonWriter.h>

#include <iface/CachedObservableList.h>
#include <iface/ObservableTracker.h>
#include <iface/RunUntilTrue.h>

#include <algorithm>
#include <functional>
#include <utility>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

namespace {

using ContactView = iface::CachedObservableList<PlatformContact>;

constexpr int debugSeverity = 7;

} // namespace

struct PlatformContactManagerBase::Private
{
    QSharedPointer<zel::ListApiMultiplexer> multiplexer;
    const QSharedPointer<zel::JsonStream> stream;
    RegistrationHandler* readiness = nullptr;

    QExplicitlySharedDataPointer<ContactIds> ids; ///< this and the records are null until init()
    ContactRecords::Pointer records;
    QExplicitlySharedDataPointer<ContactView> view{new ContactView};
    ReplacementMark replacement;
    StreamRequests avatarRequests; ///< by user
    EventQueue events;
    bool eventsEnabled = false;
    int listenerCount = 0;
    bool listReady = false;

    std::unique_ptr<zel::JsonStreamFunctorAdapter> streamAdapter;
    std::unique_ptr<iface::RunUntilTrue> readinessCheck;

    Private(PlatformContactManagerBase* manager, const QSharedPointer<zel::JsonStream>& jsonStream)
        : stream(jsonStream)
        , avatarRequests(jsonStream, [manager](const QString& userId, const QString& streamId) {
            manager->sendRequest(userId, streamId);
        })
    {
    }

    bool isReporting() const { return eventsEnabled && !replacement.isNow(); }
    void report(std::function<void()> event)
    {
        events.post(std::move(event));
        events.deliver();
    }
};

PlatformContactManagerBase::PlatformContactManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                                                       const QSharedPointer<zel::JsonStream>& stream,
                                                       RegistrationHandler* readiness, QObject* parent)
    : QObject(parent)
    , d(new Private(this, stream))
{
    d->multiplexer = multiplexer;
    d->readiness = readiness;
}

PlatformContactManagerBase::~PlatformContactManagerBase()
{
    // Others may hold the view.
    d->view->setAddFunction([](int, const PlatformContact&) {});
    d->view->setRemoveFunction([](int, const PlatformContact&) {});
    d->view->setUpdateFunction([](int, const PlatformContact&, const PlatformContact&) {});
    d->view->setChangeFunction([](ChangeType::Type, const QSharedPointer<IndexMapper>&, const QList<PlatformContact>&,
                                  const QList<PlatformContact>&) {});
    if (!d->ids)
        return;
    d->ids->setResentFunction([] {});
    d->stream->pipe()->removeListeners(this);
}

void PlatformContactManagerBase::init()
{
    if (d->ids)
        return;
    d->ids = new ContactIds(d->multiplexer, QSharedPointer<PlatformUserJsonAdapter>::create(), u"platformContact"_s, {},
                            ContactIds::Keys::Distinct);
    d->ids->setResentFunction([this] { listResent(); });
    d->records = new ContactRecords(d->multiplexer, d->ids);

    d->replacement.follow(*d->ids);
    d->view->setInput(initializedContacts(d->ids, d->records));

    d->view->setRemoveFunction([this](int index, const PlatformContact& contact) { aboutToRemove(index, contact); });
    d->view->setAddFunction([this](int index, const PlatformContact& contact) { aboutToAdd(index, contact); });
    d->view->setUpdateFunction([this](int index, const PlatformContact& before, const PlatformContact& after) {
        aboutToUpdate(index, before, after);
    });
    d->view->setChangeFunction(
        [this](ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper, const QList<PlatformContact>& before,
               const QList<PlatformContact>& after) { aboutToChange(type, mapper, before, after); });

    d->streamAdapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        d->stream, [this](const QString& streamId, const QVariant& data) { streamDataAvailable(streamId, data); });
    d->stream->pipe()->addListener(this, u"connectionInvitationReceived"_s,
                                   [this](QObject* sender, const iface::JsonReaderAttribute& message) {
                                       connInvitationReceivedCallback(sender, message);
                                   });
    d->readinessCheck = std::make_unique<iface::RunUntilTrue>([this] { return checkUserListState(); }, nullptr,
                                                              u"PlatformContactManager"_s);
}

void PlatformContactManagerBase::setEventsEnabled(bool enabled)
{
    d->eventsEnabled = enabled;
    if (enabled)
        ++d->listenerCount;
}

bool PlatformContactManagerBase::eventsEnabled() const
{
    return d->eventsEnabled;
}

int PlatformContactManagerBase::listenerCount() const
{
    return d->listenerCount;
}

bool PlatformContactManagerBase::isListReady() const
{
    return d->listReady;
}

bool PlatformContactManagerBase::hasApplication(const PlatformContact& contact) const
{
    const QString userId = contact.getUri();
    return d->ids && d->ids->locateItem(userId) != -1 && getContact(userId).getHandle() == contact.getHandle();
}

PlatformContact PlatformContactManagerBase::getContact(const QString& userId) const
{
    return d->records->contents(userId);
}

void PlatformContactManagerBase::getContactList()
{
    if (!d->listReady)
        Log<ZELSP_CONTACTS_NOT_READY>({}, "getContactList");
    d->report([this, contacts = d->view->toList()] { reportList(contacts); });
}

iface::ObservableList<PlatformContact> PlatformContactManagerBase::contactList() const
{
    return iface::ObservableList<PlatformContact>(d->view.data());
}

/// Every change of a record reaches the view before this runs, so comparing lengths tells as much as looking at every
/// record: the view is as long as the list when all have a handle.
bool PlatformContactManagerBase::checkUserListState()
{
    if (d->listReady) // what the application did with it has thrown
        return true;
    if (d->ids->isIncomplete())
        return false;
    const int listed = iface::ObservableList<QString>(d->ids.data()).size();
    if (contactList().size() < listed)
        return false;
    Log<GENERAL_INFO>({}, "PlatformContactManager::checkUserListState(): All contacts are initialized. "
                          "PlatformContact list is ready.");
    d->listReady = true;
    // Reading is what the check depends on; what the application then does is not.
    iface::ObservableTracker::runUntracked([this] { d->readiness->contactsIsReady(); });
    return true;
}

void PlatformContactManagerBase::listResent()
{
    d->records->doubtUnlisted();
    if (d->eventsEnabled)
        d->report([this] { reportListResent(); });
}

void PlatformContactManagerBase::aboutToAdd(int, const PlatformContact& contact)
{
    if (d->isReporting() && d->listReady)
        d->report([this, contact] { reportInstalled(contact); });
}

/// Not held back until the list is ready, as adding is: on purpose.
void PlatformContactManagerBase::aboutToRemove(int, const PlatformContact& contact)
{
    if (d->isReporting())
        d->report([this, contact] { reportUninstalled(contact); });
}

void PlatformContactManagerBase::aboutToUpdate(int, const PlatformContact& before, const PlatformContact& after)
{
    if (!d->isReporting())
        return;
    d->events.post([this, before, after] { reportUpdated(before, after); });
    d->events.post([this, before, after] { followAvatar(before, after); });
    d->events.deliver();
}

void PlatformContactManagerBase::followAvatar(const PlatformContact& before, const PlatformContact& after)
{
    const bool isTraced = device::isLogged(debugSeverity);
    if (before.getAvatarId() == after.getAvatarId()) {
        if (isTraced)
            Log<GENERAL_DEBUG_INFO>({}, u"PlatformContactManager::aboutToUpdate(): "
                                        "oldState.getAvatarId()==newState.getAvatarId()=="_s +
                                            after.getAvatarId() + u"; ignoring"_s);
        return;
    }
    if (isTraced)
        Log<GENERAL_DEBUG_INFO>({}, u"PlatformContactManager::aboutToUpdate(): "
                                    "oldState.getAvatarId()="_s +
                                        before.getAvatarId() + u", newState.getAvatarId()="_s + after.getAvatarId());
    retrieveAvatar(after.getUri());
}

void PlatformContactManagerBase::aboutToChange(ChangeType::Type type, const QSharedPointer<IndexMapper>&,
                                               const QList<PlatformContact>& before,
                                               const QList<PlatformContact>& after)
{
    if (!d->isReporting())
        return;
    if (type == ChangeType::IndexesChanged) {
        // What the longer list has beyond the shorter is reported as gone, also when the new list is the longer one:
        // on purpose.
        const QList<PlatformContact>& longer = before.size() > after.size() ? before : after;
        for (qsizetype i = std::min(before.size(), after.size()); i < longer.size(); ++i)
            d->events.post([this, contact = longer.at(i)] { reportUninstalled(contact); });
    } else if (type == ChangeType::DataChanged && before.size() == after.size()) {
        for (qsizetype i = 0; i < before.size(); ++i)
            d->events.post([this, old = before.at(i), now = after.at(i)] { reportUpdated(old, now); });
    }
    d->events.deliver();
}

bool PlatformContactManagerBase::retrieveAvatar(const QString& userId)
{
    if (userId.isEmpty()) {
        Log<GENERAL_ERROR>({}, "PlatformContactManager::retrieveAvatar(): Unable to process empty userId; ignoring");
        return false;
    }
    const PlatformContact contact = getContact(userId);
    if (!contact.isInitialized()) {
        Log<GENERAL_ERROR>({}, "PlatformContactManager::retrieveAvatar(): Platform contact is not initialized");
        return false;
    }
    if (!contact.getAvatarId().isEmpty()) { // whose bytes are never kept
        requestAvatar(contact.getAvatarId(), userId);
        return true;
    }
    d->avatarRequests.cancel(userId);
    d->report([this, contact] { reportAvatar(contact); });
    return true;
}

void PlatformContactManagerBase::requestAvatar(const QString& streamId, const QString& userId)
{
    d->avatarRequests.request(userId, streamId);
}

/// Also for what has had no answer, by when the contact may have another picture.
void PlatformContactManagerBase::sendRequest(const QString& userId, const QString& streamId)
{
    const PlatformContact contact = getContact(userId);
    if (contact.isInitialized() && contact.getAvatarId() != streamId)
        retrieveAvatar(userId);
    else
        sendAvatarRequest(*d->stream->pipe(), userId, streamId);
}

void PlatformContactManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    const QByteArray bytes = data.toByteArray();
    const QStringList users = d->avatarRequests.take(streamId, bytes);
    for (const QString& userId : users) {
        PlatformContact contact = getContact(userId);
        if (!contact.isInitialized())
            continue;
        if (contact.getAvatarId() != streamId) {
            retrieveAvatar(userId);
            continue;
        }
        contact.setAvatarData(bytes);
        Log<ZELSP_AVATAR_RECEIVED>({}, userId, streamId, bytes.size());
        if (d->eventsEnabled)
            d->events.post([this, contact] { reportAvatar(contact); });
    }
    d->events.deliver();
}

void PlatformContactManagerBase::connInvitationReceivedCallback(QObject*, const iface::JsonReaderAttribute& message)
{
    QString userId;
    message.object().readString("userId", userId);
    invitationReceived(userId);
}

void PlatformContactManagerBase::invitationReceived(const QString& userId)
{
    const PlatformContact contact = getContact(userId);
    if (d->eventsEnabled)
        d->report([this, contact] { reportInvitation(contact); });
}

} // namespace zelsplib
