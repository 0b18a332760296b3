// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>
#include <splib/RecordJsonAdapter.h>
#include <splib/profilebox/ProfileBoxImage.h>
#include <splib/profilebox/ProfileBoxItem.h>

namespace zelsplib {

/// Converts the elements of the "profileBoxItem" list.
class ProfileBoxItemJsonAdapter : public RecordJsonAdapter<ProfileBoxItem, &ProfileBoxItem::getItemId, "itemId">
{
    void load(ProfileBoxItem& item, const iface::JsonObjectReader& json) const override { item.load(json); }
    void writeMembers(const ProfileBoxItem& item, zel::JsonWriter& object) const override
    {
        writeFields(object, "itemId", item.getItemId(), "imageId", item.getImageId(), "text", item.getText(), "cookie",
                    item.getCookie());
    }
};

/// Converts the elements of the "profileBoxImage" list.
class ProfileBoxImageJsonAdapter : public RecordJsonAdapter<ProfileBoxImage, &ProfileBoxImage::getImageId, "imageId">
{
    void load(ProfileBoxImage& image, const iface::JsonObjectReader& json) const override { image.load(json); }
    void writeMembers(const ProfileBoxImage& image, zel::JsonWriter& object) const override
    {
        writeFields(object, "imageId", image.getImageId(), "imageHash", image.getImageHash());
    }
};

} // namespace zelsplib
