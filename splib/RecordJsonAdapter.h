// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonAdapter.h>
#include <zel/JsonWriter.h>

#include <QtCore/QLatin1String>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <functional>

namespace zelsplib {

/// Converts records whose key is one text member, which stands in the record and alone is what names it. What is left
/// to say is how a record is read, and which members it has.
///
/// @tparam key the member or function that answers the key of a record
template <typename Record, auto key>
class RecordJsonAdapter : public zel::JsonAdapter<Record, QString>
{
public:
    Record jsonToElement(iface::JsonObjectReader json, const Record& base) override
    {
        Record record = base;
        load(record, json);
        return record;
    }
    void elementToJson(const Record& record, const QSharedPointer<zel::JsonWriter>& writer) override
    {
        if (const auto object = writer->addChild({}, zel::JsonWriter::Object))
            writeMembers(record, *object);
    }
    QString elementToId(const Record& record) override { return std::invoke(key, record); }
    QString idJsonToId(iface::JsonObjectReader json) override
    {
        QString id;
        json.readString(m_keyMember, id);
        return id;
    }
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override
    {
        writer->addAttribute(m_keyName, id);
    }

protected:
    /// `keyMember` is a literal.
    explicit RecordJsonAdapter(const char* keyMember)
        : m_keyMember(keyMember)
        , m_keyName(QLatin1String(keyMember))
    {
    }

private:
    /// Reads what `json` has over what the record holds.
    virtual void load(Record& record, const iface::JsonObjectReader& json) const = 0;
    virtual void writeMembers(const Record& record, zel::JsonWriter& object) const = 0;

    const char* const m_keyMember;
    const QString m_keyName; ///< the same, made once for the thousands of keys that are written
};

} // namespace zelsplib
