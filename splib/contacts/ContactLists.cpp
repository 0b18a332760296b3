// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/ContactLists.h>

#include <iface/FilteredObservableList.h>
#include <iface/ObservableMap.h>
#include <iface/TransformedObservableList.h>

namespace zelsplib {

namespace {

/// What the values of the record map hold, by user id. It follows the map alone, which announces each change of a
/// value's contents under the user's id: there are many values, and following each costs as much as the rest of the
/// way.
class RecordContents : public iface::ObservableMapImpl<QString, PlatformContact>
{
public:
    explicit RecordContents(const ContactRecords::Pointer& records)
        : m_records(records)
    {
        m_follower.follow(*records);
    }

    PlatformContact get(const QString& userId) const override { return m_records->contents(userId); }

private:
    class RecordsFollower : public iface::Follower
    {
    public:
        explicit RecordsFollower(RecordContents* owner)
            : m_owner(owner)
        {
        }

    protected:
        void mark(const iface::Change& change) override { m_owner->note(change); }

    private:
        RecordContents* const m_owner;
    };

    const ContactRecords::Pointer m_records;
    RecordsFollower m_follower{this};
};

} // namespace

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
