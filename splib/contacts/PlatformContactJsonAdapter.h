// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/JsonFields.h>
#include <splib/RecordJsonAdapter.h>
#include <splib/contacts/PlatformContact.h>

#include <functional>

namespace zelsplib {

/// Writes a record's members into an object that the caller has opened: all of them, or, of a record with marks,
/// only the marked ones. The client version is read but never written, and pictures never travel here.
void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly);

/// Converts contact records for the lists keyed by user id. Writes every member, whatever is marked.
class PlatformContactJsonAdapter : public RecordJsonAdapter<PlatformContact, &PlatformContact::getUri, "userId">
{
    void load(PlatformContact& contact, const iface::JsonObjectReader& json) const override { contact.load(json); }
    void writeMembers(const PlatformContact& contact, zel::JsonWriter& object) const override
    {
        writeContactMembers(contact, object, false);
    }
};

/// Converts the user ids that the contact list is made of: on the wire an id is an object whose only member is
/// "userId", and an id is its own key.
class PlatformUserJsonAdapter : public RecordJsonAdapter<QString, std::identity{}, "userId">
{
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
