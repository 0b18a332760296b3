// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonStream.h>

#include <iface/detail/MakeShared.h>

#include <zel/JsonStreamFunctorAdapter.h>
#include <zel/detail/MessageOrder.h>

#include <QtCore/QPointer>

using namespace Qt::StringLiterals;

namespace zel {

JsonStream::JsonStream(const QSharedPointer<JsonPipe>& pipe, const Callback& callback)
    : m_pipe(pipe)
    , m_callback(callback)
{
    m_pipe->addListener(this, u"stream"_s,
                        [this](QObject* sender, iface::JsonReaderAttribute message) { stream(sender, message); });
}

JsonStream::~JsonStream()
{
    m_pipe->removeListeners(this);
}

void JsonStream::send(const QString& id, const QByteArray& data)
{
    const QByteArray text = data.toBase64();
    for (qsizetype at = 0; at < text.size(); at += CHUNK_SIZE) {
        const qsizetype size = qMin<qsizetype>(CHUNK_SIZE, text.size() - at);
        const auto message = iface::detail::makeShared<JsonWriter>(u"stream"_s, u"zel"_s);
        message->addAttribute(u"id"_s, id);
        message->addAttribute(u"value"_s, QString::fromLatin1(text.constData() + at, size));
        if (at + size == text.size())
            message->addAttribute(u"last"_s, true);
        m_pipe->send(message);
    }
}

void JsonStream::stream(QObject*, iface::JsonReaderAttribute message)
{
    QString id;
    QString value;
    bool last = false;
    message.object().readFields("id", id, "value", value, "last", last);
    addChunk(id, QByteArray::fromBase64(value.toLatin1()), last);
}

void JsonStream::addChunk(const QString& id, const QByteArray& bytes, bool last)
{
    if (!last) {
        m_pending[id].append(bytes);
        return;
    }
    // Taken out first: a receiver may spin an event loop in which the id is used again.
    announce(id, m_pending.take(id) + bytes);
}

void JsonStream::announce(const QString& id, const QVariant& data)
{
    const QPointer<JsonStream> self(this);
    const QList<JsonStreamFunctorAdapter*> adapters = m_adapters;
    detail::MessageOrder::runParts(int(adapters.size()) + 2, [&](int i) {
        if (!self)
            return;
        if (i == 0) {
            Q_EMIT dataReceived(id, data);
        } else if (JsonStreamFunctorAdapter* const adapter = adapters.value(i - 1)) {
            if (m_adapters.contains(adapter))
                adapter->dataReceived(id, data);
        } else if (m_callback) {
            const Callback callback = m_callback; // it may destroy the stream
            callback(id, data);
        }
    });
}

} // namespace zel
