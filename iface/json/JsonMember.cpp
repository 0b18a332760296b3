// SPDX-License-Identifier: Apache-2.0
#include <iface/JsonMember.h>

#include <QtCore/QStringDecoder>
#include <QtCore/QVarLengthArray>

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

/// A value that has this text already is left as it is: copies of it go on sharing their memory.
void assign(QString& value, std::string_view utf8)
{
    if (isAscii(utf8)) {
        const QLatin1String text(utf8.data(), qsizetype(utf8.size()));
        if (value != text || value.isNull())
            value = QString(text);
        return;
    }
    // Each byte that is none of UTF-8 becomes U+FFFD; a U+FEFF at the beginning stays, which QString::fromUtf8() drops.
    QStringDecoder decoder(QStringDecoder::Utf8,
                           QStringDecoder::Flag::Stateless | QStringDecoder::Flag::ConvertInitialBom);
    // A script of three bytes a character needs a third of the room: no more is kept.
    QVarLengthArray<QChar, 256> room(qsizetype(utf8.size()));
    const QStringView text(room.data(),
                           decoder.appendToBuffer(room.data(), QByteArrayView(utf8.data(), qsizetype(utf8.size()))));
    if (value != text)
        value = text.toString();
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

bool JsonMember::read(std::string_view& utf8) const
{
    if (m_type == Text)
        utf8 = m_text;
    return m_type == Text;
}

} // namespace iface
