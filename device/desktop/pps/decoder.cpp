// SPDX-License-Identifier: Apache-2.0
#include <device/Decoder.h>

#include "TextCursor.h"

#include <algorithm>
#include <array>
#include <climits>
#include <memory>
#include <new>

using device::JsonTape;
using device::Node;
using device::TextCursor;
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
    if (d->text.parse(text, length) && d->begin()) {
        decoder->d = d.release();
        return PPS_DECODER_OK;
    }
    putBack(std::move(d));
    return PPS_DECODER_NO_MEMORY;
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

pps_decoder_error_t readText(pps_decoder_t* decoder, const char* name, std::string_view* value)
{
    return read(
        decoder, name,
        [value](const JsonTape& tape, size_t place) {
            if (tape.type(place) != '"')
                return PPS_DECODER_BAD_TYPE;
            *value = tape.string(place);
            return PPS_DECODER_OK;
        },
        [value](const device::AttributeText::Attribute& attribute) {
            if (!attribute.isKnown)
                return PPS_DECODER_BAD_TYPE;
            *value = attribute.text;
            return PPS_DECODER_OK;
        });
}

device::Member memberOnTape(const JsonTape& tape, size_t element)
{
    const size_t place = element + 1;
    device::Member member = {tape.string(element), device::Member::Another, {}, 0};
    switch (tape.type(place)) {
    case '"':
        member.type = device::Member::Text;
        member.text = tape.string(place);
        break;
    case 'l':
        member.type = device::Member::Integer;
        member.number = tape.signedNumber(place);
        break;
    case 't':
    case 'f':
        member.type = device::Member::Bool;
        member.number = tape.type(place) == 't';
        break;
    default:
        break;
    }
    return member;
}

} // namespace

pps_decoder_error_t pps_decoder_initialize(pps_decoder_t* decoder, const char* text)
{
    decoder->d = nullptr;
    return open(decoder, text ? text : "", viewOf(text).size());
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
    return guarded(decoder, [name](TextCursor& d) {
        const Value value = valueOf(d, viewOf(name));
        if (value.kind == Value::Missing)
            return PPS_DECODER_NOT_FOUND;
        return value.kind != Value::InText && d.enter(value.node) ? PPS_DECODER_OK : PPS_DECODER_BAD_TYPE;
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

pps_decoder_error_t pps_decoder_get_int(pps_decoder_t* decoder, const char* name, int* value)
{
    return readTape(decoder, name, [value](const JsonTape& tape, size_t place) {
        // 'u' is what does not fit into 64 bits with a sign.
        if (tape.type(place) == 'u')
            return PPS_DECODER_OUT_OF_RANGE;
        if (tape.type(place) != 'l')
            return PPS_DECODER_BAD_TYPE;
        const int64_t number = tape.signedNumber(place);
        if (number < INT_MIN || number > INT_MAX)
            return PPS_DECODER_OUT_OF_RANGE;
        *value = static_cast<int>(number);
        return PPS_DECODER_OK;
    });
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
    std::string_view text;
    const pps_decoder_error_t error = readText(decoder, name, &text);
    if (error == PPS_DECODER_OK)
        *value = text.data();
    return error;
}

namespace device {

Decoder::Decoder(const QByteArray& text)
    : m_isValid(open(&m_decoder, text.constData(), static_cast<size_t>(text.size())) == PPS_DECODER_OK)
{
}

std::string_view currentName(pps_decoder_t* decoder)
{
    return isOpen(decoder) ? decoder->d->currentName() : std::string_view();
}

bool readString(pps_decoder_t* decoder, const char* name, std::string_view* value)
{
    return readText(decoder, name, value) == PPS_DECODER_OK;
}

bool visitMembers(pps_decoder_t* decoder, void (*show)(void* context, const Member& member), void* context)
{
    if (!isOpen(decoder))
        return false;
    const TextCursor& d = *decoder->d;
    if (!d.isOnTape() || d.words().type(d.container().place) != '{')
        return false;
    const JsonTape& tape = d.words();
    const size_t last = tape.lastOf(d.container().place);
    for (size_t element = d.container().place + 1; element != last; element = tape.after(element + 1))
        show(context, memberOnTape(tape, element));
    return true;
}

} // namespace device
