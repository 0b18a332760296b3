// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/PlatformPermissions.h>

#include <iface/JsonObjectReader.h>
#include <zel/JsonWriter.h>

namespace zelsplib {

/// Converts the permission record, which is no list element of its own but a value under a name.
class PermissionJsonAdapter
{
public:
    /// Members that are missing or of another type keep what `base` holds.
    static PlatformPermissions fromJson(const iface::JsonObjectReader& json, const PlatformPermissions& base);
    /// Writes the members into an object that the caller has opened.
    static void toJson(const PlatformPermissions& permissions, zel::JsonWriter& object);
};

} // namespace zelsplib
