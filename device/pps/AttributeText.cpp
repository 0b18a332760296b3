// SPDX-License-Identifier: Apache-2.0
#include "AttributeText.h"

#include "JsonTape.h"

#include <QByteArray>

#include <algorithm>
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

TextError AttributeText::parse(const char* text, size_t length)
{
    m_objects.clear();
    m_attributes.clear();
    m_documentCount = 0;
    try {
        if (const TextError error = copy(text, length); error != TextError::None)
            return error;
        m_objects.emplace_back();
        char* const end = m_text.get() + length;
        for (char* line = m_text.get(); line != end;) {
            char* const found = static_cast<char*>(std::memchr(line, '\n', static_cast<size_t>(end - line)));
            char* const lineEnd = found ? found : end;
            char* const next = found ? found + 1 : end;
            const bool hasReturn = lineEnd != line && lineEnd[-1] == '\r';
            if (const TextError error = parseLine(line, hasReturn ? lineEnd - 1 : lineEnd); error != TextError::None)
                return error;
            line = next;
        }
        closeObject();
    } catch (const std::bad_alloc&) {
        return TextError::NoMemory;
    }
    return TextError::None;
}

TextError AttributeText::copy(const char* text, size_t length)
{
    // Attributes are counted in 32 bits, and a text of that size is no message.
    if (length >= std::numeric_limits<uint32_t>::max())
        return TextError::NoMemory;
    // The parser may read, but never uses, this many bytes past the end of what it is given.
    const size_t needed = length + simdjson::SIMDJSON_PADDING + 1;
    if (needed > m_capacity) {
        m_capacity = 0;
        m_text.reset(new (std::nothrow) char[needed]);
        if (!m_text)
            return TextError::NoMemory;
        m_capacity = needed;
    }
    if (length > 0)
        std::memcpy(m_text.get(), text, length);
    std::memset(m_text.get() + length, 0, simdjson::SIMDJSON_PADDING + 1);
    return TextError::None;
}

// `end` may be overwritten: it is a line break or lies behind the text.
TextError AttributeText::parseLine(char* begin, char* end)
{
    if (begin == end)
        return TextError::None;
    if (*begin != '@')
        return parseAttribute(begin, end);
    if (!isUtf8(begin, end))
        return TextError::Malformed;
    closeObject();
    Object object;
    object.name = view(begin, end);
    object.firstAttribute = static_cast<uint32_t>(m_attributes.size());
    object.firstDocument = m_documentCount + 1;
    m_objects.push_back(object);
    *end = '\0';
    return TextError::None;
}

void AttributeText::closeObject()
{
    Object& object = m_objects.back();
    object.attributeCount = static_cast<uint32_t>(m_attributes.size()) - object.firstAttribute;
    object.endDocument = m_documentCount + 1;
}

TextError AttributeText::parseAttribute(char* begin, char* end)
{
    char* const nameEnd = static_cast<char*>(std::memchr(begin, ':', static_cast<size_t>(end - begin)));
    if (!nameEnd || !isUtf8(begin, nameEnd))
        return TextError::Malformed;
    char* const encoding = nameEnd + 1;
    char* const encodingEnd = static_cast<char*>(std::memchr(encoding, ':', static_cast<size_t>(end - encoding)));
    if (!encodingEnd)
        return TextError::Malformed;
    Attribute attribute;
    attribute.name = view(begin, nameEnd);
    *nameEnd = '\0';
    const TextError error = parseValue(attribute, view(encoding, encodingEnd), encodingEnd + 1, end);
    if (error == TextError::None)
        m_attributes.push_back(attribute);
    return error;
}

TextError AttributeText::parseValue(Attribute& attribute, std::string_view encoding, char* begin, char* end)
{
    if (encoding.empty()) {
        if (!isUtf8(begin, end))
            return TextError::Malformed;
        end = unescape(begin, end);
    } else if (encoding == "b64") {
        const auto decoded = QByteArray::fromBase64Encoding(QByteArray::fromRawData(begin, end - begin),
                                                            QByteArray::AbortOnBase64DecodingErrors);
        if (!decoded)
            return TextError::Malformed;
        std::memcpy(begin, (*decoded).constData(), static_cast<size_t>((*decoded).size()));
        end = begin + (*decoded).size();
    } else if (encoding == "json" || encoding == "n" || encoding == "b") {
        if (const TextError error = parseJson(attribute, begin, end); error != TextError::None)
            return error;
        const JsonTape tape(document(attribute.document));
        const bool isAllowed =
            encoding == "json" || (encoding == "n" ? tape.isNumber(JsonTape::top) : tape.isBool(JsonTape::top));
        return isAllowed ? TextError::None : TextError::Malformed;
    } else {
        attribute.isKnown = false;
    }
    *end = '\0';
    attribute.text = view(begin, end);
    return TextError::None;
}

TextError AttributeText::parseJson(Attribute& attribute, char* begin, char* end)
{
    repairSurrogates(begin, end);
    if (m_documentCount == m_documents.size())
        m_documents.push_back(std::make_unique<simdjson::dom::document>());
    simdjson::dom::document& document = *m_documents[m_documentCount];
    const auto error = m_parser.parse_into_document(document, begin, static_cast<size_t>(end - begin), false).error();
    if (error)
        return error == simdjson::MEMALLOC ? TextError::NoMemory : TextError::Malformed;
    attribute.document = ++m_documentCount;
    return TextError::None;
}

} // namespace device
