// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/profilebox/ProfileBoxItem.h>

#include <zel/JsonAdapter.h>

namespace zelsplib {

/// Converts the elements of the "profileBoxItem" list, keyed by their item id.
class ProfileBoxItemJsonAdapter : public zel::JsonAdapter<ProfileBoxItem, QString>
{
public:
    ProfileBoxItem jsonToElement(iface::JsonObjectReader json, const ProfileBoxItem& base) override;
    void elementToJson(const ProfileBoxItem& item, const QSharedPointer<zel::JsonWriter>& writer) override;
    QString elementToId(const ProfileBoxItem& item) override;
    QString idJsonToId(iface::JsonObjectReader json) override;
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override;
};

} // namespace zelsplib
