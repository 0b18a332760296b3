// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <simdjson.h>

namespace device {

// A text of attribute lines taken apart: which objects there are, which attributes they have, and the JSON of each
// attribute parsed. Works on a copy of the text, in which names and strings are unescaped in place and end in a NUL.
// Lines that cannot be read are left out.
// Reading several texts one after the other reuses the memory.
class AttributeText
{
public:
    // An attribute's value is the string `text`, or a parsed document, or of an unknown encoding.
    struct Attribute
    {
        std::string_view name;
        std::string_view text;
        uint32_t document = 0; // 0: none; else documents count from 1, in the order of the attributes
        bool isKnown = true;
    };
    struct Object
    {
        std::string_view name; // with its '@'; empty when it cannot be read, and for the root
        uint32_t firstAttribute = 0;
        uint32_t attributeCount = 0;
    };

    // False when there is not enough memory.
    bool parse(const char* text, size_t length);

    // The first object has no name: it is the root, whose attributes stand before the first "@" line.
    const std::vector<Object>& objects() const { return m_objects; }
    const std::vector<Attribute>& attributes() const { return m_attributes; }
    const simdjson::dom::document& document(uint32_t number) const { return *m_documents[number - 1]; }
    uint32_t documentCount() const { return m_documentCount; }

    // Whether it is worth keeping for the next text.
    bool isSmall() const { return m_capacity <= size_t(256) * 1024 && m_documents.size() <= 16; }

private:
    bool copy(const char* text, size_t length);
    void parseLine(char* begin, char* end);
    void parseAttribute(char* begin, char* end);
    bool parseValue(Attribute& attribute, std::string_view encoding, char* begin, char* end);
    bool parseJson(Attribute& attribute, char* begin, char* end);
    simdjson::error_code parseInto(simdjson::dom::document& document, const char* begin, const char* end);
    void closeObject();

    std::unique_ptr<char[]> m_text;
    size_t m_capacity = 0;
    std::vector<Object> m_objects;
    std::vector<Attribute> m_attributes;
    std::vector<std::unique_ptr<simdjson::dom::document>> m_documents;
    uint32_t m_documentCount = 0;
    simdjson::dom::parser m_parser;
};

} // namespace device
