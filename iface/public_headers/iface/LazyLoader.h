// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableValue.h>
#include <iface/QApplicationRealm.h>
#include <iface/RetryTimer.h>
#include <iface/detail/KeyIndex.h>
#include <iface/detail/LazyLoaderEntry.h>

#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QSharedData>
#include <QtCore/QVarLengthArray>

#include <boost/function.hpp>

#include <algorithm>
#include <memory>
#include <utility>

namespace iface {

/// Hands out observable values for keys whose contents have to be fetched, and fetches them in batches.
///
/// What is asked for in one turn of the event loop is requested together in a later one, in the order asked for, at
/// most as many keys at a time as the constructor is told and one batch after the other. The owner gives a function
/// that sends a request and stores what comes with store(). When an answer has come whole it calls takeAnswered(),
/// requestNext(), store() for what the answer brought, and settle(), in this order; or, having stored everything, just
/// updateDone(). A request that gets no answer is sent again after 30 seconds, and then ever more rarely (see
/// RetryTimer), for what has not come meanwhile; its clock stands still from takeAnswered() on.
///
/// Shared by reference count, or a member of its owner. Values outlive the loader as long as somebody holds them; they
/// then stay as they are. One thread. Observers of a value, and the load function, may ask for keys, store, end the
/// request (the other side may answer at once), spin an event loop, drop the loader, or throw: the loader is whole
/// whenever it calls out, and whoever is to be told is told before what was thrown goes on.
template <class K, class V>
class LazyLoader : public QSharedData
{
    using Entry = detail::LazyLoaderEntry<K, V>;
    using EntryPointer = QExplicitlySharedDataPointer<Entry>;
    using Progress = typename Entry::Progress;

public:
    using Value = LazyLoaderValue<K, V>;
    using LoadFunction = boost::function<void(QList<K>)>;
    /// Keys that were requested together.
    using Batch = QList<EntryPointer>;
    /// What an answer brings: nothing, contents of a key in the batch under way, or only contents of others.
    enum class Answer { Nothing, OfBatch, OfOthers };

    static constexpr int BatchLimit = 20;
    /// What answers have left out is asked for again in turns of so many keys: a message has room for only so many.
    static constexpr int RepeatLimit = 20 * BatchLimit;

    /// A limit below 1 is 1.
    explicit LazyLoader(LoadFunction loadFunction, V defaultValue = V(), int batchLimit = BatchLimit);
    virtual ~LazyLoader() = default;

    /// The value of a key. The first use of a key gives it the default contents and asks for it.
    ObservableValue<V> getObservableValue(const K& key) { return ObservableValue<V>(ask(key)->value()); }
    /// What that value holds. It asks for a key like getObservableValue(), but makes no value: for many keys that
    /// nobody observes one by one.
    V contents(const K& key) { return ask(key)->contents(); }
    /// Stores contents that have come, asked for or not; never asks. If they differ from what was there (which for a
    /// new key are the default contents), the value's observers hear first, and then the function is called.
    template <class Function>
    void store(const K& key, const V& contents, Function whenChanged);
    /// The same of contents that are only part of what the other side has: if they are asked for again, that goes on.
    template <class Function>
    void change(const K& key, const V& contents, Function whenChanged);

    /// Whether contents have been stored for the key, or its request has been answered without any.
    bool isLoaded(const K& key) const;
    /// Whether the key is in the batch under way.
    bool isInFlight(const K& key) const;
    /// The value of a key that was asked for or stored, otherwise null; asks for nothing.
    Value* value(const K& key) const;
    /// All keys, in the order in which they came.
    QList<K> keys() const;

    /// Has a request for the waiting keys sent soon, unless one is already scheduled or under way.
    void requestAll();
    /// The answer to the batch under way has been stored. Without one, nothing happens.
    void updateDone();
    /// Contents have been stored that are no answer: a batch that waits for nothing any more is at its end, also when
    /// its answer was lost. One that comes all the same is an answer of others.
    void endArrivedBatch();

    /// An answer is about to be stored: ends the requests that it answers, and returns the batch if that is among them.
    /// An answer with contents ends the batch only if it has some of it, and then also what went out before; one that
    /// brings nothing ends the oldest request.
    Batch takeAnswered(Answer answer);
    /// Sends the next batch now if the waiting keys fill it, so that the other side works on it while the answer is
    /// being stored, otherwise, or if the other side answers before the function has returned, soon. A key that the
    /// answer brings unasked may be requested again.
    void requestNext();
    /// What the answer brought has been stored. Keys of the batch that it left out keep their contents and are asked
    /// for again, until they come or an empty answer arrives while no request is open.
    void settle(const Batch& answered);

    /// Asks again for every key there is, in one request: contents may be out of date. It goes out once more like any
    /// other while something of it has not come, and counts as a repetition of the batch under way. Keys that wait are
    /// requested in a batch all the same, but in none with keys that are asked for later.
    void refresh();
    /// No answer will come to what has been sent. To be followed by refresh() once there is somebody to answer.
    void forgetRequests();

private:
    Q_DISABLE_COPY_MOVE(LazyLoader)
    enum class Request { Batch, Refresh };

    EntryPointer provide(const K& key);
    template <class Function, class BeforeChange>
    void change(const K& key, const V& contents, Function whenChanged, BeforeChange beforeChange);
    EntryPointer ask(const K& key);
    bool isBatchWaiting() const;
    void performRequestAll();
    void repeatBatch();
    void repeatRefresh();
    void endRefresh();
    Batch takeBatch();
    void end(const Batch& answered);
    void load(const QList<K>& keys);

    QList<EntryPointer> m_entries;
    detail::KeyIndex<K, Entry> m_index; // of them; ends first
    const LoadFunction m_loadFunction;
    // Whether that is being called; it may drop the loader.
    const std::shared_ptr<bool> m_isLoading = std::make_shared<bool>(false);
    const V m_defaultValue;
    const int m_batchLimit;
    // No duplicates: a key waits once, when its entry is made.
    Batch m_pending;
    Batch m_inFlight;
    bool m_requestScheduled = false;
    // Requests without an answer, in the order in which they went out; one of each at most.
    QVarLengthArray<Request, 2> m_due;
    // What the refresh that is due has asked for, and what answers left out, as far as it has not come since.
    QSet<K> m_outdated;
    qsizetype m_repeated = 0; // where in them the turn is
    int m_refreshes = 0;
    // Last, to go first: the end of a value may spin an event loop, in which nothing must be due any more.
    RetryTimer m_batchRetry;
    RetryTimer m_refreshRetry;
    QApplicationRealm m_realm;
};

} // namespace iface

#include <iface/detail/LazyLoader-inl.h>
