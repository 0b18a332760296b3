// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/PPSManager.h>

#include <splib/log/Logging.h>

#include <zel/JsonWriter.h>
#include <zel/PpsJsonSource.h>

#include <pps/decoder.h>
#include <pps/encoder.h>
#include <pps/object.h>

#include <QByteArray>
#include <QByteArrayView>

#include <cerrno>
#include <cstddef>
#include <fcntl.h>
#include <unistd.h>

namespace zelsplib {

using namespace logging;

namespace {

class Encoder
{
public:
    Encoder() { pps_encoder_initialize(&m_encoder, false); }
    ~Encoder() { pps_encoder_cleanup(&m_encoder); }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    pps_encoder_t* get() { return &m_encoder; }

private:
    pps_encoder_t m_encoder{};
};

int openObject(const QString& path)
{
    const int descriptor = pps_object_open(path.toUtf8().constData(), O_RDWR);
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

/// One received text, taken apart.
class PPSManager::Decoder
{
public:
    explicit Decoder(const QByteArray& text)
        : m_accepted(pps_decoder_initialize_n(&m_decoder, text.constData(), static_cast<std::size_t>(text.size())) ==
                     PPS_DECODER_OK)
    {
    }
    ~Decoder() { pps_decoder_cleanup(&m_decoder); }
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;

    pps_decoder_t* get() { return &m_decoder; }
    bool hasAccepted() const { return m_accepted; }
    bool hasElements() { return pps_decoder_length(&m_decoder) > 0; }
    bool enter(const QByteArray& name) { return pps_decoder_push(&m_decoder, name.constData()) == PPS_DECODER_OK; }

private:
    pps_decoder_t m_decoder{};
    bool m_accepted;
};

PPSManager::PPSManager(const QString& path, const QString& objectName, const QString& messageName)
    : m_ppsHandle(openObject(path))
    , m_objectName(objectName)
    , m_messageName(messageName)
    , m_connected(new iface::WritableObservableValue<bool>(true))
{
}

PPSManager::~PPSManager()
{
    // A program whose standard input was closed may have been given 0, which is taken but left open: others in the
    // process hold on to that number.
    if (m_ppsHandle > 0)
        ::close(m_ppsHandle);
}

void PPSManager::send(const QSharedPointer<zel::JsonWriter>& writer)
{
    send(writer->toString());
}

void PPSManager::send(const QString& json)
{
    Log<ZELSP_PPS_SEND_JSONDATA>({}, json);
    const QByteArray message = m_messageName.toUtf8();
    const QByteArray data = json.toUtf8();
    Encoder encoder;
    pps_encoder_add_string(encoder.get(), "msg", message.constData());
    pps_encoder_add_json_n(encoder.get(), "dat", 3, data.constData(), static_cast<std::size_t>(data.size()));
    // A message is written once or not at all; the object gives no sign of what becomes of it.
    [[maybe_unused]] const ssize_t written = ::write(m_ppsHandle, pps_encoder_buffer(encoder.get()),
                                                     static_cast<std::size_t>(pps_encoder_length(encoder.get())));
}

void PPSManager::addListener(QObject* owner, const QString& messageType, const Listener& listener)
{
    m_listeners.addListener(owner, messageType, listener);
}

void PPSManager::removeListeners(QObject* owner)
{
    m_listeners.removeListeners(owner);
}

iface::ObservableValue<bool> PPSManager::isConnected() const
{
    return iface::ObservableValue<bool>(m_connected.data());
}

void PPSManager::dispatchMessageReceived(const QString& ppsText)
{
    dispatchMessageReceived(ppsText.toUtf8());
}

void PPSManager::dispatchMessageReceived(const QByteArray& ppsText)
{
    Log<ZELSP_PPS_RECV_JSONDATA>({}, jsonInPps(ppsText));
    Decoder decoder(ppsText);
    if (decoder.hasAccepted())
        return dispatch(decoder);
    // Refused for want of UTF-8, perhaps. That is hardly ever so, and looking at every text first would cost too much.
    const QByteArray cleaned = QString::fromUtf8(ppsText).toUtf8();
    if (cleaned == ppsText)
        return;
    Decoder again(cleaned);
    if (again.hasAccepted())
        dispatch(again);
}

void PPSManager::dispatch(Decoder& decoder)
{
    if (!decoder.hasElements() || !decoder.enter('@' + m_objectName.toUtf8()) || !decoder.enter("dat"))
        return;
    std::size_t typeLength = 0;
    const char* messageType = pps_decoder_name_n(decoder.get(), &typeLength);
    if (!messageType)
        return;
    zel::PpsJsonSource source(decoder.get());
    const iface::JsonNodeReader envelope = source.startParsing();
    m_listeners.sendMessage(QString::fromUtf8(messageType, static_cast<qsizetype>(typeLength)), envelope[messageType]);
}

QString PPSManager::getJsonFromPps(const QString& ppsText) const
{
    return QString::fromUtf8(jsonInPps(ppsText.toUtf8()));
}

} // namespace zelsplib
