// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonSource.h>

namespace iface {

class JsonReaderAttribute;

/// A reader on one node of a received message: three words, passed by copy.
///
/// Belongs to nobody and owns nothing; it is good while the message is being handled and its source lives. A reader
/// of a node that was missing or of the wrong kind is not valid: every read through it fails quietly, and it has no
/// children. Reading never throws and never logs.
///
///     QString name;                             // what stays when the member is missing
///     bool silent = false;
///     reader.readFields("name", name, "silent", silent);
class ZEL_EXPORT JsonNodeReader
{
public:
    JsonNodeReader() = default;
    JsonNodeReader(JsonSource* from, void* at, bool entered)
        : m_node(at)
        , m_source(from)
        , m_valid(entered)
    {
    }

    bool isValid() const { return m_valid && m_source; }
    void* node() const { return m_node; }
    JsonSource* source() const { return m_source; }

    /// Members of the object, or elements of the array.
    int numChildren() const { return isValid() ? m_source->numChildren(m_node) : 0; }

    bool readInt(JsonChildIdentifier child, int& value) const
    {
        return isValid() && m_source->readInt(m_node, child, value);
    }
    bool readDouble(JsonChildIdentifier child, double& value) const
    {
        return isValid() && m_source->readDouble(m_node, child, value);
    }
    bool readBool(JsonChildIdentifier child, bool& value) const
    {
        return isValid() && m_source->readBool(m_node, child, value);
    }
    bool readLong(JsonChildIdentifier child, long& value) const
    {
        return isValid() && m_source->readLong(m_node, child, value);
    }
    bool readString(JsonChildIdentifier child, QString& value) const
    {
        return isValid() && m_source->readString(m_node, child, value);
    }

    /// The same by the type of the value, for tables and templates.
    bool read(JsonChildIdentifier child, int& value) const { return readInt(child, value); }
    bool read(JsonChildIdentifier child, double& value) const { return readDouble(child, value); }
    bool read(JsonChildIdentifier child, bool& value) const { return readBool(child, value); }
    bool read(JsonChildIdentifier child, long& value) const { return readLong(child, value); }
    bool read(JsonChildIdentifier child, QString& value) const { return readString(child, value); }

    /// Shows all members of the object, which costs less than asking for many of them by name. False when there is no
    /// object or its source cannot do it.
    bool visitMembers(JsonMemberVisitor& visitor) const { return isValid() && m_source->visitMembers(m_node, visitor); }

    /// Reads several members: name, value, name, value. Answers how many were there. Cheapest in the order in which
    /// the sender writes them.
    template <class T, class... More>
    int readFields(JsonChildIdentifier child, T& value, More&&... more) const
    {
        const int found = read(child, value) ? 1 : 0;
        if constexpr (sizeof...(More) > 0) {
            return found + readFields(more...);
        } else {
            return found;
        }
    }

    /// The child as a handle that can be entered. It points to this reader, which must live as long as the handle is
    /// used: in `reader["value"].object()["elements"].array()` every temporary does.
    JsonReaderAttribute operator[](JsonChildIdentifier child) const;

private:
    void* m_node = nullptr;
    JsonSource* m_source = nullptr;
    bool m_valid = false;
};

} // namespace iface

#include <iface/JsonReaderAttribute.h>
