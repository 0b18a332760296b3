// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/Avatar.h>

#include <iface/JsonObjectReader.h>

#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

namespace zelsplib {

/// One icon of the user's profile box. A value; copies share their texts and bytes.
class ProfileBoxImage
{
public:
    static ProfileBoxImage create(const QString& imageId, const QString& imageHash,
                                  const QSharedDataPointer<Avatar>& image = QSharedDataPointer<Avatar>(new Avatar))
    {
        ProfileBoxImage record;
        record.m_imageId = imageId;
        record.m_imageHash = imageHash;
        record.m_image = image;
        return record;
    }

    /// The icon's id as decimal text, the key of the icon.
    QString getImageId() const { return m_imageId; }
    QString getImageHash() const { return m_imageHash; }
    /// The bytes, empty until they are known: they travel beside the list.
    QSharedDataPointer<Avatar> getImage() const { return m_image; }

    void setImageId(const QString& imageId) { m_imageId = imageId; }
    void setImageHash(const QString& imageHash) { m_imageHash = imageHash; }
    void setImage(const QSharedDataPointer<Avatar>& image) { m_image = image; }

    /// Reads what the object has over what the record holds; what the object lacks stays.
    void load(const iface::JsonObjectReader& json) { json.readFields("imageId", m_imageId, "imageHash", m_imageHash); }

    friend bool operator==(const ProfileBoxImage& a, const ProfileBoxImage& b)
    {
        return a.m_imageId == b.m_imageId && a.m_imageHash == b.m_imageHash && *a.m_image == *b.m_image;
    }

private:
    QString m_imageId;
    QString m_imageHash;
    QSharedDataPointer<Avatar> m_image{new Avatar}; ///< never null
};

} // namespace zelsplib
