// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactManagerBase.h>

#include <splib/RegistrationHandler.h>
#include <splib/contacts/AvatarRequest.h>
#include <splib/contacts/PlatformContactJsonAdapter.h>
#include <splib/log/Logging.h>

#include <iface/ObservableTracker.h>

#include <QtCore/QStringBuilder>

#include <algorithm>
#include <functional>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

PlatformContactManagerBase::PlatformContactManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                                                       const QSharedPointer<zel::JsonStream>& stream,
                                                       RegistrationHandler* readiness, QObject* parent)
    : QObject(parent)
    , m_multiplexer(multiplexer)
    , m_stream(stream)
    , m_readiness(readiness)
    , m_avatarRequests(stream, std::bind_front(&PlatformContactManagerBase::sendRequest, this))
{
}

PlatformContactManagerBase::~PlatformContactManagerBase()
{
    // Others may hold the view.
    const auto nothing = [](const auto&...) {};
    m_view->setAddFunction(nothing);
    m_view->setRemoveFunction(nothing);
    m_view->setUpdateFunction(nothing);
    m_view->setChangeFunction(nothing);
    if (!m_ids)
        return;
    m_ids->setResentFunction(nothing);
    m_stream->pipe()->removeListeners(this);
}

void PlatformContactManagerBase::init()
{
    if (m_ids)
        return;
    m_ids = new ContactIds(m_multiplexer, QSharedPointer<PlatformUserJsonAdapter>::create(), u"platformContact"_s, {},
                           ContactIds::Keys::Distinct);
    m_ids->setResentFunction([this] { listResent(); });
    m_records = new ContactRecords(m_multiplexer, m_ids);

    m_replacement.follow(*m_ids);
    m_view->setInput(initializedContacts(m_ids, m_records));

    m_view->setRemoveFunction(std::bind_front(&PlatformContactManagerBase::aboutToRemove, this));
    m_view->setAddFunction(std::bind_front(&PlatformContactManagerBase::aboutToAdd, this));
    m_view->setUpdateFunction(std::bind_front(&PlatformContactManagerBase::aboutToUpdate, this));
    m_view->setChangeFunction(std::bind_front(&PlatformContactManagerBase::aboutToChange, this));

    m_streamAdapter = std::make_unique<zel::JsonStreamFunctorAdapter>(
        m_stream, std::bind_front(&PlatformContactManagerBase::streamDataAvailable, this));
    m_stream->pipe()->addListener(this, u"connectionInvitationReceived"_s,
                                  std::bind_front(&PlatformContactManagerBase::connInvitationReceivedCallback, this));
    m_readinessCheck = std::make_unique<iface::RunUntilTrue>([this] { return checkUserListState(); }, nullptr,
                                                             u"PlatformContactManager"_s);
}

void PlatformContactManagerBase::setEventsEnabled(bool enabled)
{
    m_eventsEnabled = enabled;
    if (enabled)
        ++m_listenerCount;
}

bool PlatformContactManagerBase::hasApplication(const PlatformContact& contact) const
{
    const QString userId = contact.getUri();
    return m_ids && m_ids->locateItem(userId) != -1 && getContact(userId).getHandle() == contact.getHandle();
}

PlatformContact PlatformContactManagerBase::getContact(const QString& userId) const
{
    return m_records->contents(userId);
}

void PlatformContactManagerBase::getContactList()
{
    if (!m_listReady)
        Log<ZELSP_CONTACTS_NOT_READY>({}, "getContactList");
    report([this, contacts = m_view->toList()] { reportList(contacts); });
}

/// Every change of a record reaches the view before this runs, so comparing lengths tells as much as looking at every
/// record: the view is as long as the list when all have a handle.
bool PlatformContactManagerBase::checkUserListState()
{
    if (m_listReady) // what the application did with it has thrown
        return true;
    if (m_ids->isIncomplete())
        return false;
    const int listed = iface::ObservableList<QString>(m_ids.data()).size();
    if (contactList().size() < listed)
        return false;
    Log<GENERAL_INFO>({}, "PlatformContactManager::checkUserListState(): All contacts are initialized. "
                          "PlatformContact list is ready.");
    m_listReady = true;
    // Reading is what the check depends on; what the application then does is not.
    iface::ObservableTracker::runUntracked([this] { m_readiness->contactsIsReady(); });
    return true;
}

void PlatformContactManagerBase::listResent()
{
    m_records->doubtUnlisted();
    if (m_eventsEnabled)
        report([this] { reportListResent(); });
}

void PlatformContactManagerBase::aboutToAdd(int, const PlatformContact& contact)
{
    if (isReporting() && m_listReady)
        report([this, contact] { reportInstalled(contact); });
}

/// Not held back until the list is ready, as adding is: on purpose.
void PlatformContactManagerBase::aboutToRemove(int, const PlatformContact& contact)
{
    if (isReporting())
        report([this, contact] { reportUninstalled(contact); });
}

void PlatformContactManagerBase::aboutToUpdate(int, const PlatformContact& before, const PlatformContact& after)
{
    if (!isReporting())
        return;
    m_events.post([this, before, after] { reportUpdated(before, after); });
    m_events.post([this, before, after] { followAvatar(before, after); });
    m_events.deliver();
}

/// The traces are put together only where they are taken.
void PlatformContactManagerBase::followAvatar(const PlatformContact& before, const PlatformContact& after)
{
    const QString old = before.getAvatarId();
    const QString now = after.getAvatarId();
    if (old == now) {
        Log<GENERAL_DEBUG_INFO>(
            {}, u"PlatformContactManager::aboutToUpdate(): oldState.getAvatarId()==newState.getAvatarId()=="_s % now %
                    u"; ignoring"_s);
        return;
    }
    Log<GENERAL_DEBUG_INFO>({}, u"PlatformContactManager::aboutToUpdate(): oldState.getAvatarId()="_s % old %
                                    u", newState.getAvatarId()="_s % now);
    retrieveAvatar(after.getUri());
}

void PlatformContactManagerBase::aboutToChange(ChangeType::Type type, const QSharedPointer<IndexMapper>&,
                                               const QList<PlatformContact>& before,
                                               const QList<PlatformContact>& after)
{
    if (!isReporting())
        return;
    if (type == ChangeType::IndexesChanged) {
        // What the longer list has beyond the shorter is reported as gone, also when the new list is the longer one:
        // on purpose.
        const QList<PlatformContact>& longer = before.size() > after.size() ? before : after;
        for (qsizetype i = std::min(before.size(), after.size()); i < longer.size(); ++i)
            m_events.post([this, contact = longer.at(i)] { reportUninstalled(contact); });
    } else if (type == ChangeType::DataChanged && before.size() == after.size()) {
        for (qsizetype i = 0; i < before.size(); ++i)
            m_events.post([this, old = before.at(i), now = after.at(i)] { reportUpdated(old, now); });
    }
    m_events.deliver();
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
    m_avatarRequests.cancel(userId);
    report([this, contact] { reportAvatar(contact); });
    return true;
}

/// Also for what has had no answer, by when the contact may have another picture.
void PlatformContactManagerBase::sendRequest(const QString& userId, const QString& streamId)
{
    const PlatformContact contact = getContact(userId);
    if (contact.isInitialized() && contact.getAvatarId() != streamId)
        retrieveAvatar(userId);
    else
        sendAvatarRequest(*m_stream->pipe(), userId, streamId);
}

void PlatformContactManagerBase::streamDataAvailable(const QString& streamId, const QVariant& data)
{
    const QByteArray bytes = data.toByteArray();
    const QStringList users = m_avatarRequests.take(streamId, bytes);
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
        if (m_eventsEnabled)
            m_events.post([this, contact] { reportAvatar(contact); });
    }
    m_events.deliver();
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
    if (m_eventsEnabled)
        report([this, contact] { reportInvitation(contact); });
}

} // namespace zelsplib
