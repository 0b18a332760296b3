// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/GlobalVarsJsonAdapter.h>

#include <splib/contacts/PlatformContactJsonAdapter.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/PermissionJsonAdapter.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

void GlobalVarsJsonAdapter::load(GlobalVar& element, const iface::JsonObjectReader& json) const
{
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
}

void GlobalVarsJsonAdapter::writeMembers(const GlobalVar& element, zel::JsonWriter& object) const
{
    object.addAttribute(u"name"_s, element.name);
    const auto value = object.addChild(u"value"_s, zel::JsonWriter::Object);
    if (element.name == globalnames::permission())
        PermissionJsonAdapter::toJson(element.value.value<PlatformPermissions>(), *value);
    else if (element.name == globalnames::platformProfile())
        writeContactMembers(element.value.value<PlatformContact>(), *value, true);
}

} // namespace zelsplib
