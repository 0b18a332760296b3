// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyLoaderValue.h>
#include <iface/ObservableValue.h>
#include <iface/QApplicationRealm.h>
#include <iface/RetryTimer.h>

#include <QHash>
#include <QList>
#include <QSharedData>

#include <boost/function.hpp>

#include <utility>

namespace iface {

/// Hands out observable values for keys whose contents have to be fetched, and fetches them in batches.
///
/// What is asked for in one turn of the event loop is requested together in a later one, in the order asked for, at
/// most BatchLimit keys at a time and one request after the other. The owner gives a function that sends a request,
/// stores what comes with store(), and calls updateDone() at the answer's end. A request that gets no answer is sent
/// again after 30 seconds, and then ever more rarely (see RetryTimer).
///
/// Shared by reference count, or a member of its owner. Values outlive the loader as long as somebody holds them; they
/// then stay as they are. One thread. Observers of a value, and the load function, may ask for keys, store, end the
/// request, spin an event loop, drop the loader, or throw: the loader is whole whenever it calls out.
template <class K, class V>
class LazyLoader : public QSharedData
{
public:
    using Value = LazyLoaderValue<K, V>;
    using LoadFunction = boost::function<void(QList<K>)>;

    static constexpr int BatchLimit = 20;

    explicit LazyLoader(LoadFunction loadFunction, V defaultValue = V(), int batchLimit = BatchLimit);
    virtual ~LazyLoader() = default;

    /// The value of a key. The first use of a key creates it, with default contents, and asks for it.
    ObservableValue<V> getObservableValue(const K& key);
    /// Stores contents that have come, asked for or not; never asks. Answers whether they differ from what was there
    /// (which for a new key are the default contents).
    bool store(const K& key, const V& contents);

    bool hasValue(const K& key) const { return m_values.contains(key); }
    /// Whether contents have been stored for the key, or its request has been answered without any.
    bool isLoaded(const K& key) const;
    /// The value of a key that there is, otherwise null; asks for nothing.
    Value* value(const K& key) const { return m_values.value(key).data(); }
    /// All keys, in no particular order.
    QList<K> keys() const { return m_values.keys(); }
    int size() const { return static_cast<int>(m_values.size()); }

    /// Has a request for the waiting keys sent soon, unless one is already scheduled or under way.
    void requestAll();
    /// The answer to the request under way has been stored. Without one, nothing happens.
    void updateDone();

    /// The answer to the request under way has come whole, and is about to be stored. If the keys that wait fill
    /// another request, it goes out now rather than after updateDone(), so that the other side works on it meanwhile;
    /// there is still one request under way at a time. Answers whether it did: then answerStored(), and not
    /// updateDone(), says that the answer has been stored. A key that the answer brings unasked may be requested again.
    bool requestNext();
    void answerStored();
    /// The same when storing was given up on the way: what has not been stored is requested again.
    void answerLost();

private:
    Q_DISABLE_COPY_MOVE(LazyLoader)
    using ValuePointer = QExplicitlySharedDataPointer<Value>;

    /// A key with its value at hand: looking it up again and again is what costs most with many keys.
    struct Waiting
    {
        K key;
        ValuePointer value;
    };

    ValuePointer create(const K& key);
    bool isBatchWaiting() const;
    void performRequestAll();
    void repeatRequest();
    void load(const QList<K>& keys);

    QHash<K, ValuePointer> m_values;
    const LoadFunction m_loadFunction;
    const V m_defaultValue;
    const int m_batchLimit;
    // No duplicates: a key waits once, when its value is made.
    QList<Waiting> m_pending;
    QList<Waiting> m_inFlight;
    // In the requests before, whose answer is being stored.
    QList<Waiting> m_answered;
    bool m_requestScheduled = false;
    QApplicationRealm m_realm;
    RetryTimer m_retry;
};

} // namespace iface

#include <iface/detail/LazyLoader-inl.h>
