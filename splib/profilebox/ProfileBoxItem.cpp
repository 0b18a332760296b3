// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxItem.h>

namespace zelsplib {

ProfileBoxItem::ProfileBoxItem()
    : d(new ProfileBoxItemData)
{
}

ProfileBoxItem ProfileBoxItem::create(const QString& itemId, const QString& imageId, const QString& text,
                                      const QString& cookie)
{
    ProfileBoxItem item;
    item.d->itemId = itemId;
    item.d->imageId = imageId;
    item.d->text = text;
    item.d->cookie = cookie;
    return item;
}

void ProfileBoxItem::load(const iface::JsonObjectReader& json)
{
    json.readFields("itemId", d->itemId, "imageId", d->imageId, "text", d->text, "cookie", d->cookie);
}

bool ProfileBoxItem::equals(const ProfileBoxItem& other) const
{
    return d == other.d || (d->itemId == other.d->itemId && d->imageId == other.d->imageId &&
                            d->text == other.d->text && d->cookie == other.d->cookie);
}

} // namespace zelsplib
