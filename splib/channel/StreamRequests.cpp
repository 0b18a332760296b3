// SPDX-License-Identifier: Apache-2.0
#include <splib/channel/StreamRequests.h>

#include <QtCore/QCryptographicHash>

#include <algorithm>
#include <utility>

namespace zelsplib {

namespace {

constexpr qsizetype timesToBelieve = 3;

bool isHash(const QString& name)
{
    constexpr int sha1Length = 40;
    return name.size() == sha1Length && std::all_of(name.begin(), name.end(), [](QChar c) {
               return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f');
           });
}

} // namespace

StreamRequests::StreamRequests(const QSharedPointer<zel::JsonStream>& stream, Send send)
    : QObject(stream.data())
    , m_stream(*stream)
    , m_send(std::move(send))
    , m_retries([this](const QString& key) { requestAgain(key); })
{
}

void StreamRequests::request(const QString& key, const QString& streamId)
{
    if (m_streams.value(key) != streamId)
        cancel(key);
    if (!isAwaitedByOthers(key, streamId))
        m_stream.forget(streamId);
    if (!m_streams.contains(key)) {
        m_streams.insert(key, streamId);
        m_keys[streamId].append(key);
        m_retries.begin(key);
    }
    m_send(key, streamId);
}

void StreamRequests::cancel(const QString& key)
{
    m_retries.end(key);
    const auto keys = m_keys.find(m_streams.take(key));
    if (keys == m_keys.end())
        return;
    keys->removeOne(key);
    if (!keys->isEmpty())
        return;
    m_doubted.remove(keys.key());
    m_keys.erase(keys);
}

QStringList StreamRequests::take(const QString& streamId, const QByteArray& data)
{
    const QStringList keys = waiting(streamId);
    const QByteArray hash = QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
    if (keys.isEmpty() || !isWhole(streamId, streamId, QString::fromLatin1(hash)))
        return {};
    for (const QString& key : keys)
        cancel(key);
    return keys;
}

/// A service whose names are hashes of something else sends the same again and again, and is believed. Once again is
/// not enough: the same chunk may be lost twice.
bool StreamRequests::isWhole(const QString& streamId, const QString& name, const QString& hash)
{
    if (name == hash || !isHash(name))
        return true;
    QStringList& doubted = m_doubted[streamId];
    doubted.append(hash);
    if (doubted.count(hash) == timesToBelieve)
        return true;
    if (doubted.size() < timesToBelieve) // later ones wait their time: no two sides that answer each other without end
        requestAgain(waiting(streamId).value(0));
    return false;
}

bool StreamRequests::isAwaitedByOthers(const QString& key, const QString& streamId) const
{
    const auto all = m_stream.findChildren<StreamRequests*>(QString(), Qt::FindDirectChildrenOnly);
    return std::any_of(all.begin(), all.end(), [&](const StreamRequests* requests) {
        const QStringList keys = requests->waiting(streamId);
        return !keys.isEmpty() && (requests != this || keys != QStringList(key));
    });
}

/// What has come so far is forgotten whoever else waits: it has not gone on for so long that it never will.
void StreamRequests::requestAgain(const QString& key)
{
    const QString streamId = m_streams.value(key);
    m_stream.forget(streamId);
    m_send(key, streamId);
}

} // namespace zelsplib
