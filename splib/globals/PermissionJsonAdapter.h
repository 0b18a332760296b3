// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>
#include <splib/globals/PlatformPermissions.h>

#include <iface/JsonObjectReader.h>

namespace zelsplib {

/// Converts the permission record, which is no list element of its own but a value under a name.
struct PermissionJsonAdapter
{
    /// Members that are missing or of another type keep what the record holds.
    static void load(PlatformPermissions& permissions, const iface::JsonObjectReader& json)
    {
        json.readFields("showAppBox", permissions.showAppBox, "zelInvites", permissions.zelInvites, "registrationState",
                        permissions.registrationState, "zelSetup", permissions.zelSetup);
    }
    /// Writes the members into an object that the caller has opened.
    static void writeMembers(const PlatformPermissions& permissions, zel::JsonWriter& object)
    {
        writeFields(object, "showAppBox", permissions.showAppBox, "zelInvites", permissions.zelInvites,
                    "registrationState", permissions.registrationState, "zelSetup", permissions.zelSetup);
    }
};

} // namespace zelsplib
