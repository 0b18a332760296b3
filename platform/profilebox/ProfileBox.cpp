// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBox.h>

#include <platform/context/PrivatePart.h>
#include <platform/profilebox/ProfileBoxDelegate.h>

#include <utility>

namespace vx::platform::zel {

class ProfileBoxPrivate : public PrivatePart<ProfileBox, ProfileBoxDelegate>
{
    Q_OBJECT

public:
    ProfileBoxPrivate(Context* givenContext, ProfileBox* profileBox)
        : PrivatePart(profileBox, "ProfileBox", givenContext, mistakes::Needs::Context, &ServiceBridge::profileBox)
    {
        if (!delegate)
            return;
        connect(delegate, &ProfileBoxDelegate::itemAdded, q, &ProfileBox::itemAdded);
        connect(delegate, &ProfileBoxDelegate::itemUpdated, q, &ProfileBox::itemUpdated);
        connect(delegate, &ProfileBoxDelegate::itemRemoved, q, &ProfileBox::itemRemoved);
        connect(delegate, &ProfileBoxDelegate::iconRegistered, q, &ProfileBox::iconRegistered);
        connect(delegate, &ProfileBoxDelegate::iconRetrieved, q, &ProfileBox::iconRetrieved);

        // After those above, so that the count is announced behind what changed it.
        connect(delegate, &ProfileBoxDelegate::received, this, &ProfileBoxPrivate::announceCount);
        connect(delegate, &ProfileBoxDelegate::itemAdded, this, &ProfileBoxPrivate::announceCount);
        connect(delegate, &ProfileBoxDelegate::itemRemoved, this, &ProfileBoxPrivate::announceCount);
        connect(context, &Context::registrationStateUpdated, this, &ProfileBoxPrivate::announceCount);

        connect(delegate, &ProfileBoxDelegate::received, this, &ProfileBoxPrivate::announceIcons);
        connect(delegate, &ProfileBoxDelegate::iconRegistered, this, &ProfileBoxPrivate::announceIcons);
        connect(delegate, &ProfileBoxDelegate::iconUpdated, this, &ProfileBoxPrivate::announceIcons);
        connect(delegate, &ProfileBoxDelegate::iconRemoved, this, &ProfileBoxPrivate::announceIcons);
        connect(context, &Context::registrationStateUpdated, this, &ProfileBoxPrivate::announceIcons);

        m_countBefore = itemCount();
        m_iconsBefore = registeredIcons();
    }

    int itemCount() const { return isAllowed() ? delegate->itemCount() : 0; }
    QList<int> registeredIcons() const { return isAllowed() ? delegate->registeredIcons() : QList<int>(); }

private:
    void announceCount()
    {
        const int count = itemCount();
        if (std::exchange(m_countBefore, count) != count)
            Q_EMIT q->itemCountChanged(ProfileBox::QPrivateSignal());
    }

    void announceIcons()
    {
        const QList<int> icons = registeredIcons();
        if (std::exchange(m_iconsBefore, icons) != icons)
            Q_EMIT q->registeredIconsChanged(ProfileBox::QPrivateSignal());
    }

    int m_countBefore = 0;
    QList<int> m_iconsBefore;
};

ProfileBox::ProfileBox(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ProfileBoxPrivate>(context, this))
{
}

ProfileBox::~ProfileBox() = default;

/// Asks for a new item that shows \a text and the icon \a iconId and carries \a cookie. The service names the item; see
/// itemAdded(). True whenever there is access: a text or cookie against the rules is refused in the log and by a
/// warning only, and no signal follows.
bool ProfileBox::requestAddItem(const QString& text, int iconId, const QString& cookie)
{
    return d->mayRequest("ProfileBox::requestAddItem") && d->delegate->addItemRequest(text, iconId, cookie);
}

/// The same without an icon: an item with \a text and \a cookie.
bool ProfileBox::requestAddItem(const QString& text, const QString& cookie)
{
    return d->mayRequest("ProfileBox::requestAddItem") && d->delegate->addItemRequest(text, boost::none, cookie);
}

/// Asks for the removal of the item that the service calls \a itemId; see itemRemoved(). True whenever there is access;
/// nothing follows for an item that is not there.
bool ProfileBox::requestRemoveItem(const QString& itemId)
{
    return d->mayRequest("ProfileBox::requestRemoveItem") && d->delegate->removeItemRequest(itemId);
}

/// Asks for the removal of every item that is there now, one by one in list order.
bool ProfileBox::requestRemoveAllItems()
{
    return d->mayRequest("ProfileBox::requestRemoveAllItems") && d->delegate->removeAllItemsRequest();
}

/// The item that the service calls \a itemId; a null one when there is none.
ProfileBoxItem ProfileBox::item(const QString& itemId) const
{
    return d->isAllowed() ? d->delegate->item(itemId) : ProfileBoxItem();
}

/// All items, in the order of the service's list.
QList<ProfileBoxItem> ProfileBox::items() const
{
    return d->isAllowed() ? d->delegate->items() : QList<ProfileBoxItem>();
}

/// How many items() answers.
int ProfileBox::itemCount() const
{
    return d->itemCount();
}

/// The ids of the icons that items may name, in the order of the service's list. Those on their way are not among them.
QList<int> ProfileBox::registeredIcons() const
{
    return d->registeredIcons();
}

/// Gives the service the picture \a icon of the format \a type, for items to use under \a iconId; see iconRegistered().
/// False, with a line in the log, when the icon is against the rules or its id is registered or being registered.
bool ProfileBox::requestRegisterIcon(int iconId, ImageType::Type type, const QByteArray& icon)
{
    return d->mayRequest("ProfileBox::requestRegisterIcon") && d->delegate->iconRegistrationRequest(iconId, type, icon);
}

/// Asks for the data of the registered icon \a iconId; see iconRetrieved(). A lost answer is asked for again.
bool ProfileBox::requestRetrieveIcon(int iconId) const
{
    return d->mayRequest("ProfileBox::requestRetrieveIcon") && d->delegate->iconRetrievalRequest(iconId);
}

} // namespace vx::platform::zel

#include "ProfileBox.moc"
