// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonAdapter.h>
#include <zel/JsonWriter.h>

#include <QtCore/QLatin1String>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>

#include <algorithm>
#include <cstddef>
#include <functional>

namespace zelsplib {

/// A text that a template is given.
template <std::size_t size>
struct Literal
{
    constexpr Literal(const char (&literal)[size]) { std::copy_n(literal, size, text); }

    char text[size] = {};
};

/// Converts records whose key is one text member, which stands in the record and alone is what names it. What is left
/// to say is how a record is read, and which members it has.
///
/// @tparam key the member or function that answers the key of a record
/// @tparam keyMember what it is called in JSON
template <typename Record, auto key, Literal keyMember>
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
        json.readString(keyMember.text, id);
        return id;
    }
    void idToIdJson(const QString& id, const QSharedPointer<zel::JsonWriter>& writer) override
    {
        writer->addAttribute(m_keyName, id);
    }

private:
    /// Reads what `json` has over what the record holds.
    virtual void load(Record& record, const iface::JsonObjectReader& json) const = 0;
    virtual void writeMembers(const Record& record, zel::JsonWriter& object) const = 0;

    const QString m_keyName{QLatin1String(keyMember.text)}; ///< made once for the thousands of keys that are written
};

} // namespace zelsplib
