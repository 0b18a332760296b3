// SPDX-License-Identifier: Apache-2.0
#include <splib/globals/PermissionJsonAdapter.h>

using namespace Qt::StringLiterals;

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
    object.addAttribute(u"showAppBox"_s, permissions.showAppBox);
    object.addAttribute(u"zelInvites"_s, permissions.zelInvites);
    object.addAttribute(u"registrationState"_s, permissions.registrationState);
    object.addAttribute(u"zelSetup"_s, permissions.zelSetup);
}

} // namespace zelsplib
