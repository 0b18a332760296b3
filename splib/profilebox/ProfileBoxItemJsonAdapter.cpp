// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/ProfileBoxItemJsonAdapter.h>

#include <zel/JsonWriter.h>

namespace zelsplib {

ProfileBoxItem ProfileBoxItemJsonAdapter::jsonToElement(iface::JsonObjectReader json, const ProfileBoxItem& base)
{
    ProfileBoxItem item = base;
    item.load(json);
    return item;
}

void ProfileBoxItemJsonAdapter::elementToJson(const ProfileBoxItem& item, const QSharedPointer<zel::JsonWriter>& writer)
{
    const auto object = writer->addChild({}, zel::JsonWriter::Object);
    if (!object)
        return;
    object->addAttribute(QStringLiteral("itemId"), item.getItemId());
    object->addAttribute(QStringLiteral("imageId"), item.getImageId());
    object->addAttribute(QStringLiteral("text"), item.getText());
    object->addAttribute(QStringLiteral("cookie"), item.getCookie());
}

QString ProfileBoxItemJsonAdapter::elementToId(const ProfileBoxItem& item)
{
    return item.getItemId();
}

QString ProfileBoxItemJsonAdapter::idJsonToId(iface::JsonObjectReader json)
{
    QString id;
    json.readString("itemId", id);
    return id;
}

void ProfileBoxItemJsonAdapter::idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer)
{
    writer->addAttribute(QStringLiteral("itemId"), id);
}

} // namespace zelsplib
