// SPDX-License-Identifier: Apache-2.0
#include <device/Encoder.h>

#include "Escape.h"
#include "TextBuffer.h"

#include <charconv>
#include <climits>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

using device::Text;
using device::TextBuffer;

namespace {

struct Level
{
    bool isArray;
    bool isEmpty;
};

Text textOf(const char* text)
{
    return {text, text ? std::char_traits<char>::length(text) : 0};
}

std::string_view viewOf(Text text)
{
    return text.data ? std::string_view(text.data, text.length) : std::string_view();
}

} // namespace

struct pps_encoder_private
{
    TextBuffer text;
    std::vector<Level> levels;
    bool encodeJson = false;
    bool isComplete = false; // JSON mode only: the one value is written
    bool hasFailed = false;
    size_t droppedLevels = 0; // open levels of a value that has no place

    bool failed() const { return hasFailed || text.hasFailed(); }

    // What comes before a value: separator and name, or the beginning of the attribute's line.
    pps_encoder_error_t begin(Text name, std::string_view encoding)
    {
        if (levels.empty())
            return encodeJson ? (name.data ? PPS_ENCODER_NAME_NOT_ALLOWED : PPS_ENCODER_OK) : beginLine(name, encoding);
        Level& level = levels.back();
        if (!level.isEmpty)
            text.append(',');
        level.isEmpty = false;
        if (level.isArray)
            return name.data ? PPS_ENCODER_NAME_NOT_ALLOWED : PPS_ENCODER_OK;
        device::appendJsonString(text, viewOf(name));
        text.append(':');
        return name.data ? PPS_ENCODER_OK : PPS_ENCODER_NAME_MISSING;
    }

    void end()
    {
        if (!levels.empty())
            return;
        if (encodeJson)
            isComplete = true;
        else
            text.append('\n');
    }

    bool isAttribute() const { return levels.empty() && !encodeJson; }

private:
    pps_encoder_error_t beginLine(Text name, std::string_view encoding)
    {
        const bool isWhole = device::appendAttributeName(text, viewOf(name));
        text.append(':');
        text.append(encoding.data(), encoding.size());
        text.append(':');
        if (name.length == 0)
            return PPS_ENCODER_NAME_MISSING;
        return isWhole ? PPS_ENCODER_OK : PPS_ENCODER_BAD_NAME;
    }
};

namespace {

// Whether a value can be written at all; `start` says that it opens a level.
pps_encoder_error_t admit(pps_encoder_t* encoder, bool start)
{
    if (!encoder || !encoder->d)
        return PPS_ENCODER_NOT_INITIALIZED;
    pps_encoder_private& d = *encoder->d;
    if (d.failed())
        return PPS_ENCODER_NO_MEMORY;
    if (d.isComplete) {
        d.droppedLevels += start ? 1 : 0;
        return PPS_ENCODER_COMPLETE;
    }
    return PPS_ENCODER_OK;
}

pps_encoder_error_t result(const pps_encoder_private& d, pps_encoder_error_t error)
{
    return d.failed() ? PPS_ENCODER_NO_MEMORY : error;
}

// Writes one value: `write` appends it and answers what was wrong with it.
template <typename Write>
pps_encoder_error_t addValue(pps_encoder_t* encoder, Text name, std::string_view encoding, const Write& write)
{
    if (const pps_encoder_error_t error = admit(encoder, false))
        return error;
    pps_encoder_private& d = *encoder->d;
    const pps_encoder_error_t nameError = d.begin(name, encoding);
    const pps_encoder_error_t valueError = write(d.text);
    d.end();
    return result(d, nameError ? nameError : valueError);
}

pps_encoder_error_t addToken(pps_encoder_t* encoder, Text name, std::string_view encoding, std::string_view token,
                             pps_encoder_error_t error = PPS_ENCODER_OK)
{
    return addValue(encoder, name, encoding, [token, error](TextBuffer& text) {
        text.append(token.data(), token.size());
        return error;
    });
}

pps_encoder_error_t start(pps_encoder_t* encoder, Text name, bool isArray)
{
    if (const pps_encoder_error_t error = admit(encoder, true))
        return error;
    pps_encoder_private& d = *encoder->d;
    const pps_encoder_error_t error = d.begin(name, "json");
    d.text.append(isArray ? '[' : '{');
    try {
        if (d.levels.empty())
            d.levels.reserve(16);
        d.levels.push_back({isArray, true});
    } catch (const std::bad_alloc&) {
        d.hasFailed = true;
    }
    return result(d, error);
}

pps_encoder_error_t finish(pps_encoder_t* encoder, bool isArray)
{
    if (!encoder || !encoder->d)
        return PPS_ENCODER_NOT_INITIALIZED;
    pps_encoder_private& d = *encoder->d;
    if (d.failed())
        return PPS_ENCODER_NO_MEMORY;
    if (d.droppedLevels > 0) {
        --d.droppedLevels;
        return PPS_ENCODER_COMPLETE;
    }
    if (d.levels.empty() || d.levels.back().isArray != isArray)
        return PPS_ENCODER_UNBALANCED;
    d.levels.pop_back();
    d.text.append(isArray ? ']' : '}');
    d.end();
    return result(d, PPS_ENCODER_OK);
}

// Calls `take` with each piece of the text between line breaks of one kind.
template <typename Take>
void splitAt(char lineBreak, std::string_view text, const Take& take)
{
    for (size_t end = 0; (end = text.find(lineBreak)) != text.npos; text.remove_prefix(end + 1))
        take(text.substr(0, end));
    take(text);
}

// Line breaks mean nothing between JSON's tokens, and cannot be anywhere else in it, but they end an attribute's line.
// Mostly there are none, which is found out fastest of one kind after the other.
void appendJsonOnOneLine(TextBuffer& text, std::string_view json)
{
    bool isFirst = true;
    splitAt('\n', json, [&](std::string_view line) {
        splitAt('\r', line, [&](std::string_view piece) {
            if (!std::exchange(isFirst, false))
                text.append(' ');
            text.append(piece.data(), piece.size());
        });
    });
}

pps_encoder_error_t addBool(pps_encoder_t* encoder, Text name, bool value)
{
    return addToken(encoder, name, "b", value ? "true" : "false");
}

pps_encoder_error_t addInt(pps_encoder_t* encoder, Text name, int value)
{
    char digits[16];
    const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value);
    return addToken(encoder, name, "n", std::string_view(digits, static_cast<size_t>(end.ptr - digits)));
}

pps_encoder_error_t addString(pps_encoder_t* encoder, Text name, Text value)
{
    if (!value.data)
        return addToken(encoder, name, "json", "null", PPS_ENCODER_BAD_VALUE);
    const bool isAttribute = encoder && encoder->d && encoder->d->isAttribute();
    return addValue(encoder, name, "", [=](TextBuffer& text) {
        if (isAttribute)
            device::appendAttributeString(text, viewOf(value));
        else
            device::appendJsonString(text, viewOf(value));
        return PPS_ENCODER_OK;
    });
}

pps_encoder_error_t addJson(pps_encoder_t* encoder, Text name, Text json)
{
    if (!json.data)
        return addToken(encoder, name, "json", "null", PPS_ENCODER_BAD_VALUE);
    return addValue(encoder, name, "json", [=](TextBuffer& text) {
        appendJsonOnOneLine(text, viewOf(json));
        return PPS_ENCODER_OK;
    });
}

} // namespace

void pps_encoder_initialize(pps_encoder_t* encoder, bool encodeJson)
{
    encoder->d = new (std::nothrow) pps_encoder_private;
    if (encoder->d)
        encoder->d->encodeJson = encodeJson;
}

void pps_encoder_cleanup(pps_encoder_t* encoder)
{
    if (!encoder)
        return;
    delete encoder->d;
    encoder->d = nullptr;
}

pps_encoder_error_t pps_encoder_start_object(pps_encoder_t* encoder, const char* name)
{
    return start(encoder, textOf(name), false);
}

pps_encoder_error_t pps_encoder_end_object(pps_encoder_t* encoder)
{
    return finish(encoder, false);
}

pps_encoder_error_t pps_encoder_start_array(pps_encoder_t* encoder, const char* name)
{
    return start(encoder, textOf(name), true);
}

pps_encoder_error_t pps_encoder_end_array(pps_encoder_t* encoder)
{
    return finish(encoder, true);
}

pps_encoder_error_t pps_encoder_add_null(pps_encoder_t* encoder, const char* name)
{
    return addToken(encoder, textOf(name), "json", "null");
}

pps_encoder_error_t pps_encoder_add_bool(pps_encoder_t* encoder, const char* name, bool value)
{
    return addBool(encoder, textOf(name), value);
}

pps_encoder_error_t pps_encoder_add_int(pps_encoder_t* encoder, const char* name, int value)
{
    return addInt(encoder, textOf(name), value);
}

pps_encoder_error_t pps_encoder_add_string(pps_encoder_t* encoder, const char* name, const char* value)
{
    return addString(encoder, textOf(name), textOf(value));
}

pps_encoder_error_t pps_encoder_add_json(pps_encoder_t* encoder, const char* name, const char* json)
{
    return addJson(encoder, textOf(name), textOf(json));
}

const char* pps_encoder_buffer(const pps_encoder_t* encoder)
{
    return encoder && encoder->d && !encoder->d->failed() ? encoder->d->text.data() : "";
}

int pps_encoder_length(const pps_encoder_t* encoder)
{
    if (!encoder || !encoder->d || encoder->d->failed())
        return 0;
    const size_t size = encoder->d->text.size();
    return size > INT_MAX ? INT_MAX : static_cast<int>(size);
}

namespace device {

void Encoder::startObject(Text name)
{
    start(&m_encoder, name, false);
}

void Encoder::startArray(Text name)
{
    start(&m_encoder, name, true);
}

void Encoder::addNull(Text name)
{
    addToken(&m_encoder, name, "json", "null");
}

void Encoder::addBool(Text name, bool value)
{
    ::addBool(&m_encoder, name, value);
}

void Encoder::addInt(Text name, int value)
{
    ::addInt(&m_encoder, name, value);
}

void Encoder::addString(Text name, Text value)
{
    ::addString(&m_encoder, name, value);
}

void Encoder::addJson(Text name, Text json)
{
    ::addJson(&m_encoder, name, json);
}

} // namespace device
