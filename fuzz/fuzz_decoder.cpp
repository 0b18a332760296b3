// SPDX-License-Identifier: Apache-2.0
// Any bytes as a text: it is refused, or every node can be reached in every way and all ways agree.
#include <pps/decoder.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

void check(bool condition)
{
    if (!condition)
        std::abort();
}

uintptr_t position(const pps_decoder_t* decoder)
{
    pps_decoder_state_t state = {0};
    check(pps_decoder_get_state(decoder, &state) == PPS_DECODER_OK && state.position != 0);
    return state.position;
}

void restore(pps_decoder_t* decoder, uintptr_t position)
{
    const pps_decoder_state_t state = {position};
    check(pps_decoder_set_state(decoder, &state) == PPS_DECODER_OK);
}

void readScalar(pps_decoder_t* decoder, pps_node_type_t type)
{
    int small = 0;
    int64_t large = 0;
    double real = 0;
    bool truth = false;
    const char* text = nullptr;
    size_t length = 0;
    const bool isInt = pps_decoder_get_int(decoder, nullptr, &small) == PPS_DECODER_OK;
    const bool isLong = pps_decoder_get_int64(decoder, nullptr, &large) == PPS_DECODER_OK;
    check(!isInt || (isLong && large == small));
    check((pps_decoder_get_double(decoder, nullptr, &real) == PPS_DECODER_OK) == (type == PPS_TYPE_NUMBER));
    check((pps_decoder_get_bool(decoder, nullptr, &truth) == PPS_DECODER_OK) == (type == PPS_TYPE_BOOL));
    const bool isString = pps_decoder_get_string_n(decoder, nullptr, &text, &length) == PPS_DECODER_OK;
    check(isString == (type == PPS_TYPE_STRING));
    check(!isString || (std::strlen(text) <= length && text[length] == '\0'));
}

void visit(pps_decoder_t* decoder)
{
    const uintptr_t here = position(decoder);
    const int length = pps_decoder_length(decoder);
    check(pps_decoder_goto_index(decoder, length) == PPS_DECODER_NOT_FOUND);
    check(pps_decoder_goto_index(decoder, -1) == PPS_DECODER_NOT_FOUND);
    // By name and back by index, which must not disturb each other; large containers only in part.
    for (int i = 0; i < length; i += 1 + length / 256) {
        restore(decoder, here);
        check(pps_decoder_goto_index(decoder, i) == PPS_DECODER_OK);
        const pps_node_type_t type = pps_decoder_type(decoder, nullptr);
        check(type != PPS_TYPE_NONE);
        if (const char* const name = pps_decoder_name(decoder)) {
            size_t nameLength = 0;
            check(pps_decoder_name_n(decoder, &nameLength) == name && name[nameLength] == '\0');
            check(std::strlen(name) != nameLength || pps_decoder_type(decoder, name) != PPS_TYPE_NONE);
            check(pps_decoder_name(decoder) == name);
        }
        readScalar(decoder, type);
        const bool isContainer = type == PPS_TYPE_OBJECT || type == PPS_TYPE_ARRAY;
        check((pps_decoder_push(decoder, nullptr) == PPS_DECODER_OK) == isContainer);
        if (!isContainer)
            continue;
        visit(decoder);
        check(pps_decoder_pop(decoder) == PPS_DECODER_OK && position(decoder) == here);
        check(pps_decoder_type(decoder, nullptr) == type);
    }
    restore(decoder, here);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    // A copy without an end mark, so that reading past it is seen.
    const std::string text(reinterpret_cast<const char*>(data), size);
    pps_decoder_t decoder;
    if (pps_decoder_initialize_n(&decoder, text.data(), text.size()) == PPS_DECODER_OK) {
        visit(&decoder);
        check(pps_decoder_pop(&decoder) == PPS_DECODER_NOT_FOUND);
    }
    pps_decoder_cleanup(&decoder);
    return 0;
}
