// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

/// Which child of a JSON node is meant: a member by its name, or an element by its place.
///
/// A small value. It does not own the name, a NUL-terminated UTF-8 string that must outlive it; string literals
/// always do. Converts from both, so that readers are asked as `reader.readString("id", id)` or `reader[3]`.
struct JsonChildIdentifier
{
    JsonChildIdentifier(int place)
        : index(place)
        , name(nullptr)
    {
    }
    JsonChildIdentifier(const char* member)
        : index(0)
        , name(member)
    {
    }

    int index;        ///< place in the array, used when there is no name
    const char* name; ///< name of the member, or null
};

} // namespace iface
