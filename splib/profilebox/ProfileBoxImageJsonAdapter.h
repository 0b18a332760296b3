// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/profilebox/ProfileBoxImage.h>

#include <zel/JsonAdapter.h>

namespace zelsplib {

/// Converts the elements of the "profileBoxImage" list, keyed by their image id.
class ProfileBoxImageJsonAdapter : public zel::JsonAdapter<ProfileBoxImage, QString>
{
public:
    ProfileBoxImage jsonToElement(iface::JsonObjectReader json, const ProfileBoxImage& base) override;
    void elementToJson(const ProfileBoxImage& image, const QSharedPointer<zel::JsonWriter>& writer) override;
    QString elementToId(const ProfileBoxImage& image) override;
    QString idJsonToId(iface::JsonObjectReader json) override;
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override;
};

} // namespace zelsplib
