// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include <simdjson.h>

namespace device {

// Reads the parser's result where it lies: the "tape", whose format the parser documents. Each value is one word (a
// number two), a type letter in its first byte; a container's word says where it ends and how many elements it has, so
// any value is stepped over at once. The parser's own elements walk the same words, but cannot be named by a number and
// found again, and that is what a decoder's positions need.
class JsonTape
{
public:
    // The place of a document's top value.
    static constexpr size_t top = 1;

    JsonTape() = default;
    explicit JsonTape(const simdjson::dom::document& document)
        : m_words(document.tape.get())
        , m_strings(document.string_buf.get())
    {
    }

    // The number of words, the last of which ends the document.
    size_t size() const { return payload(0); }

    char type(size_t place) const { return static_cast<char>(m_words[place] >> 56); }
    bool isContainer(size_t place) const { return type(place) == '{' || type(place) == '['; }
    bool isNumber(size_t place) const { return type(place) == 'l' || type(place) == 'u' || type(place) == 'd'; }
    bool isBool(size_t place) const { return type(place) == 't' || type(place) == 'f'; }

    // A value's words end here.
    size_t after(size_t place) const
    {
        if (isContainer(place))
            return static_cast<uint32_t>(m_words[place]);
        return place + (isNumber(place) ? 2 : 1);
    }

    // A container's elements lie from `place + 1` up to here; in an object each is its name and then its value.
    size_t lastOf(size_t container) const { return after(container) - 1; }

    size_t countOf(size_t container) const
    {
        const size_t count = payload(container) >> 32;
        if (count != largestCount)
            return count;
        const bool isObject = type(container) == '{';
        size_t counted = 0;
        for (size_t place = container + 1; place != lastOf(container); ++counted)
            place = after(isObject ? place + 1 : place);
        return counted;
    }

    std::string_view string(size_t place) const
    {
        const uint8_t* const text = m_strings + payload(place);
        uint32_t length;
        std::memcpy(&length, text, sizeof length);
        return {reinterpret_cast<const char*>(text + sizeof length), length};
    }

    int64_t signedNumber(size_t place) const { return static_cast<int64_t>(m_words[place + 1]); }
    uint64_t unsignedNumber(size_t place) const { return m_words[place + 1]; }
    double floatingNumber(size_t place) const
    {
        double number;
        std::memcpy(&number, &m_words[place + 1], sizeof number);
        return number;
    }

private:
    // The tape counts no further: a container with more elements has this count.
    static constexpr size_t largestCount = 0xFFFFFF;

    uint64_t payload(size_t place) const { return m_words[place] & 0x00FFFFFFFFFFFFFFULL; }

    const uint64_t* m_words = nullptr;
    const uint8_t* m_strings = nullptr;
};

} // namespace device
