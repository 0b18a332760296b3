// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonObjectReader.h>
#include <zel/JsonWriter.h>

#include <QtCore/QSharedPointer>
#include <QtCore/QString>

namespace zel {

/// How records of one type travel in JSON; live lists and maps are given one.
///
/// Held by shared pointer, and may serve several containers. Readers passed in may be invalid (an element that was no
/// object): reads through them fail, so the record is then the base and the key is empty. Called in the middle of a
/// container's change: an adapter converts and does nothing else.
///
/// @tparam T the record: default constructible, with operator==, a metatype
/// @tparam K its key
template <class T, class K = QString>
class JsonAdapter
{
public:
    /// Reads a record. Members that are absent stay as they are in @p base.
    virtual T jsonToElement(iface::JsonObjectReader json, const T& base) = 0;
    /// Writes one element into an array: opens its own unnamed object there.
    virtual void elementToJson(const T& element, const QSharedPointer<JsonWriter>& writer) = 0;
    /// The record's key.
    virtual K elementToId(const T& element) = 0;
    /// The key in the JSON of an element.
    virtual K idJsonToId(iface::JsonObjectReader json) = 0;
    /// Writes the members that identify a record into the object it is given, which is @p writer's during the call
    /// only: the next record's is written through the same one.
    virtual void idToIdJson(const K& id, const QSharedPointer<JsonWriter>& writer) = 0;
    /// Writes a change. No container asks for it yet.
    virtual void diffElementsToJson(const T& before, const T& after, const QSharedPointer<JsonWriter>& writer)
    {
        Q_UNUSED(before)
        Q_UNUSED(after)
        Q_UNUSED(writer)
    }
    virtual ~JsonAdapter() = default;
};

} // namespace zel
