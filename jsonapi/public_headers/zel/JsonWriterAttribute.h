// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonWriter.h>

namespace zel {

/// A named child of a writer, not opened yet: `JsonWriterAttribute(request, "elements").array()`.
///
/// Shares the parent; the name is a UTF-8 string that must outlive the attribute. Opening answers what
/// JsonWriter::addChild() answers: null when the parent is read-only.
class ZEL_EXPORT JsonWriterAttribute
{
public:
    JsonWriterAttribute(const QSharedPointer<JsonWriter>& parent, const char* name);

    QSharedPointer<JsonWriter> object() const;
    QSharedPointer<JsonWriter> array() const;

private:
    QSharedPointer<JsonWriter> m_writer;
    const char* m_name;
};

} // namespace zel
