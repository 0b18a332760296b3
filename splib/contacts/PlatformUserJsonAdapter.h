// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>
#include <splib/RecordJsonAdapter.h>

#include <functional>

namespace zelsplib {

/// Converts the user ids that the contact list is made of: on the wire an id is an object whose only member is
/// "userId", and an id is its own key.
class PlatformUserJsonAdapter : public RecordJsonAdapter<QString, std::identity{}>
{
public:
    PlatformUserJsonAdapter()
        : RecordJsonAdapter("userId")
    {
    }

private:
    void load(QString& userId, const iface::JsonObjectReader& json) const override
    {
        json.readFields("userId", userId);
    }
    void writeMembers(const QString& userId, zel::JsonWriter& object) const override
    {
        writeFields(object, "userId", userId);
    }
};

} // namespace zelsplib
