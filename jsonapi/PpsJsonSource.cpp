// SPDX-License-Identifier: Apache-2.0
#include <zel/PpsJsonSource.h>

#include <QStringDecoder>

#include <cstdint>
#include <cstring>
#include <string_view>

namespace zel {

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
    else
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

PpsJsonSource::PpsJsonSource(pps_decoder_t* decoder)
    : m_decoder(decoder)
    , m_rootPosition(getReadPointer())
{
}

PpsJsonSource::~PpsJsonSource() = default;

void* PpsJsonSource::getReadPointer() const
{
    pps_decoder_state_t state = {};
    pps_decoder_get_state(m_decoder, &state);
    return reinterpret_cast<void*>(state.position);
}

bool PpsJsonSource::restoreState(void* node)
{
    const pps_decoder_state_t state = {reinterpret_cast<uintptr_t>(node)};
    return pps_decoder_set_state(m_decoder, &state) == PPS_DECODER_OK;
}

/// Puts the decoder where the child can be read under its name, or without one when it is meant by its place.
bool PpsJsonSource::goTo(void* node, iface::JsonChildIdentifier child)
{
    return restoreState(node) && (child.name || pps_decoder_goto_index(m_decoder, child.index) == PPS_DECODER_OK);
}

bool PpsJsonSource::readInt(void* node, iface::JsonChildIdentifier child, int& value)
{
    return goTo(node, child) && pps_decoder_get_int(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readDouble(void* node, iface::JsonChildIdentifier child, double& value)
{
    return goTo(node, child) && pps_decoder_get_double(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readBool(void* node, iface::JsonChildIdentifier child, bool& value)
{
    return goTo(node, child) && pps_decoder_get_bool(m_decoder, child.name, &value) == PPS_DECODER_OK;
}

bool PpsJsonSource::readLong(void* node, iface::JsonChildIdentifier child, long& value)
{
    int number = 0;
    if (!readInt(node, child, number)) {
        return false;
    }
    value = number;
    return true;
}

bool PpsJsonSource::readString(void* node, iface::JsonChildIdentifier child, QString& value)
{
    const char* text = nullptr;
    size_t size = 0;
    if (!goTo(node, child) || pps_decoder_get_string_n(m_decoder, child.name, &text, &size) != PPS_DECODER_OK) {
        return false;
    }
    assign(value, {text, size});
    return true;
}

int PpsJsonSource::numChildren(void* node)
{
    return restoreState(node) ? pps_decoder_length(m_decoder) : 0;
}

void* PpsJsonSource::push(void* node, iface::JsonChildIdentifier child, bool& ok)
{
    ok = goTo(node, child) && pps_decoder_push(m_decoder, child.name) == PPS_DECODER_OK;
    return ok ? getReadPointer() : nullptr;
}

void* PpsJsonSource::getRoot()
{
    return m_rootPosition;
}

} // namespace zel
