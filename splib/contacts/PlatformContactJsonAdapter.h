// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/RecordJsonAdapter.h>
#include <splib/contacts/PlatformContact.h>

namespace zelsplib {

/// Writes a record's members into an object that the caller has opened: all of them, or, of a record with marks,
/// only the marked ones. The client version is read but never written, and pictures never travel here.
void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly);

/// Converts contact records for the lists keyed by user id. Writes every member, whatever is marked.
class PlatformContactJsonAdapter : public RecordJsonAdapter<PlatformContact, &PlatformContact::getUri>
{
public:
    PlatformContactJsonAdapter()
        : RecordJsonAdapter("userId")
    {
    }

private:
    void load(PlatformContact& contact, const iface::JsonObjectReader& json) const override { contact.load(json); }
    void writeMembers(const PlatformContact& contact, zel::JsonWriter& object) const override
    {
        writeContactMembers(contact, object, false);
    }
};

} // namespace zelsplib
