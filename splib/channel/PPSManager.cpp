// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <splib/log/Logging.h>

#include <zel/PpsJsonSource.h>

#include <device/Decoder.h>
#include <device/Encoder.h>
#include <device/Object.h>

#include <QtCore/QByteArray>
#include <QtCore/QByteArrayView>

#include <cerrno>
#include <unistd.h>

namespace zelsplib {

using namespace logging;

namespace {

constexpr std::size_t largestRecord = 65537; // one read, and a last line break that may be missing

int openObject(const QString& path)
{
    const int descriptor = device::openObject(path.toUtf8().constData());
    if (descriptor == -1) {
        const int error = errno;
        Log<ZELSP_PPS_INIT_FAILURE>({}, path);
        throw error;
    }
    return descriptor;
}

/// The JSON in a received text, for the log: from the first marker to the last line break, whatever the attribute.
QByteArrayView jsonInPps(QByteArrayView ppsText)
{
    constexpr QByteArrayView marker("json:");
    const qsizetype start = ppsText.indexOf(marker);
    const qsizetype end = ppsText.lastIndexOf('\n');
    if (start != -1 && end >= start)
        return ppsText.sliced(start + marker.size(), end - start - marker.size());
    // The placeholder's characters are swapped on purpose: whatever came in stays out of the log.
    Log<GENERAL_ERROR>({}, "PPSManager::getJsonFromPps(): invalid input: 1%");
    return {};
}

} // namespace

PPSManager::PPSManager(const QString& path, const QString& objectName, const QString& messageName)
    : m_ppsHandle(openObject(path))
    , m_objectName('@' + objectName.toUtf8())
    , m_messageName(messageName.toUtf8())
{
}

PPSManager::~PPSManager()
{
    // A program whose standard input was closed may have been given 0, which is taken but left open: others in the
    // process hold on to that number.
    if (m_ppsHandle > 0)
        ::close(m_ppsHandle);
}

void PPSManager::send(const QString& json)
{
    Log<ZELSP_PPS_SEND_JSONDATA>({}, json);
    device::Encoder encoder(device::Encoder::Attributes);
    encoder.addString("msg", m_messageName);
    encoder.addJson("dat", json.toUtf8());
    const std::string_view record = encoder.text();
    // A message is written once or not at all; the object gives no sign of what becomes of it.
    [[maybe_unused]] const ssize_t written = ::write(m_ppsHandle, record.data(), record.size());
    if (record.size() > largestRecord)
        Q_EMIT messageTooLong();
}

void PPSManager::addListener(QObject* owner, const QString& messageType, const Listener& listener)
{
    m_listeners.addListener(owner, messageType, listener);
}

void PPSManager::dispatchMessageReceived(const QByteArray& ppsText)
{
    Log<ZELSP_PPS_RECV_JSONDATA>({}, jsonInPps(ppsText));
    if (dispatchText(ppsText))
        return;
    // Not found for want of UTF-8, perhaps. That is hardly ever so, and looking at every text first would cost too
    // much.
    const QByteArray cleaned = QString::fromUtf8(ppsText).toUtf8();
    if (cleaned != ppsText)
        dispatchText(cleaned);
}

/// False when no message was found in the text.
bool PPSManager::dispatchText(const QByteArray& ppsText)
{
    device::Decoder text(ppsText);
    pps_decoder_t* const decoder = text.get();
    if (!text.isValid() || pps_decoder_length(decoder) == 0 ||
        pps_decoder_push(decoder, m_objectName.constData()) != PPS_DECODER_OK ||
        pps_decoder_push(decoder, "dat") != PPS_DECODER_OK)
        return false;
    const std::string_view type = device::currentName(decoder);
    if (!type.data())
        return false;
    zel::PpsJsonSource source(decoder);
    const iface::JsonNodeReader envelope = source.startParsing();
    m_listeners.sendMessage(QString::fromUtf8(type.data(), qsizetype(type.size())), envelope[type.data()]);
    return true;
}

QString PPSManager::getJsonFromPps(const QString& ppsText) const
{
    return QString::fromUtf8(jsonInPps(ppsText.toUtf8()));
}

} // namespace zelsplib
