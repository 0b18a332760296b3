// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/JsonChildIdentifier.h>

#include <QtCore/QString>

namespace iface {

class JsonMemberVisitor;
class JsonNodeReader;

/// A tree of JSON values that readers look into, one node at a time.
///
/// A node is an opaque handle, valid while the message it belongs to is being handled; a valid node is never null.
/// Reads answer whether the child was there and of the type asked for, and touch their out-argument only then, so
/// that callers preset what they want by default and read over it. No read depends on an earlier one.
///
/// Owned by whoever handles the message; readers only point to it. Used on the thread that received the message.
class ZEL_EXPORT JsonSource
{
public:
    virtual bool readInt(void* node, JsonChildIdentifier child, int& value) = 0;
    virtual bool readDouble(void* node, JsonChildIdentifier child, double& value) = 0;
    virtual bool readBool(void* node, JsonChildIdentifier child, bool& value) = 0;
    /// Reads what readInt() reads: a number past the range of an int fails here too.
    virtual bool readLong(void* node, JsonChildIdentifier child, long& value) = 0;
    /// An empty string reads as an empty one that is not null.
    virtual bool readString(void* node, JsonChildIdentifier child, QString& value) = 0;
    virtual int numChildren(void* node) = 0;
    /// Enters an object or array. Answers its handle, or null with @p ok false.
    virtual void* push(void* node, JsonChildIdentifier child, bool& ok) = 0;
    virtual void* getRoot() = 0;
    virtual ~JsonSource();
    /// Shows the members of an object. False when the node is none, or the source cannot: nothing was shown then, and
    /// the members have to be asked for by name. This one cannot.
    virtual bool visitMembers(void* node, JsonMemberVisitor& visitor);

    /// A reader on the root.
    JsonNodeReader startParsing();
};

} // namespace iface
