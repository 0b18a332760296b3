// SPDX-License-Identifier: Apache-2.0
#include <pps/decoder.h>

#include "TextCursor.h"

#include <algorithm>
#include <array>
#include <climits>
#include <limits>
#include <memory>
#include <new>

using device::JsonTape;
using device::Node;
using device::TextCursor;
using device::TextError;
using device::Value;

struct pps_decoder_private : TextCursor
{
};

namespace {

using DecoderPointer = std::unique_ptr<pps_decoder_private>;

thread_local bool t_isSpareGone = false;

// Decoders of this thread that were cleaned up, with their memory: messages come one after the other, and a handler
// may have another one decoded while it reads the first.
struct Spare
{
    std::array<DecoderPointer, 4> decoders;
    size_t count = 0;
    ~Spare() { t_isSpareGone = true; }
};

thread_local Spare t_spare;

DecoderPointer takeDecoder()
{
    if (!t_isSpareGone && t_spare.count > 0)
        return std::move(t_spare.decoders[--t_spare.count]);
    return DecoderPointer(new (std::nothrow) pps_decoder_private);
}

void putBack(DecoderPointer decoder)
{
    if (!t_isSpareGone && t_spare.count < t_spare.decoders.size() && decoder->text.isSmall())
        t_spare.decoders[t_spare.count++] = std::move(decoder);
}

pps_decoder_error_t open(pps_decoder_t* decoder, const char* text, size_t length)
{
    DecoderPointer d = takeDecoder();
    if (!d)
        return PPS_DECODER_NO_MEMORY;
    while (length > 0 && text[length - 1] == '\0')
        --length;
    const TextError error = d->text.parse(text, length);
    if (error == TextError::None && d->begin()) {
        decoder->d = d.release();
        return PPS_DECODER_OK;
    }
    putBack(std::move(d));
    return error == TextError::Malformed ? PPS_DECODER_PARSE_ERROR : PPS_DECODER_NO_MEMORY;
}

bool isOpen(const pps_decoder_t* decoder)
{
    return decoder && decoder->d;
}

// Runs `action`, which may run out of memory: no exception leaves a C function.
template <typename Action>
pps_decoder_error_t guarded(const pps_decoder_t* decoder, const Action& action)
{
    if (!isOpen(decoder))
        return PPS_DECODER_NOT_INITIALIZED;
    try {
        return action(*decoder->d);
    } catch (const std::bad_alloc&) {
        return PPS_DECODER_NO_MEMORY;
    }
}

std::string_view viewOf(const char* name)
{
    return name ? std::string_view(name) : std::string_view();
}

// The member of that name, or the current element when there is no name.
Value valueOf(TextCursor& d, std::string_view name)
{
    return name.data() ? d.find(name) : d.current();
}

// Reads a value: `onTape` gets the tape and the place, `inText` an attribute that is none, and answers.
template <typename OnTape, typename InText>
pps_decoder_error_t read(pps_decoder_t* decoder, const char* name, const OnTape& onTape, const InText& inText)
{
    return guarded(decoder, [&](TextCursor& d) {
        if (d.isOnTape()) {
            const size_t place = name ? d.findOnTape(name) : d.currentOnTape();
            return place ? onTape(d.words(), place) : PPS_DECODER_NOT_FOUND;
        }
        const Value value = valueOf(d, viewOf(name));
        switch (value.kind) {
        case Value::Missing:
            return PPS_DECODER_NOT_FOUND;
        case Value::OnTape:
            return onTape(d.tape(value.node.document), value.node.place);
        case Value::InText:
            return inText(*value.attribute);
        case Value::Object:
            break;
        }
        return PPS_DECODER_BAD_TYPE;
    });
}

template <typename OnTape>
pps_decoder_error_t readTape(pps_decoder_t* decoder, const char* name, const OnTape& onTape)
{
    return read(decoder, name, onTape, [](const device::AttributeText::Attribute&) { return PPS_DECODER_BAD_TYPE; });
}

template <typename Integer>
pps_decoder_error_t readInteger(pps_decoder_t* decoder, const char* name, Integer* out)
{
    return readTape(decoder, name, [out](const JsonTape& tape, size_t place) {
        // 'u' is what does not fit into the signed type.
        if (tape.type(place) == 'u')
            return PPS_DECODER_OUT_OF_RANGE;
        if (tape.type(place) != 'l')
            return PPS_DECODER_BAD_TYPE;
        const int64_t number = tape.signedNumber(place);
        if (number < std::numeric_limits<Integer>::min() || number > std::numeric_limits<Integer>::max())
            return PPS_DECODER_OUT_OF_RANGE;
        *out = static_cast<Integer>(number);
        return PPS_DECODER_OK;
    });
}

pps_node_type_t typeOnTape(char letter)
{
    switch (letter) {
    case 'n':
        return PPS_TYPE_NULL;
    case 't':
    case 'f':
        return PPS_TYPE_BOOL;
    case 'l':
    case 'u':
    case 'd':
        return PPS_TYPE_NUMBER;
    case '"':
        return PPS_TYPE_STRING;
    case '[':
        return PPS_TYPE_ARRAY;
    default:
        return PPS_TYPE_OBJECT;
    }
}

pps_decoder_error_t push(pps_decoder_t* decoder, std::string_view name)
{
    return guarded(decoder, [name](TextCursor& d) {
        const Value value = valueOf(d, name);
        if (value.kind == Value::Missing)
            return PPS_DECODER_NOT_FOUND;
        return value.kind != Value::InText && d.enter(value.node) ? PPS_DECODER_OK : PPS_DECODER_BAD_TYPE;
    });
}

pps_decoder_member_t memberOnTape(const JsonTape& tape, size_t element)
{
    const std::string_view name = tape.string(element);
    const size_t place = element + 1;
    const char letter = tape.type(place);
    pps_decoder_member_t member = {name.data(), name.size(), typeOnTape(letter), nullptr, 0, false, 0, letter == 't'};
    if (letter == '"') {
        const std::string_view text = tape.string(place);
        member.text = text.data();
        member.length = text.size();
    } else if (letter == 'l') {
        member.is_whole = true;
        member.integer = tape.signedNumber(place);
    }
    return member;
}

} // namespace

pps_decoder_error_t pps_decoder_initialize(pps_decoder_t* decoder, const char* text)
{
    return pps_decoder_initialize_n(decoder, text, viewOf(text).size());
}

pps_decoder_error_t pps_decoder_initialize_n(pps_decoder_t* decoder, const char* text, size_t length)
{
    decoder->d = nullptr;
    return open(decoder, text ? text : "", text ? length : 0);
}

void pps_decoder_cleanup(pps_decoder_t* decoder)
{
    if (!isOpen(decoder))
        return;
    putBack(DecoderPointer(decoder->d));
    decoder->d = nullptr;
}

pps_decoder_error_t pps_decoder_push(pps_decoder_t* decoder, const char* name)
{
    return push(decoder, viewOf(name));
}

pps_decoder_error_t pps_decoder_push_n(pps_decoder_t* decoder, const char* name, size_t nameLength)
{
    return push(decoder, name ? std::string_view(name, nameLength) : std::string_view());
}

pps_decoder_error_t pps_decoder_pop(pps_decoder_t* decoder)
{
    return guarded(decoder, [](TextCursor& d) {
        Node parent;
        size_t element = 0;
        if (!d.parent(&parent, &element) || !d.enter(parent))
            return PPS_DECODER_NOT_FOUND;
        d.moveTo(element);
        return PPS_DECODER_OK;
    });
}

pps_decoder_error_t pps_decoder_get_state(const pps_decoder_t* decoder, pps_decoder_state_t* state)
{
    return guarded(decoder, [state](const TextCursor& d) {
        state->position = d.container().pack();
        return PPS_DECODER_OK;
    });
}

pps_decoder_error_t pps_decoder_set_state(pps_decoder_t* decoder, const pps_decoder_state_t* state)
{
    return guarded(decoder, [state](TextCursor& d) {
        return state->position != 0 && d.enter(Node::unpack(state->position)) ? PPS_DECODER_OK : PPS_DECODER_BAD_STATE;
    });
}

int pps_decoder_length(pps_decoder_t* decoder)
{
    if (!isOpen(decoder))
        return 0;
    return static_cast<int>(std::min<size_t>(decoder->d->count(), INT_MAX));
}

pps_decoder_error_t pps_decoder_goto_index(pps_decoder_t* decoder, int index)
{
    return guarded(decoder, [index](TextCursor& d) {
        return index >= 0 && d.moveToIndex(static_cast<size_t>(index)) ? PPS_DECODER_OK : PPS_DECODER_NOT_FOUND;
    });
}

const char* pps_decoder_name(pps_decoder_t* decoder)
{
    return isOpen(decoder) ? decoder->d->currentName().data() : nullptr;
}

const char* pps_decoder_name_n(pps_decoder_t* decoder, size_t* length)
{
    const std::string_view name = isOpen(decoder) ? decoder->d->currentName() : std::string_view();
    *length = name.size();
    return name.data();
}

pps_node_type_t pps_decoder_type(pps_decoder_t* decoder, const char* name)
{
    pps_node_type_t type = PPS_TYPE_NONE;
    guarded(decoder, [&](TextCursor& d) {
        const Value value = valueOf(d, viewOf(name));
        if (value.kind == Value::OnTape)
            type = typeOnTape(d.tape(value.node.document).type(value.node.place));
        else if (value.kind == Value::Object)
            type = PPS_TYPE_OBJECT;
        else if (value.kind == Value::InText)
            type = value.attribute->isKnown ? PPS_TYPE_STRING : PPS_TYPE_UNKNOWN;
        return PPS_DECODER_OK;
    });
    return type;
}

pps_decoder_error_t pps_decoder_get_int(pps_decoder_t* decoder, const char* name, int* value)
{
    return readInteger(decoder, name, value);
}

pps_decoder_error_t pps_decoder_get_int64(pps_decoder_t* decoder, const char* name, int64_t* value)
{
    return readInteger(decoder, name, value);
}

pps_decoder_error_t pps_decoder_get_double(pps_decoder_t* decoder, const char* name, double* value)
{
    return readTape(decoder, name, [value](const JsonTape& tape, size_t place) {
        switch (tape.type(place)) {
        case 'l':
            *value = static_cast<double>(tape.signedNumber(place));
            return PPS_DECODER_OK;
        case 'u':
            *value = static_cast<double>(tape.unsignedNumber(place));
            return PPS_DECODER_OK;
        case 'd':
            *value = tape.floatingNumber(place);
            return PPS_DECODER_OK;
        default:
            return PPS_DECODER_BAD_TYPE;
        }
    });
}

pps_decoder_error_t pps_decoder_get_bool(pps_decoder_t* decoder, const char* name, bool* value)
{
    return readTape(decoder, name, [value](const JsonTape& tape, size_t place) {
        if (!tape.isBool(place))
            return PPS_DECODER_BAD_TYPE;
        *value = tape.type(place) == 't';
        return PPS_DECODER_OK;
    });
}

pps_decoder_error_t pps_decoder_get_string(pps_decoder_t* decoder, const char* name, const char** value)
{
    size_t length = 0;
    return pps_decoder_get_string_n(decoder, name, value, &length);
}

pps_decoder_error_t pps_decoder_get_string_n(pps_decoder_t* decoder, const char* name, const char** value,
                                             size_t* length)
{
    const auto give = [&](std::string_view text) {
        *value = text.data();
        *length = text.size();
        return PPS_DECODER_OK;
    };
    return read(
        decoder, name,
        [&](const JsonTape& tape, size_t place) {
            return tape.type(place) == '"' ? give(tape.string(place)) : PPS_DECODER_BAD_TYPE;
        },
        [&](const device::AttributeText::Attribute& attribute) {
            return attribute.isKnown ? give(attribute.text) : PPS_DECODER_BAD_TYPE;
        });
}

pps_decoder_error_t pps_decoder_visit(pps_decoder_t* decoder,
                                      void (*visit)(void* context, const pps_decoder_member_t* member), void* context)
{
    return guarded(decoder, [visit, context](const TextCursor& d) {
        if (!d.isOnTape() || d.words().type(d.container().place) != '{')
            return PPS_DECODER_BAD_TYPE;
        const JsonTape& tape = d.words();
        const size_t last = tape.lastOf(d.container().place);
        for (size_t element = d.container().place + 1; element != last; element = tape.after(element + 1)) {
            const pps_decoder_member_t member = memberOnTape(tape, element);
            visit(context, &member);
        }
        return PPS_DECODER_OK;
    });
}
