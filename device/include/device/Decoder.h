// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pps/decoder.h>

#include <QtCore/QByteArray>

#include <cstdint>
#include <string_view>

namespace device {

/// A text taken apart, as <pps/decoder.h> describes it, for as long as this lives.
class Decoder
{
public:
    explicit Decoder(const QByteArray& text);
    ~Decoder() { pps_decoder_cleanup(&m_decoder); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    /// Whether the text was fit to be read.
    bool isValid() const { return m_isValid; }
    pps_decoder_t* get() { return &m_decoder; }

private:
    pps_decoder_t m_decoder = {};
    bool m_isValid = false;
};

// What readers want of a decoder beyond the platform's calls. Names and texts live until the clean-up and have a NUL
// behind them; where the device cannot tell lengths, they end at their first NUL.

/// The current element's name; one without data when it has none.
std::string_view currentName(pps_decoder_t* decoder);

/// Reads the string of that name, or the current element when the name is null. Writes `value` on success only.
bool readString(pps_decoder_t* decoder, const char* name, std::string_view* value);

/// A member of an object as it is shown: of a value that is none of these only the name is told.
struct Member
{
    enum Type { Another, Text, Integer, Bool };

    std::string_view name;
    Type type;
    std::string_view text;
    std::int64_t number; ///< of a bool 0 or 1
};

/// Shows the members of the JSON object in which the decoder stands, in the text's order, doubled ones too: the
/// cheapest way to read many. The function must not use the decoder. False when it stands in none, or when the device
/// cannot do it: nothing was shown then, and members have to be asked for by name.
bool visitMembers(pps_decoder_t* decoder, void (*show)(void* context, const Member& member), void* context);

} // namespace device
