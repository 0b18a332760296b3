// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/ContactLists.h>

#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <iface/FilteredObservableList.h>
#include <iface/ObservableMap.h>
#include <iface/Realm.h>
#include <iface/TransformedObservableList.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

namespace {

/// What the values of the record map hold, by user id. It follows the map alone, which announces each change of a
/// value's contents under the user's id: there are many values, and following each costs as much as the rest of the
/// way.
class RecordContents : public iface::ObservableMapImpl<QString, PlatformContact>, private iface::Follower
{
public:
    explicit RecordContents(const ContactRecords::Pointer& records)
        : m_records(records)
    {
        follow(*records);
    }
    ~RecordContents() override { detach(); }

    PlatformContact get(const QString& userId) const override { return m_records->current(userId); }

private:
    void mark(const iface::Change& change) override { note(change); }

    const ContactRecords::Pointer m_records;
};

} // namespace

ContactRecords::ContactRecords(const QSharedPointer<zel::ListApiMultiplexer>& multiplexer,
                               const QExplicitlySharedDataPointer<ContactIds>& ids)
    : LiveMap(multiplexer, QSharedPointer<PlatformContactJsonAdapter>::create(), u"platformUser"_s, {})
    , m_ids(ids)
    , m_renewals([this](const QString& userId) {
        // Whoever has left again is asked for when he or she returns.
        if (m_ids->locateItem(userId) == -1)
            m_renewals.end(userId);
        else
            renew(userId);
    })
{
}

void ContactRecords::doubtUnlisted()
{
    const QStringList known = keys();
    for (const QString& userId : known) {
        if (isLoaded(userId) && m_ids->locateItem(userId) == -1)
            m_doubtful.insert(userId);
    }
}

PlatformContact ContactRecords::current(const QString& userId)
{
    if (!m_doubtful.contains(userId))
        return contents(userId);
    contents(userId); // who asks hears when it comes
    renew(userId);
    return {};
}

bool ContactRecords::recordCame(const QString& userId)
{
    if (!m_doubtful.remove(userId))
        return false;
    m_renewals.end(userId);
    return true;
}

/// Not within the call, which may be made in the midst of a change.
void ContactRecords::renew(const QString& userId)
{
    m_renewals.begin(userId);
    if (m_toRequest.isEmpty())
        iface::Realm::postGuarded(guard(), [this] { requestDoubtful(); });
    m_toRequest.append(userId);
}

/// Without the cookie: an answer to this says nothing of what is being loaded.
void ContactRecords::requestDoubtful()
{
    constexpr qsizetype mostKeys = iface::LazyLoader<QString, PlatformContact>::RepeatLimit;
    const Pointer keep(this);
    QStringList users = std::exchange(m_toRequest, {});
    users.removeDuplicates();
    for (qsizetype i = 0; i < users.size(); i += mostKeys)
        requestListElements(users.mid(i, mostKeys), {});
}

iface::ObservableList<PlatformContact> initializedContacts(const QExplicitlySharedDataPointer<ContactIds>& ids,
                                                           const ContactRecords::Pointer& records)
{
    using Transformed = iface::LazyTransformedObservableListImpl<QString, PlatformContact>;
    const iface::ObservableMap<QString, PlatformContact> contents(new RecordContents(records));
    const auto contacts = iface::TransformedObservableList::create<QString, PlatformContact>(
        iface::ObservableList<QString>(ids.data()), contents, Transformed::KeepsEverything);
    return iface::FilteredObservableList<PlatformContact>::create(
        contacts, [](const PlatformContact& contact) { return contact.isInitialized(); });
}

} // namespace zelsplib
