// SPDX-License-Identifier: Apache-2.0
// Any calls in any order, rightly used or not: what comes out, once closed, is a text whose every line the decoder
// takes.
#include <device/Decoder.h>
#include <device/Encoder.h>

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

void call(device::Encoder& encoder, Input& input, int* starts)
{
    const uint8_t what = input.byte();
    const std::string name = input.text();
    const device::Text text = what & 0x80 ? device::Text() : device::Text(name.c_str(), name.size());
    switch (what % 8) {
    case 0:
        return encoder.addNull(text);
    case 1:
        return encoder.addBool(text, what & 0x40);
    case 2:
        return encoder.addInt(text, input.number<int>());
    case 3: {
        const std::string value = input.text();
        return encoder.addString(text, {value.c_str(), value.size()});
    }
    case 4:
    case 5:
        if (++*starts > deepest)
            return;
        return what % 8 == 4 ? encoder.startObject(text) : encoder.startArray(text);
    case 6:
        return encoder.endObject();
    default:
        return encoder.endArray();
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    Input input(data, size);
    const auto form = input.byte() & 1 ? device::Encoder::Json : device::Encoder::Attributes;
    device::Encoder encoder(form);
    int starts = 0;
    while (!input.isEmpty())
        call(encoder, input, &starts);
    for (int i = 0; i < starts; ++i) { // one of the two closes what is innermost
        encoder.endObject();
        encoder.endArray();
    }

    QByteArray text(encoder.text().data(), qsizetype(encoder.text().size()));
    if (form == device::Encoder::Json && !text.isEmpty())
        text = "dat:json:" + text + '\n';
    device::Decoder decoder(text);
    if (!decoder.isValid() || pps_decoder_length(decoder.get()) != text.count('\n'))
        std::abort();
    return 0;
}
