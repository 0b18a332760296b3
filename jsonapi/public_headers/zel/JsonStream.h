// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zel/JsonPipe.h>

#include <QtCore/QByteArray>
#include <QtCore/QList>
#include <QtCore/QMap>
#include <QtCore/QVariant>

namespace zel {

class JsonStreamFunctorAdapter;

/// Carries binary data over the pipe, as base64 text cut into chunks that fit a message.
///
/// One for the whole pipe, held by QSharedPointer. What arrives is announced to everybody, whoever asked for it: a
/// receiver takes the ids that it knows. A transfer that never ends stays pending for the life of the stream; chunks
/// need no beginning, the first one opens its id. A receiver may send, throw, and spin a nested event loop: the bytes
/// have been taken out before they are announced, so a new transfer under the same id starts afresh, and every
/// JsonStreamFunctorAdapter hears of one transfer before anybody hears of the next. Slots of the signal have no such
/// order among themselves.
class ZEL_EXPORT JsonStream : public QObject
{
    Q_OBJECT

public:
    using Callback = boost::function<void(QString id, QVariant data)>;

    /// Characters of base64 text in a chunk; a multiple of four, so that each chunk decodes on its own.
    static constexpr quint32 CHUNK_SIZE = 20480;

    /// Listens to the pipe's stream messages. The callback, which may be empty, is called after the signal and the
    /// adapters.
    explicit JsonStream(const QSharedPointer<JsonPipe>& pipe, const Callback& callback = Callback());
    ~JsonStream() override;

    /// The pipe beneath, for those who are given the stream and have messages of their own to send and hear.
    QSharedPointer<JsonPipe> pipe() const { return m_pipe; }

    /// Sends the data under the id, in as many messages as it takes. No data, no message.
    void send(const QString& id, const QByteArray& data);

    /// Drops what has come under the id of a transfer that has not ended. To be called when something is asked for
    /// under an id for which nobody waits yet: half a transfer that was cut is then no part of the answer.
    void forget(const QString& id) { m_pending.remove(id); }

    /// Takes one message of the type "stream".
    void stream(QObject* sender, iface::JsonReaderAttribute message);
    /// Takes the bytes of one chunk, and announces the whole with the last.
    void addChunk(const QString& id, const QByteArray& bytes, bool last);

Q_SIGNALS:
    /// A transfer is complete; @p data holds a byte array. It is no longer pending.
    void dataReceived(const QString& id, const QVariant& data);

private:
    friend class JsonStreamFunctorAdapter;

    void announce(const QString& id, const QVariant& data);

    QSharedPointer<JsonPipe> m_pipe;
    Callback m_callback;
    QMap<QString, QByteArray> m_pending;
    QList<JsonStreamFunctorAdapter*> m_adapters;
};

} // namespace zel
