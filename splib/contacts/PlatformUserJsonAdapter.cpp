// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformUserJsonAdapter.h>

#include <zel/JsonWriter.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

QString PlatformUserJsonAdapter::jsonToElement(iface::JsonObjectReader json, const QString& base)
{
    QString userId = base;
    json.readString("userId", userId);
    return userId;
}

void PlatformUserJsonAdapter::elementToJson(const QString& userId, const QSharedPointer<zel::JsonWriter>& writer)
{
    if (const auto object = writer->addChild({}, zel::JsonWriter::Object))
        idToIdJson(userId, object);
}

QString PlatformUserJsonAdapter::elementToId(const QString& userId)
{
    return userId;
}

QString PlatformUserJsonAdapter::idJsonToId(iface::JsonObjectReader json)
{
    return jsonToElement(json, QString());
}

void PlatformUserJsonAdapter::idToIdJson(const QString& userId, const QSharedPointer<zel::JsonWriter>& writer)
{
    writer->addAttribute(u"userId"_s, userId);
}

} // namespace zelsplib
