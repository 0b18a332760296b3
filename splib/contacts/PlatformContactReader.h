// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

namespace zelsplib {

/// Reads what the object has over the record's fields; what it lacks, or has of another type, stays.
void readContactMembers(const iface::JsonObjectReader& json, PlatformContactData& data);

} // namespace zelsplib
