// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/channel/Retries.h>

#include <zel/JsonStream.h>

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QSharedPointer>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <functional>

namespace zelsplib {

/// What one manager has asked for on streams: the pictures of contacts, by user, or icons, by id.
///
/// Each waits on one stream, that of the request made last, and several may wait on the same stream. What has no answer
/// is asked for again for as long as it waits. Half a transfer that was cut is forgotten when the same is asked for
/// anew, unless somebody else, of any manager, waits on that stream: it may be theirs, and under way. Transfers that
/// overtake each other, and chunks that were lost, show in the hash.
///
/// A member of its manager, which holds the stream: it is a child of the stream, so that those of one stream can see
/// each other, and must not outlive it.
class StreamRequests : public QObject
{
    Q_OBJECT

public:
    using Send = std::function<void(const QString& key, const QString& streamId)>;

    /// `send` is called for each request that is to go out, and for what is overdue; it may make and cancel requests.
    StreamRequests(const QSharedPointer<zel::JsonStream>& stream, Send send);

    void request(const QString& key, const QString& streamId);
    void cancel(const QString& key);
    /// Data has come on a stream named after its hash. Who waited for it, in the order in which they began to, and
    /// waits no more: nobody when it is not whole.
    QStringList take(const QString& streamId, const QByteArray& data);
    /// Whether data with this hash, come on a stream on which somebody waits, is all of what is named by `name`: the
    /// same hash, a name that is no hash, or data that has come for the third time. If not, it is asked for again, at
    /// once but for twice at most.
    bool isWhole(const QString& streamId, const QString& name, const QString& hash);

    QStringList waiting(const QString& streamId) const { return m_keys.value(streamId); }
    /// Whether anybody but `key` waits on a stream, here or in another manager.
    bool isAwaitedByOthers(const QString& key, const QString& streamId) const;

private:
    void requestAgain(const QString& key);

    zel::JsonStream& m_stream;
    const Send m_send;
    QHash<QString, QString> m_streams;     ///< by key
    QHash<QString, QStringList> m_keys;    ///< by stream
    QHash<QString, QStringList> m_doubted; ///< the hashes of what came and was not whole, by stream
    Retries m_retries;
};

} // namespace zelsplib
