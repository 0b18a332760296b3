// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxImage.h>

namespace zelsplib {

ProfileBoxImage::ProfileBoxImage()
    : d(new ProfileBoxImageData)
{
    d->image = QSharedDataPointer<Avatar>(new Avatar);
}

ProfileBoxImage ProfileBoxImage::create(const QString& imageId, const QString& imageHash)
{
    ProfileBoxImage image;
    image.d->imageId = imageId;
    image.d->imageHash = imageHash;
    return image;
}

ProfileBoxImage ProfileBoxImage::create(const QString& imageId, const QString& imageHash,
                                        const QSharedDataPointer<Avatar>& image)
{
    ProfileBoxImage record = create(imageId, imageHash);
    record.setImage(image);
    return record;
}

void ProfileBoxImage::load(const iface::JsonObjectReader& json)
{
    json.readFields("imageId", d->imageId, "imageHash", d->imageHash);
}

bool ProfileBoxImage::equals(const ProfileBoxImage& other) const
{
    return d == other.d ||
           (d->imageId == other.d->imageId && d->imageHash == other.d->imageHash && *d->image == *other.d->image);
}

} // namespace zelsplib
