// SPDX-License-Identifier: Apache-2.0
#include "AttributeText.h"

#include "JsonTape.h"

#include <QtCore/QByteArray>

#include <algorithm>
#include <charconv>
#include <cstring>
#include <limits>
#include <new>

namespace device {

namespace {

// The value of the four hexadecimal digits at `text`, or -1.
int hexadecimal(const char* text)
{
    int value = 0;
    for (int i = 0; i < 4; ++i) {
        const char c = text[i];
        const int digit = c >= '0' && c <= '9'   ? c - '0'
                          : c >= 'a' && c <= 'f' ? c - 'a' + 10
                          : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                                 : -1;
        if (digit < 0)
            return -1;
        value = value * 16 + digit;
    }
    return value;
}

// The UTF-16 code of the escape at `text`, or -1 when there is no whole \uXXXX.
int escapedCode(const char* text, const char* end)
{
    return end - text >= 6 && text[0] == '\\' && text[1] == 'u' ? hexadecimal(text + 2) : -1;
}

bool isHighSurrogate(int code)
{
    return code >= 0xD800 && code <= 0xDBFF;
}

bool isLowSurrogate(int code)
{
    return code >= 0xDC00 && code <= 0xDFFF;
}

// The parser refuses a text with half a surrogate pair in it, but one such name must not cost its whole list: the half
// becomes U+FFFD, which is as long.
void repairSurrogates(char* text, char* end)
{
    while ((text = static_cast<char*>(std::memchr(text, '\\', static_cast<size_t>(end - text))))) {
        const int code = escapedCode(text, end);
        if (isHighSurrogate(code) && isLowSurrogate(escapedCode(text + 6, end))) {
            text += 12;
        } else if (isHighSurrogate(code) || isLowSurrogate(code)) {
            std::copy_n("\\uFFFD", 6, text);
            text += 6;
        } else {
            text += end - text >= 2 ? 2 : 1;
        }
    }
}

// Behind the quotation mark that ends the string in which `text` is.
char* endOfString(char* text, char* end)
{
    for (; text != end; ++text) {
        if (*text == '"')
            return text + 1;
        if (*text == '\\' && text + 1 != end)
            ++text;
    }
    return end;
}

const char* skipDigits(const char* text, const char* end)
{
    return std::find_if(text, end, [](char c) { return c < '0' || c > '9'; });
}

// The end of the number that begins here; `text` itself when none does. `isWhole` tells whether it has neither fraction
// nor exponent.
char* endOfNumber(char* text, char* end, bool* isWhole)
{
    const char* at = text + (*text == '-' ? 1 : 0);
    const char* part = skipDigits(at, end);
    if (part == at || (*at == '0' && part - at > 1))
        return text;
    *isWhole = true;
    if (part != end && *part == '.') {
        *isWhole = false;
        at = part + 1;
        part = skipDigits(at, end);
        if (part == at)
            return text;
    }
    if (part != end && (*part == 'e' || *part == 'E')) {
        *isWhole = false;
        at = part + 1;
        if (at != end && (*at == '+' || *at == '-'))
            ++at;
        part = skipDigits(at, end);
        if (part == at)
            return text;
    }
    return text + (part - text);
}

// Whether a number is too large for a double. What is too small for one, the parser takes as 0.
bool isBeyondDouble(const char* text, const char* end)
{
    double number = 0;
    if (std::from_chars(text, end, number).ec != std::errc::result_out_of_range)
        return false;
    // Where the first digit that counts stands tells which of the two it is.
    const char* const exponent = std::find_if(text, end, [](char c) { return c == 'e' || c == 'E'; });
    long power = 0;
    if (exponent != end) {
        const char* const first = exponent + (exponent[1] == '+' ? 2 : 1);
        if (std::from_chars(first, end, power).ec == std::errc::result_out_of_range)
            return *first != '-';
    }
    const char* const point = std::find(text, exponent, '.');
    const char* const digit = std::find_if(text, exponent, [](char c) { return c >= '1' && c <= '9'; });
    return (point - digit) + power > 0;
}

bool isBeyondInteger(const char* text, const char* end)
{
    int64_t negative = 0;
    uint64_t positive = 0;
    const auto result = *text == '-' ? std::from_chars(text, end, negative) : std::from_chars(text, end, positive);
    return result.ec == std::errc::result_out_of_range;
}

// The parser refuses a text with a number beyond its range in it, but one that nobody may even read must not cost the
// whole message. A number beyond a double becomes null, which is shorter; a whole one beyond 64 bits is written with an
// exponent in the place of its last two digits, too far down to count. Answers whether there was any.
bool repairNumbers(char* text, char* end)
{
    bool isRepaired = false;
    while (text != end) {
        if (*text == '"') {
            text = endOfString(text + 1, end);
        } else if (*text == '-' || (*text >= '0' && *text <= '9')) {
            bool isWhole = false;
            char* const numberEnd = endOfNumber(text, end, &isWhole);
            if (numberEnd == text)
                return isRepaired;
            if (isBeyondDouble(text, numberEnd)) {
                std::fill(std::copy_n("null", 4, text), numberEnd, ' ');
                isRepaired = true;
            } else if (isWhole && isBeyondInteger(text, numberEnd)) {
                std::copy_n("e2", 2, numberEnd - 2);
                isRepaired = true;
            }
            text = numberEnd;
        } else {
            ++text;
        }
    }
    return isRepaired;
}

// Undoes the escapes of a string attribute in place and answers its new end. What is no escape stands for itself.
char* unescape(char* begin, char* end)
{
    char* to = static_cast<char*>(std::memchr(begin, '\\', static_cast<size_t>(end - begin)));
    if (!to)
        return end;
    for (const char* from = to; from != end; ++from) {
        *to = *from;
        if (*from == '\\' && from + 1 != end) {
            switch (from[1]) {
            case '\\':
                ++from;
                break;
            case 'n':
                *to = '\n', ++from;
                break;
            case 'r':
                *to = '\r', ++from;
                break;
            case '0':
                *to = '\0', ++from;
                break;
            default:
                break;
            }
        }
        ++to;
    }
    return to;
}

std::string_view view(const char* begin, const char* end)
{
    return {begin, static_cast<size_t>(end - begin)};
}

bool isUtf8(const char* begin, const char* end)
{
    return simdjson::validate_utf8(begin, static_cast<size_t>(end - begin));
}

} // namespace

bool AttributeText::parse(const char* text, size_t length)
{
    m_objects.clear();
    m_attributes.clear();
    m_documentCount = 0;
    try {
        if (!copy(text, length))
            return false;
        m_objects.emplace_back();
        char* const end = m_text.get() + length;
        for (char* line = m_text.get(); line != end;) {
            char* const found = static_cast<char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
            char* const lineEnd = found ? found : end;
            const bool hasReturn = lineEnd != line && lineEnd[-1] == '\r';
            parseLine(line, hasReturn ? lineEnd - 1 : lineEnd);
            line = found ? found + 1 : end;
        }
        closeObject();
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

bool AttributeText::copy(const char* text, size_t length)
{
    // Attributes are counted in 32 bits, and a text of that size is no message.
    if (length >= std::numeric_limits<uint32_t>::max())
        return false;
    // The parser may read, but never uses, this many bytes past the end of what it is given.
    const size_t needed = length + simdjson::SIMDJSON_PADDING + 1;
    if (needed > m_capacity) {
        m_text.reset(new char[needed]);
        m_capacity = needed;
    }
    if (length > 0)
        std::memcpy(m_text.get(), text, length);
    std::memset(m_text.get() + length, 0, simdjson::SIMDJSON_PADDING + 1);
    return true;
}

// `end` may be overwritten: it is a line break or lies behind the text.
void AttributeText::parseLine(char* begin, char* end)
{
    if (begin == end)
        return;
    if (*begin != '@')
        return parseAttribute(begin, end);
    closeObject();
    Object object;
    // What belongs to an object whose name cannot be read belongs to no other.
    if (isUtf8(begin, end))
        object.name = view(begin, end);
    object.firstAttribute = static_cast<uint32_t>(m_attributes.size());
    m_objects.push_back(object);
    *end = '\0';
}

void AttributeText::closeObject()
{
    Object& object = m_objects.back();
    object.attributeCount = static_cast<uint32_t>(m_attributes.size()) - object.firstAttribute;
}

void AttributeText::parseAttribute(char* begin, char* end)
{
    char* const nameEnd = static_cast<char*>(std::memchr(begin, ':', static_cast<size_t>(end - begin)));
    if (!nameEnd || !isUtf8(begin, nameEnd))
        return;
    char* const encoding = nameEnd + 1;
    char* const encodingEnd = static_cast<char*>(std::memchr(encoding, ':', static_cast<size_t>(end - encoding)));
    if (!encodingEnd)
        return;
    Attribute attribute;
    attribute.name = view(begin, nameEnd);
    *nameEnd = '\0';
    if (parseValue(attribute, view(encoding, encodingEnd), encodingEnd + 1, end))
        m_attributes.push_back(attribute);
}

bool AttributeText::parseValue(Attribute& attribute, std::string_view encoding, char* begin, char* end)
{
    if (encoding.empty()) {
        if (!isUtf8(begin, end))
            return false;
        end = unescape(begin, end);
    } else if (encoding == "b64") {
        const auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromRawData(begin, end - begin),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return false;
        std::memcpy(begin, (*decoded).constData(), static_cast<size_t>((*decoded).size()));
        end = begin + (*decoded).size();
    } else if (encoding == "json" || encoding == "n" || encoding == "b") {
        if (!parseJson(attribute, begin, end))
            return false;
        const JsonTape tape(document(attribute.document));
        return encoding == "json" || (encoding == "n" ? tape.isNumber(JsonTape::top) : tape.isBool(JsonTape::top));
    } else {
        attribute.isKnown = false;
    }
    *end = '\0';
    attribute.text = view(begin, end);
    return true;
}

bool AttributeText::parseJson(Attribute& attribute, char* begin, char* end)
{
    repairSurrogates(begin, end);
    if (m_documentCount == m_documents.size())
        m_documents.push_back(std::make_unique<simdjson::dom::document>());
    simdjson::dom::document& document = *m_documents[m_documentCount];
    simdjson::error_code error = parseInto(document, begin, end);
    if (error != simdjson::SUCCESS && error != simdjson::MEMALLOC && repairNumbers(begin, end))
        error = parseInto(document, begin, end);
    if (error == simdjson::MEMALLOC)
        throw std::bad_alloc();
    if (error != simdjson::SUCCESS)
        return false;
    attribute.document = ++m_documentCount;
    return true;
}

simdjson::error_code AttributeText::parseInto(simdjson::dom::document& document, const char* begin, const char* end)
{
    return m_parser.parse_into_document(document, begin, static_cast<size_t>(end - begin), false).error();
}

} // namespace device
