// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactService.h>

#include <platform/contacts/ContactServiceDelegate.h>
#include <platform/context/PrivatePart.h>

#include <QtCore/QPointer>

#include <utility>

namespace vx::platform::zel {

class ContactServicePrivate : public PrivatePart<ContactService, ContactServiceDelegate>
{
    Q_OBJECT

public:
    ContactServicePrivate(Context* givenContext, ContactService* contactService)
        : PrivatePart(contactService, "ContactService", givenContext, mistakes::Needs::Access,
                      &ServiceBridge::contactService)
    {
        if (!delegate)
            return;
        delegate->updateContactList();
        connect(delegate, &ContactServiceDelegate::contactListUpdated, q, &ContactService::contactListUpdated);
        connect(delegate, &ContactServiceDelegate::contactListResent, q, &ContactService::contactListResent);
        connect(delegate, &ContactServiceDelegate::avatarUpdated, this, &ContactServicePrivate::pictureUpdated);
        connect(delegate, &ContactServiceDelegate::contactUpdated, q, &ContactService::contactUpdated);
        connect(delegate, &ContactServiceDelegate::applicationEnabled, q, &ContactService::applicationEnabled);
        connect(delegate, &ContactServiceDelegate::applicationDisabled, q, &ContactService::applicationDisabled);

        // After those above, so that properties are announced behind what changed it.
        const auto announce = &ContactServicePrivate::announceProperties;
        connect(delegate, &ContactServiceDelegate::contactListUpdated, this, announce);
        connect(delegate, &ContactServiceDelegate::contactUpdated, this, announce);
        connect(delegate, &ContactServiceDelegate::applicationEnabled, this, announce);
        if (context) // a slot of the list announced above may have destroyed it
            connect(context, &Context::registrationStateUpdated, this, announce);
        m_announced = properties();
    }

    struct Properties
    {
        bool isValid = false;
        bool isComplete = false;
        int contactCount = 0;
    };
    Properties properties() const
    {
        if (!isAllowed())
            return {};
        return {delegate->isContactListInitialized(), delegate->isContactListComplete(), delegate->contactCount()};
    }

private:
    /// What was told last, not what this signal says.
    void pictureUpdated(const QString& handle)
    {
        const ContactServiceDelegate::Picture picture = delegate->toldPicture(handle);
        Q_EMIT q->displayPictureUpdated(handle, picture.type, picture.data);
    }

    void announceProperties()
    {
        const Properties now = properties();
        const Properties before = std::exchange(m_announced, now);
        const QPointer<ContactServicePrivate> alive(this);
        if (now.isValid != before.isValid)
            Q_EMIT q->validChanged(ContactService::QPrivateSignal());
        if (alive && now.isComplete != before.isComplete)
            Q_EMIT q->completeChanged(ContactService::QPrivateSignal());
        if (alive && now.contactCount != before.contactCount)
            Q_EMIT q->contactCountChanged(ContactService::QPrivateSignal());
    }

    Properties m_announced;
};

ContactService::ContactService(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ContactServicePrivate>(context, this))
{
}

ContactService::~ContactService() = default;

/// Whether the service shows contacts: true at once in one that was made with access, and for as long as there is
/// access. Whether these are all of them is told by isComplete().
bool ContactService::isValid() const
{
    return d->properties().isValid;
}

/// Whether contacts() has everybody whom the list named when it was whole. It turns true with contactListUpdated() and
/// stays so while there is access: who comes later is announced by applicationEnabled().
bool ContactService::isComplete() const
{
    return d->properties().isComplete;
}

/// Whether contacts() has one with the handle of \a contact.
bool ContactService::containsContact(const vx::platform::zel::Contact& contact) const
{
    return d->isAllowed() && d->delegate->containsContact(contact);
}

/// Whether the contact who goes by \a handle in contacts() has the application by now. False for one who has removed
/// it, is a contact no more or goes by another handle, and is kept in contacts() until the list is read anew.
bool ContactService::hasApplication(const QString& handle) const
{
    return d->isAllowed() && d->delegate->hasApplication(handle);
}

/// The contact with this \a handle; a default one when there is none.
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
    return d->properties().contactCount;
}

/// Reads the list anew from what the library knows by now: who has removed the application is gone from contacts()
/// after that, as is whoever went by another handle. Every ContactService hears contactListUpdated() before this
/// returns. Nothing is asked of the service. False without access.
bool ContactService::refresh()
{
    if (!d->mayRequest("ContactService::refresh"))
        return false;
    d->delegate->readContactList();
    return true;
}

/// Asks for the picture of the contact with this \a handle, which comes with displayPictureUpdated(); for a contact
/// without one that happens before this returns. A lost answer is asked for again. False without access or without such
/// a contact.
bool ContactService::requestDisplayPicture(const QString& handle) const
{
    constexpr const char* where = "ContactService::requestDisplayPicture";
    return d->mayRequest(where) && (d->delegate->requestAvatar(handle) ||
                                    mistakes::warn(where, "no contact has this handle now; take it from contacts(), "
                                                          "where hasApplication() tells who has left"));
}

} // namespace vx::platform::zel

#include "ContactService.moc"
