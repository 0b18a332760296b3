// SPDX-License-Identifier: Apache-2.0
#include "Escape.h"

#include "Utf8.h"

#include <cstdint>

namespace device {

namespace {

constexpr uint64_t everyByte(uint8_t value)
{
    return 0x0101010101010101ULL * value;
}

// Nonzero when one of the eight bytes is zero. Bytes from 0x80 up may be missed, so test those beside it.
constexpr uint64_t zeroBytes(uint64_t word)
{
    return (word - everyByte(0x01)) & ~word & everyByte(0x80);
}

// Whether all eight bytes are plain in JSON: ASCII, no control character, no quotation mark, no backslash.
bool isPlainWord(const char* text)
{
    uint64_t word;
    std::memcpy(&word, text, sizeof word);
    const uint64_t special = zeroBytes(word ^ everyByte('"')) | zeroBytes(word ^ everyByte('\\')) |
                             zeroBytes(word & everyByte(0xE0)) | (word & everyByte(0x80));
    return special == 0;
}

bool isPlain(char character)
{
    const auto byte = static_cast<uint8_t>(character);
    return byte >= 0x20 && byte < 0x80 && character != '"' && character != '\\';
}

const char* skipPlain(const char* text, const char* end)
{
    while (end - text >= 8 && isPlainWord(text))
        text += 8;
    while (text != end && isPlain(*text))
        ++text;
    return text;
}

// Copies one character that is not ASCII, or puts U+FFFD in the place of one byte that belongs to none.
const char* appendUtf8(TextBuffer& text, const char* from, const char* end)
{
    const size_t length = utf8CharacterLength(from, end);
    if (length == 0) {
        text.append("\xEF\xBF\xBD");
        return from + 1;
    }
    text.append(from, length);
    return from + length;
}

void appendJsonEscape(TextBuffer& text, char character)
{
    switch (character) {
    case '"':
        return text.append("\\\"");
    case '\\':
        return text.append("\\\\");
    case '\b':
        return text.append("\\b");
    case '\f':
        return text.append("\\f");
    case '\n':
        return text.append("\\n");
    case '\r':
        return text.append("\\r");
    case '\t':
        return text.append("\\t");
    default:
        break;
    }
    constexpr char digits[] = "0123456789abcdef";
    const auto byte = static_cast<uint8_t>(character);
    const char escape[] = {'\\', 'u', '0', '0', digits[byte >> 4], digits[byte & 15]};
    text.append(escape, sizeof escape);
}

} // namespace

void appendJsonString(TextBuffer& text, std::string_view value)
{
    const char* from = value.data();
    const char* const end = from + value.size();
    if (skipPlain(from, end) == end) // as nearly every text is
        return text.appendQuoted(value.data(), value.size());
    text.append('"');
    while (from != end) {
        const char* const plainEnd = skipPlain(from, end);
        text.append(from, static_cast<size_t>(plainEnd - from));
        from = plainEnd;
        if (from == end)
            break;
        if (static_cast<uint8_t>(*from) >= 0x80)
            from = appendUtf8(text, from, end);
        else
            appendJsonEscape(text, *from++);
    }
    text.append('"');
}

void appendAttributeString(TextBuffer& text, std::string_view value)
{
    const char* const end = value.data() + value.size();
    for (const char* from = value.data(); from != end;) {
        switch (*from) {
        case '\\':
            text.append("\\\\");
            break;
        case '\n':
            text.append("\\n");
            break;
        case '\r':
            text.append("\\r");
            break;
        case '\0':
            text.append("\\0");
            break;
        default:
            from = appendUtf8(text, from, end);
            continue;
        }
        ++from;
    }
}

bool appendAttributeName(TextBuffer& text, std::string_view name)
{
    bool isWhole = true;
    const char* const end = name.data() + name.size();
    for (const char* from = name.data(); from != end;) {
        const auto byte = static_cast<uint8_t>(*from);
        if (byte < 0x20 || byte == 0x7F || byte == ':' || (byte == '@' && from == name.data())) {
            text.append('_');
            isWhole = false;
            ++from;
        } else {
            from = appendUtf8(text, from, end);
        }
    }
    return isWhole;
}

} // namespace device
