// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>
#include <zel/JsonAdapter.h>

namespace zelsplib {

/// Converts contact records for the lists keyed by user id.
///
/// Stateless; used on the thread of the event loop.
class PlatformContactJsonAdapter : public zel::JsonAdapter<PlatformContact, QString>
{
public:
    PlatformContact jsonToElement(iface::JsonObjectReader json, const PlatformContact& base) override;
    /// Opens an unnamed object in the array it is given and writes every member, whatever is marked.
    void elementToJson(const PlatformContact& contact, const QSharedPointer<zel::JsonWriter>& writer) override;
    QString elementToId(const PlatformContact& contact) override;
    QString idJsonToId(iface::JsonObjectReader json) override;
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override;
};

/// Writes a record's members into an object that the caller has opened: all of them, or, of a record with marks,
/// only the marked ones. The client version is read but never written, and pictures never travel here.
void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly);

} // namespace zelsplib
