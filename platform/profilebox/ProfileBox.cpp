// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBox.h>

#include <platform/channel/ServiceBridge.h>
#include <platform/profilebox/ProfileBoxDelegate.h>
#include <vx/platform/zel/Context.h>

#include <QtCore/QPointer>

namespace vx::platform::zel {

class ProfileBoxPrivate : public QObject
{
    Q_OBJECT

public:
    ProfileBoxPrivate(Context* givenContext, ProfileBox* profileBox)
        : QObject(profileBox)
        , q(profileBox)
        , context(givenContext)
        , delegate(givenContext ? ServiceBridge::instance()->profileBox() : nullptr)
    {
        if (delegate)
            connectDelegate();
        m_countBefore = itemCount();
    }

    bool isAllowed() const { return context && context->isAccessAllowed() && delegate; }
    int itemCount() const { return isAllowed() ? delegate->itemCount() : 0; }

    ProfileBox* const q;
    QPointer<Context> const context;
    ProfileBoxDelegate* const delegate; // null without a context and without a service

private:
    void connectDelegate();
    void announceCount();

    int m_countBefore = 0;
};

void ProfileBoxPrivate::connectDelegate()
{
    connect(delegate, &ProfileBoxDelegate::itemAdded, q, &ProfileBox::itemAdded);
    connect(delegate, &ProfileBoxDelegate::itemRemoved, q, &ProfileBox::itemRemoved);
    connect(delegate, &ProfileBoxDelegate::iconRegistered, q, &ProfileBox::iconRegistered);
    connect(delegate, &ProfileBoxDelegate::iconRetrieved, q, &ProfileBox::iconRetrieved);

    // After those above, so that the count is announced behind what changed it.
    connect(delegate, &ProfileBoxDelegate::itemAdded, this, &ProfileBoxPrivate::announceCount);
    connect(delegate, &ProfileBoxDelegate::itemRemoved, this, &ProfileBoxPrivate::announceCount);
    connect(context, &Context::registrationStateUpdated, this, &ProfileBoxPrivate::announceCount);
}

void ProfileBoxPrivate::announceCount()
{
    const int count = itemCount();
    if (count == m_countBefore)
        return;
    m_countBefore = count;
    Q_EMIT q->itemCountChanged(ProfileBox::QPrivateSignal());
}

ProfileBox::ProfileBox(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<ProfileBoxPrivate>(context, this))
{
}

ProfileBox::~ProfileBox() = default;

/// Asks for a new item with an icon. The service names the item; see itemAdded(). True
/// whenever there is access: a text or cookie against the rules is refused in the log only, and no signal follows.
bool ProfileBox::requestAddItem(const QString& text, int iconId, const QString& cookie)
{
    return d->isAllowed() && d->delegate->addItemRequest(text, iconId, cookie);
}

/// The same without an icon.
bool ProfileBox::requestAddItem(const QString& text, const QString& cookie)
{
    return d->isAllowed() && d->delegate->addItemRequest(text, boost::none, cookie);
}

/// Asks for the removal of an item; see itemRemoved(). True whenever there is access; nothing follows for an item that
/// is not there.
bool ProfileBox::requestRemoveItem(const QString& itemId)
{
    return d->isAllowed() && d->delegate->removeItemRequest(itemId);
}

/// Asks for the removal of every item that is there now, one by one in list order.
bool ProfileBox::requestRemoveAllItems()
{
    return d->isAllowed() && d->delegate->removeAllItemsRequest();
}

/// An invalid item when there is none with this id.
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

/// Gives the service an icon for items to use; see iconRegistered(). False, with a line in the log, when the icon is
/// against the rules or its id is registered or being registered.
bool ProfileBox::requestRegisterIcon(int iconId, ImageType::Type type, const QByteArray& icon)
{
    return d->isAllowed() && d->delegate->iconRegistrationRequest(iconId, type, icon);
}

/// Asks for the data of a registered icon; see iconRetrieved(). A lost answer is asked for again.
bool ProfileBox::requestRetrieveIcon(int iconId) const
{
    return d->isAllowed() && d->delegate->iconRetrievalRequest(iconId);
}

} // namespace vx::platform::zel

#include "ProfileBox.moc"
