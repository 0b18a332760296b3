// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "AttributeText.h"
#include "JsonTape.h"

#include <pps/decoder.h>

#include <string_view>
#include <vector>

namespace device {

// A container or a value: a place on the tape of a document, or, in document 0, one of the text's objects (the root
// is object 0).
struct Node
{
    uint32_t document = 0;
    size_t place = 0;

    friend bool operator==(const Node& a, const Node& b) { return a.document == b.document && a.place == b.place; }

    // As one number, never 0.
    uintptr_t pack() const { return (static_cast<uintptr_t>(document) << placeBits) | (place + 1); }
    static Node unpack(uintptr_t position)
    {
        return {static_cast<uint32_t>(position >> placeBits), (position & (largestPlace + 1)) - 1};
    }
    bool canBePacked() const { return place <= largestPlace && document <= (UINTPTR_MAX >> placeBits); }

private:
    static constexpr int placeBits = sizeof(uintptr_t) == 8 ? 34 : 22;
    static constexpr uintptr_t largestPlace = (static_cast<uintptr_t>(1) << placeBits) - 2;
};

// What an element is: a node, or an attribute that is no document.
struct Value
{
    enum Kind { Missing, InText, OnTape, Object };
    Kind kind = Missing;
    Node node;
    const AttributeText::Attribute* attribute = nullptr; // InText only
};

// A set of names that may take a name for one of its own, but never the other way round.
class NameFilter
{
public:
    void add(std::string_view name) { m_bits[hash(name) >> 6] |= bit(name); }
    bool mayHold(std::string_view name) const { return m_bits[hash(name) >> 6] & bit(name); }

private:
    static unsigned hash(std::string_view name)
    {
        if (name.empty())
            return 0;
        const auto front = static_cast<uint8_t>(name.front());
        const auto back = static_cast<uint8_t>(name.back());
        return static_cast<uint8_t>(name.size() * 5 + size_t(front) * 7 + size_t(back) * 3);
    }
    static uint64_t bit(std::string_view name) { return uint64_t(1) << (hash(name) & 63); }

    uint64_t m_bits[4] = {};
};

// The reading side of a decoder: walks the containers of one text and remembers where it last was in each of them.
class TextCursor
{
public:
    AttributeText text;

    // Begins at the root of a freshly parsed text; false when its positions cannot be packed.
    bool begin();

    Node container() const { return m_container; }
    bool enter(Node node);

    size_t count() const;
    // Moves to an element by its index.
    bool moveToIndex(size_t index);
    // The current element.
    Value current() const;
    // The current element's name; one without data when it has none.
    std::string_view currentName() const;
    Value find(std::string_view name);

    // The same on a tape, where nearly all reading is done, without the detour through a value: the place of the value,
    // or 0 when there is none.
    bool isOnTape() const { return m_container.document != 0; }
    const JsonTape& words() const { return m_words; }
    size_t currentOnTape() const;
    size_t findOnTape(std::string_view name);

    JsonTape tape(uint32_t document) const { return JsonTape(text.document(document)); }

private:
    // Where the last look-up and the last move by index ended in one container on a tape, so that the next one can go
    // on from there. `passed` has a bit for each name before `found`: a name whose bit is not set cannot be among them,
    // and need not be looked for there.
    struct Trail
    {
        Node container;
        size_t end;
        size_t found;
        NameFilter passed;
        size_t indexed;
        size_t index = 0;
    };

    // An element's place: in the text an attribute or, in the root behind its attributes, an object; on a tape the
    // place of its first word.
    size_t first(Node container) const { return container.document == 0 ? 0 : container.place + 1; }
    size_t end(Node container) const;
    Value onTape(size_t place) const
    {
        return place ? Value{Value::OnTape, {m_container.document, place}, nullptr} : Value();
    }
    // Of the container in the text.
    Value valueInText(size_t element) const;
    std::string_view nameInText(size_t element) const;
    Value findInText(std::string_view name) const;
    size_t searchOnTape(std::string_view name, Trail& way) const;
    bool contains(Node outer, Node inner) const;
    Trail& trail() { return m_trail ? *m_trail : findTrail(); }
    Trail& findTrail();

    Node m_container;
    size_t m_element = 0;
    JsonTape m_words; // the container's, unless it is in the text
    // One trail for each container on the way to the one last read, the outermost first: reading an array's elements in
    // turn keeps the array's trail.
    std::vector<Trail> m_trails;
    Trail* m_trail = nullptr; // the container's, once it was needed
};

} // namespace device
