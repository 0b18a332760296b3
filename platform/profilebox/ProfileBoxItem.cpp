// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBoxItem.h>

#include <platform/profilebox/ProfileBoxItemPrivate.h>

namespace vx::platform::zel {

ProfileBoxItem::ProfileBoxItem()
    : d(new ProfileBoxItemPrivate)
{
}

ProfileBoxItem::ProfileBoxItem(const zelsplib::ProfileBoxItem& record)
    : d(new ProfileBoxItemPrivate(record))
{
}

ProfileBoxItem::ProfileBoxItem(const ProfileBoxItem& other) = default;
ProfileBoxItem& ProfileBoxItem::operator=(const ProfileBoxItem& other) = default;
ProfileBoxItem::~ProfileBoxItem() = default;

QString ProfileBoxItem::id() const
{
    return d->record.getItemId();
}

QString ProfileBoxItem::text() const
{
    return d->record.getText();
}

QString ProfileBoxItem::cookie() const
{
    return d->record.getCookie();
}

int ProfileBoxItem::iconId() const
{
    const QString icon = d->record.getImageId();
    return icon.isEmpty() ? -1 : icon.toInt();
}

bool operator==(const ProfileBoxItem& left, const ProfileBoxItem& right)
{
    return left.d == right.d || left.d->record == right.d->record;
}

} // namespace vx::platform::zel
