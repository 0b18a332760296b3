// SPDX-License-Identifier: Apache-2.0
#include <platform/profilebox/ProfileBoxDelegate.h>

#include <platform/channel/Trace.h>
#include <platform/context/HelperUtils.h>
#include <platform/profilebox/ProfileBoxItemPrivate.h>

#include <limits>

namespace vx::platform::zel {

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
    m_services->profileBox()->createProfileBoxItem(text, iconId, cookie);
    return true;
}

bool ProfileBoxDelegate::removeItemRequest(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::removeItemRequest";
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
    return m_services->profileBox()->createProfileBoxImage(iconId, HelperUtils::avatarTypeForPicture(type),
                                                           icon.constData(), size);
}

bool ProfileBoxDelegate::iconRetrievalRequest(int iconId) const
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::iconRetrievalRequest";
    m_services->profileBox()->retrieveProfileBoxImage(iconId);
    return true;
}

void ProfileBoxDelegate::notifyItemAdded(const QString& itemId)
{
    qCDebug(lcPlatform) << " ProfileBoxDelegate::notifyItemAdded";
    Q_EMIT itemAdded(itemId);
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
