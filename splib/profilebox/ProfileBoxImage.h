// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/Avatar.h>

#include <iface/JsonObjectReader.h>

#include <QtCore/QMetaType>
#include <QtCore/QSharedData>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

namespace zelsplib {

struct ProfileBoxImageData : public QSharedData
{
    QString imageId;
    QString imageHash;
    QSharedDataPointer<Avatar> image; ///< never null
};

/// One icon of the user's profile box. A value; copies share their data until one is changed.
class ProfileBoxImage
{
public:
    ProfileBoxImage();
    static ProfileBoxImage create(const QString& imageId, const QString& imageHash);
    static ProfileBoxImage create(const QString& imageId, const QString& imageHash,
                                  const QSharedDataPointer<Avatar>& image);

    /// The icon's id as decimal text, the key of the icon.
    QString getImageId() const { return d->imageId; }
    QString getImageHash() const { return d->imageHash; }
    /// The bytes, empty until they are known: they travel beside the list.
    QSharedDataPointer<Avatar> getImage() const { return d->image; }

    void setImageId(const QString& imageId) { d->imageId = imageId; }
    void setImageHash(const QString& imageHash) { d->imageHash = imageHash; }
    void setImage(const QSharedDataPointer<Avatar>& image) { d->image = image; }

    /// Reads what the object has over what the record holds; what the object lacks stays.
    void load(const iface::JsonObjectReader& json);

    friend bool operator==(const ProfileBoxImage& a, const ProfileBoxImage& b) { return a.equals(b); }
    friend bool operator!=(const ProfileBoxImage& a, const ProfileBoxImage& b) { return !a.equals(b); }

private:
    bool equals(const ProfileBoxImage& other) const;

    QSharedDataPointer<ProfileBoxImageData> d;
};

} // namespace zelsplib

Q_DECLARE_METATYPE(zelsplib::ProfileBoxImage)
