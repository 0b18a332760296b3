// SPDX-License-Identifier: Apache-2.0
// Any bytes as a text: every node that is found in it can be reached in every way, and all ways agree.
#include <device/Decoder.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>

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

// Reads the current element as every type; a whole number is a double, too, and no other element has two types.
void readScalar(pps_decoder_t* decoder, bool isContainer)
{
    int whole = 0;
    double real = 0;
    bool truth = false;
    std::string_view text;
    const bool isWhole = pps_decoder_get_int(decoder, nullptr, &whole) == PPS_DECODER_OK;
    const bool isReal = pps_decoder_get_double(decoder, nullptr, &real) == PPS_DECODER_OK;
    const bool isBool = pps_decoder_get_bool(decoder, nullptr, &truth) == PPS_DECODER_OK;
    const bool isString = device::readString(decoder, nullptr, &text);
    check(!isWhole || (isReal && real == whole));
    check(isReal + isBool + isString + isContainer <= 1);
    check(!isString || text.data()[text.size()] == '\0');
}

void countMember(void* context, const device::Member& member)
{
    check(member.name.data()[member.name.size()] == '\0');
    ++*static_cast<int*>(context);
}

void visit(pps_decoder_t* decoder)
{
    const uintptr_t here = position(decoder);
    const int length = pps_decoder_length(decoder);
    int shown = 0;
    check(!device::visitMembers(decoder, countMember, &shown) ? shown == 0 : shown == length);
    check(pps_decoder_goto_index(decoder, length) == PPS_DECODER_NOT_FOUND);
    check(pps_decoder_goto_index(decoder, -1) == PPS_DECODER_NOT_FOUND);
    // By name and back by index, which must not disturb each other; large containers only in part.
    for (int i = 0; i < length; i += 1 + length / 256) {
        restore(decoder, here);
        check(pps_decoder_goto_index(decoder, i) == PPS_DECODER_OK);
        const bool isContainer = pps_decoder_push(decoder, nullptr) == PPS_DECODER_OK;
        if (isContainer) {
            visit(decoder);
            restore(decoder, here);
            check(pps_decoder_goto_index(decoder, i) == PPS_DECODER_OK);
        }
        readScalar(decoder, isContainer);
        const std::string_view name = device::currentName(decoder);
        if (!name.data())
            continue;
        bool truth = false;
        check(pps_decoder_name(decoder) == name.data() && name.data()[name.size()] == '\0');
        check(std::strlen(name.data()) != name.size() ||
              pps_decoder_get_bool(decoder, name.data(), &truth) != PPS_DECODER_NOT_FOUND);
        check(pps_decoder_name(decoder) == name.data());
    }
    restore(decoder, here);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    device::Decoder decoder(QByteArray(reinterpret_cast<const char*>(data), qsizetype(size)));
    check(decoder.isValid());
    visit(decoder.get());
    return 0;
}
