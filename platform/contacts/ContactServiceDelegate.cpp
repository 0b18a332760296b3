// SPDX-License-Identifier: Apache-2.0
#include <platform/contacts/ContactServiceDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/contacts/ContactPrivate.h>
#include <platform/context/HelperUtils.h>

#include <algorithm>
#include <cstddef>
#include <vector>

namespace vx::platform::zel {

using zelsplib::PlatformContact;

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
    return m_services->contacts()->retrieveAvatar(known.d->record.getUri());
}

void ContactServiceDelegate::setContactList(const QList<PlatformContact>& records)
{
    m_contacts = inHandleOrder(records);
    m_initialized = true;
    qCDebug(lcPlatform) << "List Updated! - size " << m_contacts.size();
    Q_EMIT contactListUpdated();
}

void ContactServiceDelegate::notifyApplicationEnabled(const PlatformContact& record)
{
    Q_EMIT applicationEnabled(store(record));
}

/// The contact stays in the map: only the next full list takes it out.
void ContactServiceDelegate::notifyApplicationDisabled(const PlatformContact& record)
{
    Q_EMIT applicationDisabled(record.getHandle());
}

void ContactServiceDelegate::notifyContactUpdated(const PlatformContact& record)
{
    Q_EMIT contactUpdated(store(record));
}

void ContactServiceDelegate::notifyAvatarUpdated(const QString& handle, const QString& avatarId,
                                                 const QString& mimeType, const QByteArray& data)
{
    qCDebug(lcPlatform) << "ContactServiceDelegate"
                        << "::notifyAvatarUpdated(): handle=" << handle << " avatarId=" << avatarId;
    Q_EMIT avatarUpdated(handle, HelperUtils::imageTypeFromString(mimeType), data);
}

void ContactServiceDelegate::notifyInvitationReceived(const QString& handle)
{
    Q_EMIT invitationReceived(handle);
}

/// Turns on the reports about contacts and has the list as far as it is there reported within this call.
void ContactServiceDelegate::updateContactList()
{
    const auto manager = m_services->contacts();
    manager->setEventsEnabled(true);
    qCDebug(lcPlatform) << "ContactServiceDelegate"
                        << "::updateContactList(): Updating Contact List";
    manager->getContactList();
}

const QString& ContactServiceDelegate::handleOf(const Contact& contact)
{
    return contact.d->record.data().handle;
}

int ContactServiceDelegate::placeOf(const QString& handle) const
{
    const auto place =
        std::lower_bound(m_contacts.cbegin(), m_contacts.cend(), handle,
                         [](const Contact& known, const QString& asked) { return handleOf(known) < asked; });
    return static_cast<int>(place - m_contacts.cbegin());
}

const Contact* ContactServiceDelegate::find(const QString& handle) const
{
    const int place = placeOf(handle);
    return place < m_contacts.size() && handleOf(m_contacts.at(place)) == handle ? &m_contacts.at(place) : nullptr;
}

/// Of records with the same handle the last one counts.
QList<Contact> ContactServiceDelegate::inHandleOrder(const QList<PlatformContact>& records)
{
    std::vector<const PlatformContact*> ordered;
    ordered.reserve(static_cast<std::size_t>(records.size()));
    for (const PlatformContact& record : records)
        ordered.push_back(&record);
    std::stable_sort(ordered.begin(), ordered.end(), [](const PlatformContact* a, const PlatformContact* b) {
        return a->data().handle < b->data().handle;
    });
    QList<Contact> contacts;
    contacts.reserve(records.size());
    for (const PlatformContact* const record : ordered) {
        if (!contacts.isEmpty() && handleOf(contacts.constLast()) == record->data().handle)
            contacts.removeLast();
        contacts.append(Contact(*record));
    }
    return contacts;
}

/// Answers the handle by value: a slot of the signal that it goes into may change the record.
QString ContactServiceDelegate::store(const PlatformContact& record)
{
    const QString handle = record.getHandle();
    const int place = placeOf(handle);
    if (place < m_contacts.size() && handleOf(m_contacts.at(place)) == handle)
        m_contacts[place] = Contact(record);
    else
        m_contacts.insert(place, Contact(record));
    return handle;
}

} // namespace vx::platform::zel
