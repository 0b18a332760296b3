// SPDX-License-Identifier: Apache-2.0
#include <device/Decoder.h>

namespace device {

namespace {

std::string_view viewOf(const char* text)
{
    return text ? std::string_view(text) : std::string_view();
}

} // namespace

Decoder::Decoder(const QByteArray& text)
    : m_isValid(pps_decoder_initialize(&m_decoder, text.constData()) == PPS_DECODER_OK)
{
}

std::string_view currentName(pps_decoder_t* decoder)
{
    return viewOf(pps_decoder_name(decoder));
}

bool readString(pps_decoder_t* decoder, const char* name, std::string_view* value)
{
    const char* text = nullptr;
    if (pps_decoder_get_string(decoder, name, &text) != PPS_DECODER_OK)
        return false;
    *value = viewOf(text);
    return true;
}

// The platform's decoder does not tell what type an element has: there is no walking through members of any type.
bool visitMembers(pps_decoder_t*, void (*)(void*, const Member&), void*)
{
    return false;
}

} // namespace device
