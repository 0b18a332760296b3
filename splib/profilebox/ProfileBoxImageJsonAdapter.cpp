// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxImageJsonAdapter.h>

#include <zel/JsonWriter.h>

namespace zelsplib {

ProfileBoxImage ProfileBoxImageJsonAdapter::jsonToElement(iface::JsonObjectReader json, const ProfileBoxImage& base)
{
    ProfileBoxImage image = base;
    image.load(json);
    return image;
}

void ProfileBoxImageJsonAdapter::elementToJson(const ProfileBoxImage& image,
                                               const QSharedPointer<zel::JsonWriter>& writer)
{
    const auto object = writer->addChild({}, zel::JsonWriter::Object);
    if (!object)
        return;
    object->addAttribute(QStringLiteral("imageId"), image.getImageId());
    object->addAttribute(QStringLiteral("imageHash"), image.getImageHash());
}

QString ProfileBoxImageJsonAdapter::elementToId(const ProfileBoxImage& image)
{
    return image.getImageId();
}

QString ProfileBoxImageJsonAdapter::idJsonToId(iface::JsonObjectReader json)
{
    QString id;
    json.readString("imageId", id);
    return id;
}

void ProfileBoxImageJsonAdapter::idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer)
{
    writer->addAttribute(QStringLiteral("imageId"), id);
}

} // namespace zelsplib
