// SPDX-License-Identifier: Apache-2.0
#include <iface/JsonMember.h>

#include <QStringDecoder>

#include <cstring>
#include <limits>

namespace iface {

namespace {

constexpr uint64_t eachByte = 0x0101010101010101;

uint64_t eightBytes(const char* text)
{
    uint64_t bytes;
    std::memcpy(&bytes, text, sizeof bytes);
    return bytes;
}

bool isAscii(std::string_view text)
{
    constexpr uint64_t highBits = eachByte << 7;
    uint64_t seen = 0;
    if (text.size() >= 8)
        seen = eightBytes(text.data() + text.size() - 8);
    else if (!text.empty())
        std::memcpy(&seen, text.data(), text.size());
    for (; text.size() > 8; text.remove_prefix(8))
        seen |= eightBytes(text.data());
    return (seen & highBits) == 0;
}

/// How many UTF-16 code units the text takes: one for each byte that continues nothing, and another one for each that
/// begins four.
qsizetype utf16Length(std::string_view utf8)
{
    qsizetype length = 0;
    for (; utf8.size() >= 8; utf8.remove_prefix(8)) {
        const uint64_t bytes = eightBytes(utf8.data());
        const uint64_t starts = ~(bytes >> 7 & ~bytes >> 6) & eachByte;
        const uint64_t longOnes = bytes >> 7 & bytes >> 6 & bytes >> 5 & bytes >> 4 & eachByte;
        length += qsizetype(((starts + longOnes) * eachByte) >> 56);
    }
    for (const char character : utf8) {
        const auto byte = static_cast<uint8_t>(character);
        length += (byte & 0xC0) != 0x80 ? 1 : 0;
        length += byte >= 0xF0 ? 1 : 0;
    }
    return length;
}

/// QString::fromUtf8() takes memory for as many characters as there are bytes and keeps it: of a text in a script of
/// three bytes a character, two thirds for nothing.
QString toString(std::string_view utf8)
{
    QString text(utf16Length(utf8), Qt::Uninitialized);
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QChar* const end = decoder.appendToBuffer(text.data(), QByteArrayView(utf8.data(), qsizetype(utf8.size())));
    text.truncate(end - text.constData());
    return text;
}

/// A value that has this text already is left as it is: copies of it go on sharing their memory.
void assign(QString& value, std::string_view utf8)
{
    if (isAscii(utf8)) {
        const QLatin1String text(utf8.data(), qsizetype(utf8.size()));
        if (value != text || value.isNull())
            value = text;
        return;
    }
    const QString text = toString(utf8);
    if (value != text)
        value = text;
}

} // namespace

bool JsonMember::read(int& value) const
{
    if (m_type != Integer || m_number < std::numeric_limits<int>::min() || m_number > std::numeric_limits<int>::max())
        return false;
    value = static_cast<int>(m_number);
    return true;
}

bool JsonMember::read(bool& value) const
{
    if (m_type != Bool)
        return false;
    value = m_number != 0;
    return true;
}

bool JsonMember::read(QString& value) const
{
    if (m_type != Text)
        return false;
    assign(value, m_text);
    return true;
}

} // namespace iface
