// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonStream.h>

#include <QPointer>

namespace zel {

JsonStream::JsonStream(const QSharedPointer<JsonPipe>& pipe, const Callback& callback)
    : m_pipe(pipe)
    , m_callback(callback)
{
    m_pipe->addListener(this, QStringLiteral("stream"),
                        [this](QObject* sender, iface::JsonReaderAttribute message) { stream(sender, message); });
}

JsonStream::~JsonStream() = default;

void JsonStream::send(const QString& id, const QByteArray& data)
{
    const QByteArray text = data.toBase64();
    for (qsizetype at = 0; at < text.size(); at += CHUNK_SIZE) {
        const qsizetype size = qMin<qsizetype>(CHUNK_SIZE, text.size() - at);
        const auto message = QSharedPointer<JsonWriter>::create(QStringLiteral("stream"), QStringLiteral("zel"));
        message->addAttribute(QStringLiteral("id"), id);
        message->addAttribute(QStringLiteral("value"), QString::fromLatin1(text.constData() + at, size));
        if (at + size == text.size()) {
            message->addAttribute(QStringLiteral("last"), true);
        }
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
    const QVariant data(m_pending.take(id) + bytes);
    const QPointer<JsonStream> self(this);
    Q_EMIT dataReceived(id, data);
    if (self && m_callback) {
        const Callback callback = m_callback;
        callback(id, data);
    }
}

} // namespace zel
