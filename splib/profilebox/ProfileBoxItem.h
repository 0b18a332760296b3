// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonObjectReader.h>

#include <QtCore/QMetaType>
#include <QtCore/QSharedData>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

namespace zelsplib {

struct ProfileBoxItemData : public QSharedData
{
    QString itemId;
    QString imageId;
    QString text;
    QString cookie;
};

/// One item of the user's profile box. A value; copies share their data until one is changed.
class ProfileBoxItem
{
public:
    ProfileBoxItem();
    static ProfileBoxItem create(const QString& itemId, const QString& imageId, const QString& text,
                                 const QString& cookie);

    /// The service's identifier, the key of the item.
    QString getItemId() const { return d->itemId; }
    /// The icon's id as decimal text, empty without an icon.
    QString getImageId() const { return d->imageId; }
    QString getText() const { return d->text; }
    /// The application's own, opaque to everybody else.
    QString getCookie() const { return d->cookie; }

    void setItemId(const QString& itemId) { d->itemId = itemId; }
    void setImageId(const QString& imageId) { d->imageId = imageId; }
    void setText(const QString& text) { d->text = text; }
    void setCookie(const QString& cookie) { d->cookie = cookie; }

    /// Reads what the object has over what the item holds; what the object lacks stays.
    void load(const iface::JsonObjectReader& json);

    friend bool operator==(const ProfileBoxItem& a, const ProfileBoxItem& b) { return a.equals(b); }
    friend bool operator!=(const ProfileBoxItem& a, const ProfileBoxItem& b) { return !a.equals(b); }

private:
    bool equals(const ProfileBoxItem& other) const;

    QSharedDataPointer<ProfileBoxItemData> d;
};

} // namespace zelsplib

Q_DECLARE_METATYPE(zelsplib::ProfileBoxItem)
