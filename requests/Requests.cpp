// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Requests.h>

#include <requests/Refusals.h>
#include <requests/RequestsPrivate.h>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

/// Without a \a context every request fails; \a parent owns it, if given.
Requests::Requests(Context* context, QObject* parent)
    : QObject(parent)
    , d(std::make_unique<RequestsPrivate>(context, this))
{
}

Requests::~Requests()
{
    d->context.clear(); // what is asked for while the futures end fails at once
    d->takeAll();
}

std::chrono::milliseconds Requests::timeout() const
{
    return d->timeout;
}

void Requests::setTimeout(std::chrono::milliseconds timeout)
{
    d->timeout = timeout;
}

/// The picture of the contact with the \a handle; without data when he or she has none. Refused without such a contact.
/// Known by the handle: one answer ends all that wait for it, also one that comes because the contact has another
/// picture now. The first request makes a ContactService, with which the others announce their list once more.
QFuture<Picture> Requests::displayPicture(const QString& handle)
{
    return d->ask(d->pictures, handle, [&] {
        if (d->contacts)
            return d->askForPicture(handle);
        if (!d->isMakingContacts)
            d->makeContacts();
        return QString();
    });
}

/// The eco identifier that belongs to \a ppId; empty when the service knows none. Known by the ppId: one answer ends
/// all that wait for it.
QFuture<QString> Requests::ecoId(const QString& ppId)
{
    return d->ask(d->ecoIds, ppId, [&] { return refusals::unless(d->utils.requestEcoId(ppId)); });
}

/// How the user stands with an eco identifier's owner. Refused when \a ecoId is empty. Known by \a ecoId: one answer
/// ends all that wait for it.
QFuture<EcoIdStatus::Type> Requests::ecoIdStatus(const QString& ecoId)
{
    return d->ask(d->ecoIdStates, ecoId,
                  [&] { return refusals::unless(d->utils.requestEcoIdStatus(ecoId), u"the identifier is empty"_s); });
}

/// Adds an item without an icon, and answers it as it is in the box. Refused when \a text or \a cookie are against the
/// rules of ProfileBox, and, as everything of the box, while the user does not allow the application one. Known by
/// text, icon and cookie: the first new item in which they are the same ends one request, the first of those that wait
/// for it.
QFuture<ProfileBoxItem> Requests::addItem(const QString& text, const QString& cookie)
{
    const ItemKey item(text, std::nullopt, cookie);
    return d->askBox(d->additions, item, [&] { return d->addItem(item); });
}

/// The same, of \a text and \a cookie, with the icon \a iconId, which is for the service to judge, as ProfileBox says:
/// for an item whose icon it does not know no answer comes.
QFuture<ProfileBoxItem> Requests::addItem(const QString& text, int iconId, const QString& cookie)
{
    const ItemKey item(text, iconId, cookie);
    return d->askBox(d->additions, item, [&] { return d->addItem(item); });
}

/// Registers the icon if there is none with the id \a iconId, and adds the item, of \a text and \a cookie, when it is
/// there. Refused, with nothing sent, when one of the two is against the rules. One time-out for both; the item is
/// added even if the future has ended by then, unless access was lost or this object destroyed. An icon that is
/// registered under this id, or on its way, is used as it is, whatever \a type and \a icon say.
QFuture<ProfileBoxItem> Requests::addItemWithIcon(const QString& text, int iconId, ImageType::Type type,
                                                  const QByteArray& icon, const QString& cookie)
{
    const ItemKey item(text, iconId, cookie);
    return d->askBox(d->additions, item, [&] { return d->addItemWithIcon(item, iconId, type, icon); });
}

/// Removes the item \a itemId. Refused when the box has none of this id. Known by the id: its removal ends all that
/// wait for it.
QFuture<void> Requests::removeItem(const QString& itemId)
{
    return d->askBox(d->removals, itemId, [&] {
        const QString refusal = refusals::unless(d->box.item(itemId).id() == itemId && !itemId.isEmpty(),
                                                 u"the box has no item \"%1\""_s.arg(itemId));
        return refusal.isEmpty() ? refusals::unless(d->box.requestRemoveItem(itemId)) : refusal;
    });
}

/// Gives the service an \a icon of the \a type for items to use under \a iconId. Refused when it is against the rules
/// of ProfileBox, and when an icon of this id is registered or on its way. Known by the id.
QFuture<void> Requests::registerIcon(int iconId, ImageType::Type type, const QByteArray& icon)
{
    return d->askBox(d->registrations, iconId, [&] {
        if (d->box.registeredIcons().contains(iconId))
            return u"an icon of the id %1 is registered"_s.arg(iconId);
        const QString refusal = refusals::ofIcon(iconId, icon);
        return refusal.isEmpty() ? refusals::unless(d->box.requestRegisterIcon(iconId, type, icon),
                                                    u"an icon of the id %1 is on its way"_s.arg(iconId))
                                 : refusal;
    });
}

/// The data of the icon registered as \a iconId, with the type that its first bytes show. Refused when there is none of
/// this id. Known by the id: one answer ends all that wait for it.
QFuture<Picture> Requests::retrieveIcon(int iconId)
{
    return d->askBox(d->icons, iconId, [&] {
        const QString refusal = refusals::unless(d->box.registeredIcons().contains(iconId),
                                                 u"no icon of the id %1 is registered"_s.arg(iconId));
        return refusal.isEmpty() ? refusals::unless(d->box.requestRetrieveIcon(iconId)) : refusal;
    });
}

/// Changes the personal message to \a personalMessage. Known by the value: the profile's taking it on ends all that
/// wait for it. Ends at once when the profile has it and no other change is waited for; what is refused by the service
/// never ends by itself.
QFuture<void> Requests::updatePersonalMessage(const QString& personalMessage)
{
    return d->change(
        d->messages, personalMessage,
        [&](UserProfile& profile) { return profile.requestUpdatePersonalMessage(personalMessage); },
        [&](const UserProfile& profile) { return profile.personalMessage() == personalMessage; });
}

/// Changes \a status and \a statusMessage, any status but Busy to Available. Known by the two, and ends as
/// updatePersonalMessage() does.
QFuture<void> Requests::updateStatus(UserStatus::Type status, const QString& statusMessage)
{
    const StatusKey value(status == UserStatus::Busy ? UserStatus::Busy : UserStatus::Available, statusMessage);
    return d->change(
        d->states, value, [&](UserProfile& profile) { return profile.requestUpdateStatus(value.first, value.second); },
        [&](const UserProfile& profile) { return StatusKey(profile.status(), profile.statusMessage()) == value; });
}

/// Changes the picture to \a displayPicture, of \a type. Refused unless it has 1 to UserProfile::maximumPictureSize
/// bytes, and while another one is on its way. Known by its bytes.
QFuture<void> Requests::updateDisplayPicture(ImageType::Type type, const QByteArray& displayPicture)
{
    return d->ask(d->ownPictures, displayPicture, [&] {
        const QString refusal = refusals::ofPicture(displayPicture);
        if (!refusal.isEmpty())
            return refusal;
        return refusals::unless(d->profile().requestUpdateDisplayPicture(type, displayPicture),
                                u"another one is on its way"_s);
    });
}

} // namespace vx::platform::zel
