// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/RecordJsonAdapter.h>
#include <splib/contacts/PlatformContactJsonAdapter.h>
#include <splib/globals/GlobalNames.h>
#include <splib/globals/GlobalVar.h>
#include <splib/globals/PermissionJsonAdapter.h>

namespace zelsplib {

/// Converts the elements of the "global" list. Of an own profile with marked fields only those are written: a change of
/// one field must blank no other.
class GlobalVarsJsonAdapter : public RecordJsonAdapter<GlobalVar, &GlobalVar::name, "name">
{
    void load(GlobalVar& element, const iface::JsonObjectReader& json) const override
    {
        json.readString("name", element.name);
        const iface::JsonObjectReader value = json["value"].object();
        if (element.name == globalnames::permission()) {
            auto permissions = element.value.value<PlatformPermissions>();
            PermissionJsonAdapter::load(permissions, value);
            element.value = QVariant::fromValue(permissions);
        } else if (element.name == globalnames::platformProfile()) {
            auto profile = element.value.value<PlatformContact>();
            profile.load(value);
            element.value = QVariant::fromValue(profile);
        }
    }
    void writeMembers(const GlobalVar& element, zel::JsonWriter& object) const override
    {
        writeFields(object, "name", element.name);
        const auto value = object.addChild(QStringLiteral("value"), zel::JsonWriter::Object);
        if (element.name == globalnames::permission())
            PermissionJsonAdapter::writeMembers(element.value.value<PlatformPermissions>(), *value);
        else if (element.name == globalnames::platformProfile())
            writeContactMembers(element.value.value<PlatformContact>(), *value, true);
    }
};

} // namespace zelsplib
