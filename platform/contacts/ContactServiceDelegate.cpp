// SPDX-License-Identifier: Apache-2.0
#include <platform/contacts/ContactServiceDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>

#include <algorithm>
#include <array>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <utility>
#include <vector>

namespace vx::platform::zel {

using zelsplib::PlatformContact;

namespace {

/// A contact, to be put in handle order. The beginning of the handle is at hand: of many contacts most are in no cache.
class ByHandle
{
public:
    explicit ByHandle(Contact& contact)
        : m_contact(&contact)
    {
        const QString text = contact.handle();
        for (qsizetype i = 0; i < beginLength; ++i) {
            std::uint64_t& word = m_begin[std::size_t(i / unitsPerWord)];
            word = word << 16 | (i < text.size() ? text.at(i).unicode() : 0);
        }
    }

    Contact take() const { return std::move(*m_contact); }

    friend bool operator<(const ByHandle& a, const ByHandle& b)
    {
        const auto order = a.m_begin <=> b.m_begin;
        return std::is_eq(order) ? a.m_contact->handle() < b.m_contact->handle() : std::is_lt(order);
    }

private:
    static constexpr qsizetype unitsPerWord = 4;
    static constexpr qsizetype beginLength = 3 * unitsPerWord;

    std::array<std::uint64_t, beginLength / unitsPerWord> m_begin = {}; ///< as numbers that are ordered as the text is
    Contact* m_contact;
};

} // namespace

ContactServiceDelegate::ContactServiceDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
}

Contact ContactServiceDelegate::contact(const QString& handle) const
{
    if (const Contact* const found = find(handle))
        return *found;
    qCDebug(lcPlatform) << "Error occurred! Investigate! "
                        << " No contact with handle : " << handle;
    return {};
}

/// The picture comes by avatarUpdated(), at once when the contact has none.
bool ContactServiceDelegate::requestAvatar(const QString& handle) const
{
    const Contact known = contact(handle);
    if (known.handle().isEmpty()) {
        qCDebug(lcPlatform) << "ContactServiceDelegate"
                            << "::requestAvatar(): Could not obtain contact with handle=" << handle;
        return false;
    }
    return m_services->contacts()->retrieveAvatar(known.record().getUri());
}

void ContactServiceDelegate::setContactList(const QList<PlatformContact>& records)
{
    m_contacts = inHandleOrder(records);
    m_initialized = true;
    m_complete = m_services->contacts()->isListReady();
    qCDebug(lcPlatform) << "List Updated! - size " << m_contacts.size();
    Q_EMIT contactListUpdated();
}

void ContactServiceDelegate::notifyAvatarUpdated(const QString& handle, const QString& avatarId,
                                                 const QString& mimeType, const QByteArray& data)
{
    qCDebug(lcPlatform) << "ContactServiceDelegate"
                        << "::notifyAvatarUpdated(): handle=" << handle << " avatarId=" << avatarId;
    const ImageType::Type type = HelperUtils::imageTypeFromString(mimeType);
    m_toldPictures.tell(handle, {type, data}, [&] { Q_EMIT avatarUpdated(handle, type, data); });
}

bool ContactServiceDelegate::hasApplication(const QString& handle) const
{
    const Contact* const known = find(handle);
    return known && m_services->contacts()->hasApplication(known->record());
}

/// Turns on the reports about contacts and has the list as far as it is there reported within this call.
void ContactServiceDelegate::updateContactList()
{
    m_services->contacts()->setEventsEnabled(true);
    readContactList();
}

void ContactServiceDelegate::readContactList()
{
    qCDebug(lcPlatform) << "ContactServiceDelegate"
                        << "::updateContactList(): Updating Contact List";
    m_services->contacts()->getContactList();
}

int ContactServiceDelegate::placeOf(const QString& handle) const
{
    const auto place =
        std::lower_bound(m_contacts.cbegin(), m_contacts.cend(), handle,
                         [](const Contact& known, const QString& asked) { return known.handle() < asked; });
    return static_cast<int>(place - m_contacts.cbegin());
}

const Contact* ContactServiceDelegate::find(const QString& handle) const
{
    const int place = placeOf(handle);
    return place < m_contacts.size() && m_contacts.at(place).handle() == handle ? &m_contacts.at(place) : nullptr;
}

/// Of records with the same handle the last one counts.
QList<Contact> ContactServiceDelegate::inHandleOrder(const QList<PlatformContact>& records)
{
    QList<Contact> made;
    made.reserve(records.size());
    for (const PlatformContact& record : records)
        made.append(Contact(record));
    std::vector<ByHandle> ordered(made.begin(), made.end());
    std::stable_sort(ordered.begin(), ordered.end());
    QList<Contact> contacts;
    contacts.reserve(records.size());
    for (auto entry = ordered.cbegin(); entry != ordered.cend(); ++entry) {
        const auto next = std::next(entry);
        if (next == ordered.cend() || *entry < *next)
            contacts.append(entry->take());
    }
    return contacts;
}

/// Answers the handle by value: a slot of the signal that it goes into may change the record.
QString ContactServiceDelegate::store(const PlatformContact& record)
{
    const Contact contact(record);
    const QString handle = contact.handle();
    const int place = placeOf(handle);
    if (place < m_contacts.size() && m_contacts.at(place).handle() == handle)
        m_contacts[place] = contact;
    else
        m_contacts.insert(place, contact);
    return handle;
}

} // namespace vx::platform::zel
