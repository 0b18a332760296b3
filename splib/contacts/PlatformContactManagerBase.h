// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/EventQueue.h>
#include <splib/channel/StreamRequests.h>
#include <splib/contacts/ContactLists.h>
#include <splib/contacts/PlatformContact.h>

#include <iface/CachedObservableList.h>
#include <iface/JsonReaderAttribute.h>
#include <iface/ObservableList.h>
#include <iface/RunUntilTrue.h>
#include <zel/JsonStream.h>
#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/ListApiMultiplexer.h>

#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <functional>
#include <memory>
#include <utility>

namespace zelsplib {

class RegistrationHandler;

/// Everything of the contact manager that does not depend on whom it reports to.
///
/// It mirrors the list of contact ids and the records behind them, and keeps one view: the record of every listed
/// user that has arrived with a handle, in list order. The view holds each of its records, so a change is seen
/// however long ago the record was last read.
///
/// Owned by the facade, which is also the readiness callback and outlives it. Lives on the thread of the event
/// loop. Every report may end in a slot of the application, so it may spin an event loop in which more messages
/// arrive; reports then still come once each and in order, and what the manager answers is already the new state.
///
/// A list that the core service sends anew as a whole is no news of single contacts: nothing is reported while the
/// view follows it, but that it has come once the view shows it. Contacts whose records arrive after that are reported
/// as installs.
class PlatformContactManagerBase : public QObject
{
    Q_OBJECT

public:
    PlatformContactManagerBase(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                               const QSharedPointer<zel::JsonStream>& stream, RegistrationHandler* readiness,
                               QObject* parent = nullptr);
    ~PlatformContactManagerBase() override;

    /// Starts mirroring. The lists are asked for from the event loop, not within the call. Calling it again does
    /// nothing.
    void init();

    /// While off (as at first) nothing is reported but the whole list and what retrieveAvatar() has at hand. Whoever
    /// begins to listen turns events on, also when they are on already.
    void setEventsEnabled(bool enabled);
    /// How many have begun to listen.
    int listenerCount() const { return m_listenerCount; }
    /// Whether every listed user's record has been there once; never turns back.
    bool isListReady() const { return m_listReady; }

    /// Whether the user of a record that was reported is still listed, and under the handle that stands in it.
    bool hasApplication(const PlatformContact& contact) const;
    /// The record of a user, or a default one. A tracked computation that asks runs again when the record changes.
    PlatformContact getContact(const QString& userId) const;
    /// Reports the records of the view in list order, whether or not events are enabled.
    void getContactList();
    /// The view; empty before init(). The handle may outlive the manager, and goes on following the lists.
    iface::ObservableList<PlatformContact> contactList() const
    {
        return iface::ObservableList<PlatformContact>(m_view.data());
    }

    /// Has the contact's picture reported: at once, and whether or not events are enabled, when the contact has none;
    /// else when it has arrived, and only if they are enabled then and the contact still has a handle. It is asked for
    /// until it comes; if the contact has another by then, that one is asked for. False when there is no such contact.
    bool retrieveAvatar(const QString& userId);
    void requestAvatar(const QString& streamId, const QString& userId) { m_avatarRequests.request(userId, streamId); }

private:
    using ContactView = iface::CachedObservableList<PlatformContact>;
    using ChangeType = ContactView::ChangeType;
    using IndexMapper = ContactView::IndexMapper;

    virtual void reportList(const QList<PlatformContact>& contacts) = 0;
    virtual void reportListResent() = 0;
    virtual void reportInstalled(const PlatformContact& contact) = 0;
    virtual void reportUninstalled(const PlatformContact& contact) = 0;
    virtual void reportUpdated(const PlatformContact& before, const PlatformContact& after) = 0;
    virtual void reportInvitation(const PlatformContact& contact) = 0;
    virtual void reportAvatar(const PlatformContact& contact) = 0;

    bool checkUserListState();
    void listResent();
    void aboutToAdd(int index, const PlatformContact& contact);
    void aboutToRemove(int index, const PlatformContact& contact);
    void aboutToUpdate(int index, const PlatformContact& before, const PlatformContact& after);
    void aboutToChange(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper,
                       const QList<PlatformContact>& before, const QList<PlatformContact>& after);
    void followAvatar(const PlatformContact& before, const PlatformContact& after);
    void sendRequest(const QString& userId, const QString& streamId);
    void streamDataAvailable(const QString& streamId, const QVariant& data);
    void connInvitationReceivedCallback(QObject* sender, const iface::JsonReaderAttribute& message);
    void invitationReceived(const QString& userId);

    bool isReporting() const { return m_eventsEnabled && !m_replacement.isNow(); }
    void report(std::function<void()> event)
    {
        m_events.post(std::move(event));
        m_events.deliver();
    }

    const QSharedPointer<zel::ListApiMultiplexer> m_multiplexer;
    const QSharedPointer<zel::JsonStream> m_stream;
    RegistrationHandler* const m_readiness;

    QExplicitlySharedDataPointer<ContactIds> m_ids; ///< this and the records are null until init()
    ContactRecords::Pointer m_records;
    QExplicitlySharedDataPointer<ContactView> m_view{new ContactView};
    ReplacementMark m_replacement;
    StreamRequests m_avatarRequests; ///< by user
    EventQueue m_events;
    bool m_eventsEnabled = false;
    int m_listenerCount = 0;
    bool m_listReady = false;

    std::unique_ptr<zel::JsonStreamFunctorAdapter> m_streamAdapter;
    std::unique_ptr<iface::RunUntilTrue> m_readinessCheck;
};

} // namespace zelsplib
