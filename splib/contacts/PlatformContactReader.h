// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

namespace zelsplib {

/// Reads what the object has over the record's fields; what it lacks, or has of another type, stays. Texts of which
/// many records have the same, and the user id if it is the one expected, share one memory. Any thread.
void readContactMembers(const iface::JsonObjectReader& json, PlatformContactData& data, const QString& expectedUri);

} // namespace zelsplib
