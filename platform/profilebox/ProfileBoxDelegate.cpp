// SPDX-License-Identifier: Apache-2.0
#include <platform/profilebox/ProfileBoxDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <platform/mistakes/Mistakes.h>
#include <splib/profilebox/BoxRefusal.h>
#include <vx/platform/zel/ProfileBox.h>

#include <limits>

using namespace Qt::StringLiterals;

namespace vx::platform::zel {

namespace {

constexpr const char* addingItem = "ProfileBox::requestAddItem";
constexpr const char* registeringIcon = "ProfileBox::requestRegisterIcon";

// What applications read and what the manager goes by.
static_assert(ProfileBox::maximumTextLength == zelsplib::maxTextLength &&
              ProfileBox::maximumLineBreaks == zelsplib::maxTextBreaks &&
              ProfileBox::maximumCookieLength == zelsplib::maxCookieLength &&
              ProfileBox::maximumIconSize == zelsplib::maxIconSize);

QString wordsOf(zelsplib::BoxRefusal refusal, bool isEmpty = false)
{
    using zelsplib::BoxRefusal;
    switch (refusal) {
    case BoxRefusal::TextIsEmpty:
        return u"the text is empty; give it 1 to %1 characters"_s.arg(ProfileBox::maximumTextLength);
    case BoxRefusal::TextIsTooLong:
        return u"the text is too long; give it 1 to %1 characters, those of QString::size()"_s.arg(
            ProfileBox::maximumTextLength);
    case BoxRefusal::TextHasTooManyLines:
        return u"the text has more than %1 line breaks, a carriage return and a line feed counting as "
               "two; take some out"_s.arg(ProfileBox::maximumLineBreaks);
    case BoxRefusal::CookieIsTooLong:
        return u"the cookie is too long; give it at most %1 characters"_s.arg(ProfileBox::maximumCookieLength);
    case BoxRefusal::IconIdIsNegative:
        return u"the icon id is negative; take one from 0 on"_s;
    case BoxRefusal::IconIsNull: // never from a QByteArray
    case BoxRefusal::IconHasWrongSize:
        return u"the icon is %1; give it 1 to %2 bytes"_s.arg(isEmpty ? u"empty"_s : u"too big"_s)
            .arg(ProfileBox::maximumIconSize);
    case BoxRefusal::IconIsUnderWay:
        return u"an icon with this id is under way; wait for iconRegistered()"_s;
    case BoxRefusal::IconIsRegistered:
        return u"an icon with this id is registered already; registeredIcons() has them"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

// The blank at the start of each trace belongs to it.

ProfileBoxDelegate::ProfileBoxDelegate(Services* services, QObject* parent)
    : QObject(parent)
    , m_services(services)
{
}

/// True even when the manager refuses the item: what was wrong with it is in the log.
bool ProfileBoxDelegate::addItemRequest(const QString& text, const boost::optional<int>& iconId, const QString& cookie)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::addItemRequest";
    const auto box = m_services->profileBox();
    if (const auto refusal = zelsplib::refusalOfItem(text, cookie))
        mistakes::warn(addingItem, wordsOf(*refusal));
    else if (iconId && *iconId < 0)
        mistakes::warn(addingItem, "the icon id is negative; for an item without an icon leave the id out");
    else if (iconId && isLoaded() && !box->isIconKnown(*iconId))
        mistakes::warn(addingItem, "no icon with this id is registered or under way; call requestRegisterIcon() first");
    warnOfHiddenBox(addingItem);
    box->createProfileBoxItem(text, iconId, cookie);
    return true;
}

bool ProfileBoxDelegate::removeItemRequest(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::removeItemRequest";
    zelsplib::ProfileBoxItem record;
    if (isLoaded() && !m_services->profileBox()->getProfileBoxItemByItemId(itemId, &record))
        mistakes::warn("ProfileBox::requestRemoveItem",
                       "there is no item with this id; take it from items() or itemAdded()");
    m_services->profileBox()->removeProfileBoxItem(itemId);
    return true;
}

bool ProfileBoxDelegate::removeAllItemsRequest()
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::removeAllItemsRequest";
    QList<zelsplib::ProfileBoxItem> records;
    m_services->profileBox()->getProfileBoxItems(records);
    for (const zelsplib::ProfileBoxItem& record : std::as_const(records))
        removeItemRequest(record.getItemId());
    return true;
}

ProfileBoxItem ProfileBoxDelegate::item(const QString& itemId) const
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::item";
    zelsplib::ProfileBoxItem record;
    return m_services->profileBox()->getProfileBoxItemByItemId(itemId, &record) ? ProfileBoxItem(record)
                                                                                : ProfileBoxItem();
}

QList<ProfileBoxItem> ProfileBoxDelegate::items() const
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::items";
    QList<zelsplib::ProfileBoxItem> records;
    m_services->profileBox()->getProfileBoxItems(records);
    QList<ProfileBoxItem> items;
    items.reserve(records.size());
    for (const zelsplib::ProfileBoxItem& record : std::as_const(records))
        items.append(ProfileBoxItem(record));
    return items;
}

int ProfileBoxDelegate::itemCount() const
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::itemCount";
    return m_services->profileBox()->profileBoxItemCount();
}

bool ProfileBoxDelegate::iconRegistrationRequest(int iconId, ImageType::Type type, const QByteArray& icon)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::iconRegistrationRequest";
    // What is too long for the manager to count is too long for an icon in any case.
    const auto size = static_cast<unsigned int>(qMin<qsizetype>(icon.size(), std::numeric_limits<unsigned int>::max()));
    const auto box = m_services->profileBox();
    if (const auto refusal = box->refusalOfIcon(iconId, icon.constData(), size))
        mistakes::warn(registeringIcon, wordsOf(*refusal, icon.isEmpty()));
    warnOfHiddenBox(registeringIcon);
    return box->createProfileBoxImage(iconId, HelperUtils::avatarTypeForPicture(type), icon.constData(), size);
}

void ProfileBoxDelegate::warnOfHiddenBox(const char* where) const
{
    if (!m_services->globals()->getPermissions().showAppBox)
        mistakes::warn(where, "the user does not allow the application to show a box, so the service will refuse; "
                              "ApplicationPermissions tells");
}

bool ProfileBoxDelegate::isLoaded() const
{
    return m_services->profileBox()->profileBoxState() == zelsplib::ProfileBoxState::Ready;
}

QList<int> ProfileBoxDelegate::registeredIcons() const
{
    QList<zelsplib::ProfileBoxImage> records;
    m_services->profileBox()->buildProfileBoxImageList(records);
    QList<int> ids;
    ids.reserve(records.size());
    for (const zelsplib::ProfileBoxImage& record : std::as_const(records))
        ids.append(record.getImageId().toInt());
    return ids;
}

bool ProfileBoxDelegate::iconRetrievalRequest(int iconId) const
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::iconRetrievalRequest";
    if (isLoaded() && !m_services->profileBox()->isIconKnown(iconId))
        mistakes::warn("ProfileBox::requestRetrieveIcon",
                       "no icon with this id is registered; registeredIcons() has those that are");
    m_services->profileBox()->retrieveProfileBoxImage(iconId);
    return true;
}

void ProfileBoxDelegate::notifyReceived()
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyReceived";
    Q_EMIT received();
}

void ProfileBoxDelegate::notifyItemAdded(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyItemAdded";
    Q_EMIT itemAdded(itemId);
}

void ProfileBoxDelegate::notifyItemUpdated(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyItemUpdated";
    Q_EMIT itemUpdated(itemId);
}

void ProfileBoxDelegate::notifyItemRemoved(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyItemRemoved";
    Q_EMIT itemRemoved(itemId);
}

void ProfileBoxDelegate::notifyIconRegistered(int iconId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyIconRegistered";
    Q_EMIT iconRegistered(iconId);
}

void ProfileBoxDelegate::notifyIconUpdated(int iconId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyIconUpdated";
    Q_EMIT iconUpdated(iconId);
}

void ProfileBoxDelegate::notifyIconRemoved(int iconId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyIconRemoved";
    Q_EMIT iconRemoved(iconId);
}

void ProfileBoxDelegate::notifyIconRetrieved(int iconId, ImageType::Type iconType, const QByteArray& iconData)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyIconRetrieved";
    Q_EMIT iconRetrieved(iconId, iconType, iconData);
}

} // namespace vx::platform::zel
