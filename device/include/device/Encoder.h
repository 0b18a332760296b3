// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pps/encoder.h>

#include <QtCore/QByteArray>

#include <cstddef>
#include <string_view>

namespace device {

/// UTF-8, ended by a NUL that does not count. One without data is no text: an element without a name.
///
/// A NUL within it is a character where the device can tell lengths; where it cannot, the text ends there.
struct Text
{
    Text() = default;
    Text(const char* utf8, std::size_t size)
        : data(utf8)
        , length(size)
    {
    }
    template <std::size_t N>
    Text(const char (&literal)[N])
        : Text(literal, N - 1)
    {
    }
    Text(const QByteArray& utf8)
        : Text(utf8.constData(), static_cast<std::size_t>(utf8.size()))
    {
    }

    const char* data = nullptr;
    std::size_t length = 0;
};

/// A text being written, as <pps/encoder.h> describes it: the platform's encoder, with texts that know their length.
class Encoder
{
public:
    enum Form { Attributes, Json };

    explicit Encoder(Form form) { pps_encoder_initialize(&m_encoder, form == Json); }
    ~Encoder() { pps_encoder_cleanup(&m_encoder); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    void startObject(Text name);
    void endObject() { pps_encoder_end_object(&m_encoder); }
    void startArray(Text name);
    void endArray() { pps_encoder_end_array(&m_encoder); }
    void addNull(Text name);
    void addBool(Text name, bool value);
    void addInt(Text name, int value);
    void addString(Text name, Text value);
    void addJson(Text name, Text json);

    /// The text so far, with a NUL behind it; until the next call that writes.
    std::string_view text() const
    {
        return {pps_encoder_buffer(&m_encoder), static_cast<std::size_t>(pps_encoder_length(&m_encoder))};
    }

private:
    pps_encoder_t m_encoder = {};
};

} // namespace device
