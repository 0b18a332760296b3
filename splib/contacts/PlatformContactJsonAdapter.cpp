// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <splib/contacts/PlatformContactFields.h>

#include <zel/JsonWriter.h>

namespace zelsplib {

PlatformContact PlatformContactJsonAdapter::jsonToElement(iface::JsonObjectReader json, const PlatformContact& base)
{
    PlatformContact contact = base;
    if (m_expected.isEmpty()) {
        contact.load(json);
    } else if (contact.load(json, m_expected.constFirst()); contact.getUri() == m_expected.constFirst()) {
        m_expected.removeFirst();
    } else {
        m_expected.clear(); // another order: the next request begins anew
    }
    return contact;
}

void PlatformContactJsonAdapter::elementToJson(const PlatformContact& contact,
                                               const QSharedPointer<zel::JsonWriter>& writer)
{
    const auto object = writer->addChild({}, zel::JsonWriter::Object);
    if (object)
        writeContactMembers(contact, *object, false);
}

QString PlatformContactJsonAdapter::elementToId(const PlatformContact& contact)
{
    return contact.getUri();
}

QString PlatformContactJsonAdapter::idJsonToId(iface::JsonObjectReader json)
{
    QString id;
    json.readString("userId", id);
    return id;
}

void PlatformContactJsonAdapter::idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer)
{
    if (m_expected.size() == mostExpected)
        m_expected.clear(); // nobody answers
    m_expected.append(id);
    writer->addAttribute(QStringLiteral("userId"), id);
}

void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly)
{
    const bool all = !markedOnly || !contact.isModified();
    const PlatformContactData& data = contact.data();
    forEachContactField([&](const auto& field) {
        if (field.written && (all || contact.isFieldModified(field.mark)))
            object.addAttribute(QLatin1String(field.key), data.*field.member);
    });
}

} // namespace zelsplib
