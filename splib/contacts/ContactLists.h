// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/channel/Retries.h>
#include <splib/contacts/PlatformContact.h>

#include <zel/LiveList.h>
#include <zel/LiveMap.h>

#include <iface/Change.h>
#include <iface/Follower.h>
#include <iface/ObservableList.h>
#include <iface/Round.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QSet>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>
#include <utility>

namespace zelsplib {

/// The ids of the contacts, which tells of each whole list that the service sends after the first.
class ContactIds : public zel::LiveList<QString, QString>
{
public:
    using LiveList::LiveList;

    /// Called when the list shows what was sent, also when that is what it held before.
    void setResentFunction(std::function<void()> resent) { m_resent = std::move(resent); }

    void listAll(iface::JsonObjectReader body) override
    {
        m_isWhole = true;
        LiveList::listAll(body);
    }
    void listElements(iface::JsonObjectReader body) override
    {
        m_isWhole = false;
        LiveList::listElements(body);
    }
    void listChunk(iface::JsonObjectReader body) override
    {
        const QExplicitlySharedDataPointer<ContactIds> keep(this);
        const bool isLater = m_isWhole && isTransferring() && !m_firstListPending;
        iface::detail::FirstException thrown;
        thrown.guard([&] { LiveList::listChunk(body); });
        if (isLater && !isTransferring())
            thrown.guard([this] { m_resent(); });
        thrown.rethrow();
    }

private:
    std::function<void()> m_resent = [] {};
    bool m_isWhole = false; ///< what is being transferred, if anything is
};

/// The records of contacts, by user id, which knows what of them may be out of date.
///
/// Records stay when their users leave the list. A service that comes back sends the list anew and the records of those
/// who are in it: what the others have become meanwhile is not told, and is asked for when they are listed again.
class ContactRecords : public zel::LiveMap<QString, PlatformContact>
{
public:
    using Pointer = QExplicitlySharedDataPointer<ContactRecords>;

    ContactRecords(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                   const QExplicitlySharedDataPointer<ContactIds>& ids);
    ~ContactRecords() override { stop(); }

    /// The records of all who are not listed may be out of date from now on.
    void doubtUnlisted();
    /// The record of a user who is listed: while it may be out of date a default one, and it is asked for until it
    /// comes.
    PlatformContact current(const QString& userId);

protected:
    bool recordCame(const QString& userId) override;

private:
    void renew(const QString& userId);
    void requestDoubtful();

    const QExplicitlySharedDataPointer<ContactIds> m_ids;
    QSet<QString> m_doubtful;
    QStringList m_toRequest; // in this turn of the event loop
    Retries m_renewals;
};

/// Knows the last round in which the ids were replaced by a new whole list: what is announced in it is no news of
/// single contacts.
class ReplacementMark : public iface::Follower
{
public:
    bool isNow() const { return m_round == iface::Round::number(); }

protected:
    void mark(const iface::Change& change) override
    {
        if (change.kind >= iface::Change::Moved)
            m_round = iface::Round::number();
    }

private:
    unsigned m_round = ~0U;
};

/// Records as the ids have them, those without a handle left out. Every record is held: one that was forgotten could
/// change without anybody being told.
iface::ObservableList<PlatformContact> initializedContacts(const QExplicitlySharedDataPointer<ContactIds>& ids,
                                                           const ContactRecords::Pointer& records);

} // namespace zelsplib
