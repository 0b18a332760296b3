// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

namespace device {

// The length of the UTF-8 character at `text`, or 0 when there is none: an overlong form, a surrogate, a value past
// U+10FFFF, a sequence cut short or a byte that starts nothing.
inline size_t utf8CharacterLength(const char* text, const char* end)
{
    const auto byte = [text](int i) { return static_cast<uint8_t>(text[i]); };
    const auto isContinuation = [&](int i) { return (byte(i) & 0xC0) == 0x80; };
    const size_t left = static_cast<size_t>(end - text);
    if (left == 0)
        return 0;
    const uint8_t first = byte(0);
    if (first < 0x80)
        return 1;
    if (first >= 0xC2 && first <= 0xDF)
        return left >= 2 && isContinuation(1) ? 2 : 0;
    if (first >= 0xE0 && first <= 0xEF) {
        if (left < 3 || !isContinuation(1) || !isContinuation(2))
            return 0;
        const bool overlong = first == 0xE0 && byte(1) < 0xA0;
        const bool surrogate = first == 0xED && byte(1) > 0x9F;
        return overlong || surrogate ? 0 : 3;
    }
    if (first >= 0xF0 && first <= 0xF4) {
        if (left < 4 || !isContinuation(1) || !isContinuation(2) || !isContinuation(3))
            return 0;
        const bool overlong = first == 0xF0 && byte(1) < 0x90;
        const bool tooLarge = first == 0xF4 && byte(1) > 0x8F;
        return overlong || tooLarge ? 0 : 4;
    }
    return 0;
}

} // namespace device
