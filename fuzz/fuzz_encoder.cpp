// SPDX-License-Identifier: Apache-2.0
// Any calls in any order, rightly used or not: what comes out, once closed, is a text that the decoder takes.
#include <pps/decoder.h>
#include <pps/encoder.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {

// Takes the calls and their arguments from the fuzzer's bytes.
class Input
{
public:
    Input(const uint8_t* data, size_t size)
        : m_data(reinterpret_cast<const char*>(data))
        , m_end(m_data + size)
    {
    }
    bool isEmpty() const { return m_data == m_end; }
    uint8_t byte() { return isEmpty() ? 0 : static_cast<uint8_t>(*m_data++); }
    std::string text()
    {
        const auto length = std::min<size_t>(byte(), static_cast<size_t>(m_end - m_data));
        m_data += length;
        return std::string(m_data - length, length);
    }
    template <typename T>
    T number()
    {
        T value{};
        const auto length = std::min(sizeof value, static_cast<size_t>(m_end - m_data));
        std::memcpy(&value, m_data, length);
        m_data += length;
        return value;
    }

private:
    const char* m_data;
    const char* m_end;
};

constexpr int deepest = 500; // what the decoder takes, with room for what is around

void call(pps_encoder_t* encoder, Input& input, int* depth)
{
    const uint8_t what = input.byte();
    const std::string name = input.text();
    const char* const text = what & 0x80 ? nullptr : name.data();
    switch (what % 9) {
    case 0:
        pps_encoder_add_null_n(encoder, text, name.size());
        break;
    case 1:
        pps_encoder_add_bool_n(encoder, text, name.size(), what & 0x40);
        break;
    case 2:
        pps_encoder_add_int_n(encoder, text, name.size(), input.number<int>());
        break;
    case 3:
        pps_encoder_add_double_n(encoder, text, name.size(), input.number<double>());
        break;
    case 4: {
        const std::string value = input.text();
        pps_encoder_add_string_n(encoder, text, name.size(), value.data(), value.size());
        break;
    }
    case 5:
    case 6:
        if (*depth >= deepest)
            break;
        ++*depth;
        if (what % 9 == 5)
            pps_encoder_start_object_n(encoder, text, name.size());
        else
            pps_encoder_start_array_n(encoder, text, name.size());
        break;
    case 7:
        *depth -= pps_encoder_end_object(encoder) != PPS_ENCODER_UNBALANCED;
        break;
    default:
        *depth -= pps_encoder_end_array(encoder) != PPS_ENCODER_UNBALANCED;
        break;
    }
}

void closeAll(pps_encoder_t* encoder)
{
    while (pps_encoder_end_object(encoder) != PPS_ENCODER_UNBALANCED ||
           pps_encoder_end_array(encoder) != PPS_ENCODER_UNBALANCED) {
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const bool encodeJson = input.byte() & 1;
    pps_encoder_t encoder;
    pps_encoder_initialize(&encoder, encodeJson);
    int depth = 0;
    while (!input.isEmpty())
        call(&encoder, input, &depth);
    closeAll(&encoder);

    std::string text(pps_encoder_buffer(&encoder), static_cast<size_t>(pps_encoder_length(&encoder)));
    if (encodeJson && !text.empty())
        text = "dat:json:" + text;
    pps_decoder_t decoder;
    if (pps_decoder_initialize_n(&decoder, text.data(), text.size()) != PPS_DECODER_OK)
        std::abort();
    pps_decoder_cleanup(&decoder);
    pps_encoder_cleanup(&encoder);
    return 0;
}
