// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/globals/GlobalVar.h>

#include <zel/JsonAdapter.h>

namespace zelsplib {

/// Converts the elements of the "global" list, keyed by their name.
class GlobalVarsJsonAdapter : public zel::JsonAdapter<GlobalVar, QString>
{
public:
    GlobalVar jsonToElement(iface::JsonObjectReader json, const GlobalVar& base) override;
    /// Of an own profile with marked fields only those are written: a change of one field must blank no other.
    void elementToJson(const GlobalVar& element, const QSharedPointer<zel::JsonWriter>& writer) override;
    QString elementToId(const GlobalVar& element) override;
    QString idJsonToId(iface::JsonObjectReader json) override;
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override;
};

} // namespace zelsplib
