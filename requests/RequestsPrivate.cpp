// SPDX-License-Identifier: Apache-2.0
#include <requests/RequestsPrivate.h>

#include <QtCore/QScopeGuard>

#include <array>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

RequestsPrivate::RequestsPrivate(Context* givenContext, Requests* requests)
    : q(requests)
    , context(givenContext)
    , box(givenContext)
    , utils(givenContext)
{
    QObject::connect(&box, &ProfileBox::itemAdded, q, [this](const QString& itemId) { takeItem(itemId); });
    QObject::connect(&box, &ProfileBox::itemRemoved, q, [this](const QString& itemId) { removals.answerAll(itemId); });
    QObject::connect(&box, &ProfileBox::iconRegistered, q, [this](int iconId) { takeIcon(iconId); });
    QObject::connect(&box, &ProfileBox::iconRetrieved, q,
                     [this](int iconId, ImageType::Type type, const QByteArray& data) {
                         icons.answerAll(iconId, Picture{type, data});
                     });
    QObject::connect(&utils, &Utils::ecoIdUpdated, q,
                     [this](const QString& ppId, const QString& ecoId) { ecoIds.answerAll(ppId, ecoId); });
    QObject::connect(&utils, &Utils::ecoIdStatusUpdated, q,
                     [this](const QString& ecoId, EcoIdStatus::Type status) { ecoIdStates.answerAll(ecoId, status); });
    if (!context)
        return;
    QObject::connect(context, &Context::registrationStateUpdated, q, [this] {
        if (!context || !context->isAccessAllowed())
            loseAccess(u"the application lost its access"_s);
    });
    QObject::connect(context, &QObject::destroyed, q, [this] { loseAccess(u"the context is gone"_s); });
}

UserProfile& RequestsPrivate::profile()
{
    if (!ownProfile) {
        ownProfile = std::make_unique<UserProfile>(context);
        QObject::connect(ownProfile.get(), &UserProfile::personalMessageUpdated, q,
                         [this](const QString& value) { messages.answerAll(value); });
        QObject::connect(ownProfile.get(), &UserProfile::statusUpdated, q,
                         [this](UserStatus::Type status, const QString& message) {
                             states.answerAll({status, message});
                         });
        QObject::connect(ownProfile.get(), &UserProfile::displayPictureUpdated, q,
                         [this](ImageType::Type, const QByteArray& data) { ownPictures.answerAll(data); });
    }
    return *ownProfile;
}

/// Asks for all of them: while the service is made, which announces the list to the others, their slots may have
/// asked for more.
void RequestsPrivate::makeContacts()
{
    const QPointer<Requests> alive(q);
    const auto madeOrNot = qScopeGuard([this, alive] {
        if (alive)
            isMakingContacts = false;
    });
    isMakingContacts = true;
    auto made = std::make_unique<ContactService>(context);
    if (!alive)
        return;
    contacts = std::move(made);
    QObject::connect(contacts.get(), &ContactService::displayPictureUpdated, q,
                     [this](const QString& handle, ImageType::Type type, const QByteArray& data) {
                         pictures.answerAll(handle, Picture{type, data});
                     });
    const QList<QString> handles = pictures.keys();
    for (const QString& handle : handles) {
        const QString refusal = askForPicture(handle);
        if (alive && !refusal.isEmpty())
            pictures.failAll(handle, RequestError::Refused, refusal);
        if (!alive)
            return;
    }
}

QString RequestsPrivate::askForPicture(const QString& handle) const
{
    return refusals::unless(contacts->requestDisplayPicture(handle), u"no contact has the handle \"%1\""_s.arg(handle));
}

QString RequestsPrivate::addItem(const ItemKey& item)
{
    const auto& [text, iconId, cookie] = item;
    const QString refusal = refusals::ofItem(text, iconId, cookie);
    if (!refusal.isEmpty())
        return refusal;
    return refusals::unless(iconId ? box.requestAddItem(text, *iconId, cookie) : box.requestAddItem(text, cookie));
}

QString RequestsPrivate::addItemWithIcon(const ItemKey& item, int iconId, ImageType::Type type, const QByteArray& icon)
{
    if (box.registeredIcons().contains(iconId))
        return addItem(item);
    const auto& [text, optionalIcon, cookie] = item;
    QString refusal = refusals::ofItem(text, optionalIcon, cookie);
    if (refusal.isEmpty())
        refusal = refusals::ofIcon(iconId, icon);
    if (!refusal.isEmpty())
        return refusal;
    // False when it is on its way.
    if (!itemsForIcons.contains(iconId))
        box.requestRegisterIcon(iconId, type, icon);
    itemsForIcons[iconId].append(item);
    return {};
}

void RequestsPrivate::takeItem(const QString& itemId)
{
    const ProfileBoxItem item = box.item(itemId);
    const std::optional<int> iconId = item.iconId() < 0 ? std::nullopt : std::optional(item.iconId());
    additions.answerFirst({item.text(), iconId, item.cookie()}, item);
}

void RequestsPrivate::takeIcon(int iconId)
{
    const QList<ItemKey> items = itemsForIcons.take(iconId);
    for (const ItemKey& item : items)
        addItem(item);
    registrations.answerAll(iconId);
}

std::vector<std::unique_ptr<AnyPromise>> RequestsPrivate::takeAll()
{
    std::vector<std::unique_ptr<AnyPromise>> all;
    const std::array<WaitingListBase*, 10> lists{&pictures,      &ecoIds, &ecoIdStates, &additions, &removals,
                                                 &registrations, &icons,  &messages,    &states,    &ownPictures};
    for (WaitingListBase* const list : lists)
        list->takeAll(all);
    itemsForIcons.clear();
    return all;
}

void RequestsPrivate::loseAccess(const QString& why)
{
    const auto all = takeAll();
    for (const auto& promise : all)
        promise->fail(RequestError::AccessLost, why);
}

} // namespace vx::platform::zel
