// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonNodeReader.h>

namespace iface {

class JsonArrayReader;
class JsonObjectReader;

/// One member of an object or element of an array, not looked at yet.
///
/// A small value that points to the reader of the node around it. Keep that reader alive while the attribute is in
/// use: an attribute made from a temporary reader is good to the end of the full expression and no further. The
/// attribute handed to a message listener is good until the listener returns, however long it stays in a nested
/// event loop; copying it does not make it live longer.
///
/// Entering a child that is missing, or neither an object nor an array, gives an invalid reader; which of the two it
/// is, neither object() nor array() asks. An attribute without a source gives an invalid one, too, which is an error of
/// the program and is logged.
class ZEL_EXPORT JsonReaderAttribute
{
public:
    JsonReaderAttribute(JsonChildIdentifier child, const JsonNodeReader* around)
        : m_id(child)
        , m_parent(around)
    {
    }

    JsonChildIdentifier id() const { return m_id; }
    const JsonNodeReader* parent() const { return m_parent; }

    JsonObjectReader object() const;
    JsonArrayReader array() const;

    /// Reads the child itself as a scalar; false when it is missing or of another type.
    template <class T>
    bool read(T& value) const
    {
        return m_parent && m_parent->read(m_id, value);
    }

private:
    JsonChildIdentifier m_id;
    const JsonNodeReader* m_parent;
};

inline JsonReaderAttribute JsonNodeReader::operator[](JsonChildIdentifier child) const
{
    return {child, this};
}

} // namespace iface

#include <iface/JsonArrayReader.h>
#include <iface/JsonObjectReader.h>
