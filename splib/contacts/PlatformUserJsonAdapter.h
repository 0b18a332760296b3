// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonAdapter.h>

#include <QtCore/QString>

namespace zelsplib {

/// Converts the user ids that the contact list is made of: on the wire an id is an object whose only member is
/// "userId", and an id is its own key.
class PlatformUserJsonAdapter : public zel::JsonAdapter<QString, QString>
{
public:
    QString jsonToElement(iface::JsonObjectReader json, const QString& base) override;
    void elementToJson(const QString& userId, const QSharedPointer<zel::JsonWriter>& writer) override;
    QString elementToId(const QString& userId) override;
    QString idJsonToId(iface::JsonObjectReader json) override;
    void idToIdJson(const QString& userId, const QSharedPointer<zel::JsonWriter>& writer) override;
};

} // namespace zelsplib
