// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/PermissionJsonAdapter.h>

#include <splib/JsonFields.h>

namespace zelsplib {

PlatformPermissions PermissionJsonAdapter::fromJson(const iface::JsonObjectReader& json,
                                                    const PlatformPermissions& base)
{
    PlatformPermissions permissions = base;
    json.readFields("showAppBox", permissions.showAppBox, "zelInvites", permissions.zelInvites, "registrationState",
                    permissions.registrationState, "zelSetup", permissions.zelSetup);
    return permissions;
}

void PermissionJsonAdapter::toJson(const PlatformPermissions& permissions, zel::JsonWriter& object)
{
    writeFields(object, "showAppBox", permissions.showAppBox, "zelInvites", permissions.zelInvites, "registrationState",
                permissions.registrationState, "zelSetup", permissions.zelSetup);
}

} // namespace zelsplib
