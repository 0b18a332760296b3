// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace zel {

/// Builds one outgoing message: a JSON object with one member, named by the message's type.
///
/// A message is a tree of writers over one buffer. The root is made with the message's name; children are opened
/// with addChild() and written where they are opened, so call order is member order and nothing is sorted, merged
/// or checked for duplicates. A child closes when its last pointer goes or when its toString() is called: let it go
/// before anything more is added to its parent. The root's toString() ends the message; from then on the writer is
/// read-only, and whatever is added is dropped with a line in the log.
///
/// In an array the names of members are dropped.
///
/// The buffer lives as long as any writer of the tree, so a child may outlive its root. One thread.
///
///     auto request = QSharedPointer<zel::JsonWriter>::create(u"requestListRemove"_s, u"zel"_s);
///     {
///         auto elements = zel::JsonWriterAttribute(request, "elements").array();
///         elements->addChild({}, zel::JsonWriter::Object)->addAttribute(u"id"_s, id);
///     }
///     pipe->send(request);
class ZEL_EXPORT JsonWriter
{
public:
    /// What a node is. Any other number is accepted and writes nothing for the node itself.
    enum AttributeType : int { Array = 3, Object = 4, Null = 5 };

    /// A root object. The second string is accepted for its callers' sake and does not reach the text.
    JsonWriter(const QString& name, const QString& ignored);
    /// A root of the given type.
    JsonWriter(const QString& name, AttributeType type, const QString& ignored);
    virtual ~JsonWriter();
    JsonWriter(const JsonWriter&) = delete;
    JsonWriter& operator=(const JsonWriter&) = delete;

    QString name() const { return m_name; }
    AttributeType type() const { return m_type; }

    /// Adds null.
    void addAttribute(const QString& name);
    void addAttribute(const QString& name, bool value);
    void addAttribute(const QString& name, const QString& value);
    /// Takes the value as UTF-8; a null pointer writes an empty string.
    void addAttribute(const QString& name, const char* value);
    void addAttribute(const QString& name, int value);

    /// Opens a nested node. Null when this writer is read-only.
    QSharedPointer<JsonWriter> addChild(const QString& name, AttributeType type);

    /// Ends this element of an array, and begins another of its type behind it: an array of many takes one writer. Does
    /// nothing to a root.
    void next();

    /// Closes this node, once. A root answers the message's text, the same at every call; a child answers whatever
    /// the tree's buffer holds so far.
    QString toString();

    /// Bytes in the tree's buffer: the whole message so far, with the line around it.
    int length() const;

    /// Whether toString() has been called; if so, logs that something was added after it.
    bool isReadOnly();

private:
    struct Tree;

    JsonWriter(const QString& name, AttributeType type, Tree* tree);

    void begin();
    void openNode();
    void closeNode();

    QString m_name;
    AttributeType m_type;
    bool m_finished = false;
    const bool m_root;
    Tree* const m_tree;
};

} // namespace zel
