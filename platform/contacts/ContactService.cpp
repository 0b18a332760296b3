// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactService.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/contacts/ContactServiceDelegate.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QPointer>

#include <utility>

namespace vx::platform::zel {

class ContactServicePrivate : public QObject
{
    Q_OBJECT

public:
    ContactServicePrivate(Context* givenContext, ContactService* contactService)
        : QObject(contactService)
        , q(contactService)
        , context(givenContext)
    {
        if (!context || !context->isAccessAllowed())
            return;
        delegate = ServiceBridge::instance()->contactService();
        delegate->updateContactList();
        connectDelegate();
        m_wasValid = isValid();
        m_countBefore = contactCount();
    }

    bool isAllowed() const { return context && context->isAccessAllowed() && delegate; }
    bool isValid() const { return isAllowed() && delegate->isContactListInitialized(); }
    int contactCount() const { return isAllowed() ? delegate->contactCount() : 0; }

    ContactService* const q;
    QPointer<Context> const context;
    ContactServiceDelegate* delegate = nullptr; // stays null in an object made without access

private:
    void connectDelegate();
    void announceProperties();

    bool m_wasValid = false;
    int m_countBefore = 0;
};

void ContactServicePrivate::connectDelegate()
{
    connect(delegate, &ContactServiceDelegate::contactListUpdated, q, &ContactService::contactListUpdated);
    connect(delegate, &ContactServiceDelegate::avatarUpdated, q, &ContactService::displayPictureUpdated);
    connect(delegate, &ContactServiceDelegate::contactUpdated, q, &ContactService::contactUpdated);
    connect(delegate, &ContactServiceDelegate::applicationEnabled, q, &ContactService::applicationEnabled);
    connect(delegate, &ContactServiceDelegate::applicationDisabled, q, &ContactService::applicationDisabled);

    // After those above, so that properties are announced behind what changed it.
    connect(delegate, &ContactServiceDelegate::contactListUpdated, this, &ContactServicePrivate::announceProperties);
    connect(delegate, &ContactServiceDelegate::contactUpdated, this, &ContactServicePrivate::announceProperties);
    connect(delegate, &ContactServiceDelegate::applicationEnabled, this, &ContactServicePrivate::announceProperties);
    if (context) // a slot of the list announced above may have destroyed it
        connect(context, &Context::registrationStateUpdated, this, &ContactServicePrivate::announceProperties);
}

void ContactServicePrivate::announceProperties()
{
    const int count = contactCount();
    const bool isOtherCount = std::exchange(m_countBefore, count) != count;
    const bool isNowValid = isValid();
    const QPointer<ContactServicePrivate> alive(this);
    if (std::exchange(m_wasValid, isNowValid) != isNowValid)
        Q_EMIT q->validChanged(ContactService::QPrivateSignal());
    if (alive && isOtherCount)
        Q_EMIT q->contactCountChanged(ContactService::QPrivateSignal());
}

/// A service that is made while \a context gives no access, or without one, answers defaults for its life. The list
/// that has come so far is there when this returns; it was announced to the services made before.
ContactService::ContactService(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ContactServicePrivate>(context, this))
{
}

ContactService::~ContactService() = default;

/// Whether the service shows contacts: true at once in one that was made with access, and for as long as there is
/// access. It does not tell whether the list is whole.
bool ContactService::isValid() const
{
    return d->isValid();
}

/// Whether there is a contact with that one's handle.
bool ContactService::containsContact(const vx::platform::zel::Contact& contact) const
{
    return d->isAllowed() && d->delegate->containsContact(contact);
}

/// A default contact when there is none with this handle.
vx::platform::zel::Contact ContactService::contact(const QString& handle) const
{
    return d->isAllowed() ? d->delegate->contact(handle) : Contact();
}

/// All contacts, in the order of their handles.
QList<vx::platform::zel::Contact> ContactService::contacts() const
{
    return d->isAllowed() ? d->delegate->allContacts() : QList<Contact>();
}

/// How many contacts() answers.
int ContactService::contactCount() const
{
    return d->contactCount();
}

/// Asks for a contact's picture, which comes with displayPictureUpdated(); for a contact without one that happens
/// before this returns. A lost answer is asked for again. False without access or without such a contact.
bool ContactService::requestDisplayPicture(const QString& handle) const
{
    return d->isAllowed() && d->delegate->requestAvatar(handle);
}

} // namespace vx::platform::zel

#include "ContactService.moc"
