// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonObjectReader.h>

#include <QtCore/QString>

namespace zelsplib {

/// One item of the user's profile box. A value; copies share their texts.
class ProfileBoxItem
{
public:
    static ProfileBoxItem create(const QString& itemId, const QString& imageId, const QString& text,
                                 const QString& cookie)
    {
        ProfileBoxItem item;
        item.m_itemId = itemId;
        item.m_imageId = imageId;
        item.m_text = text;
        item.m_cookie = cookie;
        return item;
    }

    /// The service's identifier, the key of the item.
    QString getItemId() const { return m_itemId; }
    /// The icon's id as decimal text, empty without an icon.
    QString getImageId() const { return m_imageId; }
    QString getText() const { return m_text; }
    /// The application's own, opaque to everybody else.
    QString getCookie() const { return m_cookie; }

    void setItemId(const QString& itemId) { m_itemId = itemId; }
    void setImageId(const QString& imageId) { m_imageId = imageId; }
    void setText(const QString& text) { m_text = text; }
    void setCookie(const QString& cookie) { m_cookie = cookie; }

    /// Reads what the object has over what the item holds; what the object lacks stays.
    void load(const iface::JsonObjectReader& json)
    {
        json.readFields("itemId", m_itemId, "imageId", m_imageId, "text", m_text, "cookie", m_cookie);
    }

    friend bool operator==(const ProfileBoxItem&, const ProfileBoxItem&) = default;

private:
    QString m_itemId;
    QString m_imageId;
    QString m_text;
    QString m_cookie;
};

} // namespace zelsplib
