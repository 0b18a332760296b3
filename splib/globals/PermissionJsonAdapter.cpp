// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/PermissionJsonAdapter.h>

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
    object.addAttribute(QStringLiteral("showAppBox"), permissions.showAppBox);
    object.addAttribute(QStringLiteral("zelInvites"), permissions.zelInvites);
    object.addAttribute(QStringLiteral("registrationState"), permissions.registrationState);
    object.addAttribute(QStringLiteral("zelSetup"), permissions.zelSetup);
}

} // namespace zelsplib
