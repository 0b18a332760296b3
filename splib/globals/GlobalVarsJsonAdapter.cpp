// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalVarsJsonAdapter.h>

#include <splib/contacts/PlatformContactJsonAdapter.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/PermissionJsonAdapter.h>

#include <zel/JsonWriter.h>

namespace zelsplib {

GlobalVar GlobalVarsJsonAdapter::jsonToElement(iface::JsonObjectReader json, const GlobalVar& base)
{
    GlobalVar element = base;
    json.readString("name", element.name);
    const iface::JsonObjectReader value = json["value"].object();
    if (element.name == globalnames::permission()) {
        const auto permissions = element.value.value<PlatformPermissions>();
        element.value = QVariant::fromValue(PermissionJsonAdapter::fromJson(value, permissions));
    } else if (element.name == globalnames::platformProfile()) {
        auto profile = element.value.value<PlatformContact>();
        profile.load(value);
        element.value = QVariant::fromValue(profile);
    }
    return element;
}

void GlobalVarsJsonAdapter::elementToJson(const GlobalVar& element, const QSharedPointer<zel::JsonWriter>& writer)
{
    const auto object = writer->addChild({}, zel::JsonWriter::Object);
    if (!object)
        return;
    object->addAttribute(QStringLiteral("name"), element.name);
    const auto value = object->addChild(QStringLiteral("value"), zel::JsonWriter::Object);
    if (element.name == globalnames::permission())
        PermissionJsonAdapter::toJson(element.value.value<PlatformPermissions>(), *value);
    else if (element.name == globalnames::platformProfile())
        writeContactMembers(element.value.value<PlatformContact>(), *value, true);
}

QString GlobalVarsJsonAdapter::elementToId(const GlobalVar& element)
{
    return element.name;
}

QString GlobalVarsJsonAdapter::idJsonToId(iface::JsonObjectReader json)
{
    QString name;
    json.readString("name", name);
    return name;
}

void GlobalVarsJsonAdapter::idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer)
{
    writer->addAttribute(QStringLiteral("name"), id);
}

} // namespace zelsplib
