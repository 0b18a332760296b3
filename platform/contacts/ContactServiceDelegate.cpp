// SPDX-License-Identifier: Apache-2.0
#include <platform/contacts/ContactServiceDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/contacts/ContactPrivate.h>
#include <platform/context/HelperUtils.h>

namespace vx::platform::zel {

using zelsplib::PlatformContact;

ContactServiceDelegate::ContactServiceDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
}

Contact ContactServiceDelegate::contact(const QString& handle) const
{
    const auto found = m_contacts.constFind(handle);
    if (found != m_contacts.cend())
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
    m_contacts.clear();
    for (const PlatformContact& record : records)
        store(record);
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

/// Answers the handle by value: a slot of the signal that it goes into may change the record.
QString ContactServiceDelegate::store(const PlatformContact& record)
{
    const QString handle = record.getHandle();
    m_contacts.insert(handle, Contact(record));
    return handle;
}

} // namespace vx::platform::zel
