// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <cstring>

namespace device {

// A text that grows at its end. Memory that cannot be had makes it fail for good and never
// throws: it serves a C interface.
class TextBuffer
{
public:
    TextBuffer() = default;
    ~TextBuffer() { std::free(m_data); }
    TextBuffer(const TextBuffer&) = delete;
    TextBuffer& operator=(const TextBuffer&) = delete;

    // Ended by a NUL.
    const char* data() const
    {
        if (!m_data)
            return "";
        m_data[m_size] = '\0';
        return m_data;
    }
    size_t size() const { return m_size; }
    bool hasFailed() const { return m_failed; }

    void append(const char* text, size_t length)
    {
        char* const place = grow(length);
        if (place && length > 0)
            std::memcpy(place, text, length);
    }
    template <size_t N>
    void append(const char (&literal)[N])
    {
        append(literal, N - 1);
    }
    void append(char character) { append(&character, 1); }
    void appendQuoted(const char* text, size_t length)
    {
        char* const place = grow(length + 2);
        if (!place)
            return;
        place[0] = '"';
        if (length > 0)
            std::memcpy(place + 1, text, length);
        place[length + 1] = '"';
    }

private:
    char* grow(size_t length)
    {
        // There is always one byte more, for the NUL.
        if (length >= m_capacity - m_size && !reserve(length))
            return nullptr;
        char* const place = m_data + m_size;
        m_size += length;
        return place;
    }

    bool reserve(size_t length)
    {
        const size_t needed = m_size + length + 1;
        // A size that wraps around is as unobtainable as one that malloc refuses.
        if (m_failed || needed <= m_size) {
            m_failed = true;
            return false;
        }
        const size_t capacity = std::max(needed, m_capacity ? m_capacity * 2 : 1024);
        char* const data = static_cast<char*>(std::realloc(m_data, capacity));
        if (!data) {
            m_failed = true;
            return false;
        }
        m_data = data;
        m_capacity = capacity;
        return true;
    }

    char* m_data = nullptr;
    size_t m_size = 0;
    size_t m_capacity = 0;
    bool m_failed = false;
};

} // namespace device
