// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyLoader.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QScopeGuard>
#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <new>
#include <optional>
#include <utility>

namespace iface {

template <class K, class V>
LazyLoader<K, V>::LazyLoader(LoadFunction loadFunction, V defaultValue, int batchLimit)
    : m_loadFunction(std::move(loadFunction))
    , m_defaultValue(std::move(defaultValue))
    , m_batchLimit(std::max(batchLimit, 1))
    , m_batchRetry([this] { repeatBatch(); })
    , m_refreshRetry([this] { repeatRefresh(); })
{
}

/// The entry of a key, made if there is none.
template <class K, class V>
auto LazyLoader<K, V>::provide(const K& key) -> EntryPointer
{
    EntryPointer entry(m_index.find(key));
    if (!entry) {
        entry = EntryPointer(new Entry(key, m_defaultValue, m_refreshes));
        m_entries.append(entry);
        auto forget = qScopeGuard([this] { m_entries.removeLast(); });
        m_index.insert(*entry);
        forget.dismiss();
    }
    return entry;
}

template <class K, class V>
auto LazyLoader<K, V>::ask(const K& key) -> EntryPointer
{
    const auto known = m_entries.size();
    EntryPointer entry = provide(key);
    if (m_entries.size() > known) {
        auto forget = qScopeGuard([&] {
            m_index.remove(*entry);
            m_entries.removeLast();
        });
        m_pending.append(entry);
        forget.dismiss();
    }
    requestAll();
    return entry;
}

template <class K, class V>
template <class Function>
void LazyLoader<K, V>::store(const K& key, const V& contents, Function whenChanged)
{
    change(key, contents, whenChanged, [&] {
        if (m_outdated.remove(key) && m_outdated.isEmpty())
            endRefresh();
    });
}

template <class K, class V>
template <class Function>
void LazyLoader<K, V>::change(const K& key, const V& contents, Function whenChanged)
{
    change(key, contents, whenChanged, [] {});
}

/// What could not be copied has not come: nothing is changed, and what was asked for is asked for again.
template <class K, class V>
template <class Function, class BeforeChange>
void LazyLoader<K, V>::change(const K& key, const V& contents, Function whenChanged, BeforeChange beforeChange)
{
    V kept = contents;
    const EntryPointer found = provide(key);
    std::optional<V> shown = found->isShown() ? std::optional<V>(contents) : std::nullopt;
    beforeChange();
    // Contents that come for a key in flight settle with their request; a key that still waits need not be requested.
    const bool settles = found->progress() == Progress::Waiting;
    if (settles)
        found->setProgress(Progress::Settled);
    else if (found->progress() == Progress::InFlight)
        found->setProgress(Progress::Arrived);
    detail::FirstException thrown;
    bool changed = true; // so it has, if an observer throws
    thrown.guard([&] { changed = found->setContents(std::move(kept), std::move(shown)); });
    if (changed)
        thrown.guard(whenChanged);
    else if (settles)
        found->notifyObservers();
    thrown.rethrow();
}

template <class K, class V>
auto LazyLoader<K, V>::value(const K& key) const -> Value*
{
    Entry* const found = m_index.find(key);
    return found ? found->value() : nullptr;
}

template <class K, class V>
QList<K> LazyLoader<K, V>::keys() const
{
    QList<K> keys;
    keys.reserve(m_entries.size());
    for (const EntryPointer& each : m_entries)
        keys.append(each->key);
    return keys;
}

template <class K, class V>
bool LazyLoader<K, V>::isLoaded(const K& key) const
{
    const Entry* const found = m_index.find(key);
    return found && found->progress() >= Progress::Arrived;
}

template <class K, class V>
bool LazyLoader<K, V>::isInFlight(const K& key) const
{
    const Entry* const found = m_index.find(key);
    return found && (found->progress() == Progress::InFlight || found->progress() == Progress::Arrived);
}

template <class K, class V>
void LazyLoader<K, V>::requestAll()
{
    if (m_requestScheduled || m_pending.isEmpty())
        return;
    try {
        m_realm.asyncExec([this] { performRequestAll(); });
        m_requestScheduled = true;
    } catch (const std::bad_alloc&) {
        m_batchRetry.start();
        throw;
    }
}

/// What may find no memory comes first, and before it what makes good for that when it is due.
///
/// No batch has both keys that a refresh asks for, too, and later ones: the answer to the refresh would end it, and
/// say nothing of those.
template <class K, class V>
void LazyLoader<K, V>::performRequestAll()
{
    m_requestScheduled = false;
    m_batchRetry.start();
    QList<K> keys;
    keys.reserve(m_batchLimit);
    m_inFlight.reserve(m_batchLimit);
    while (!m_pending.isEmpty() && keys.size() < m_batchLimit) {
        if (!keys.isEmpty() && m_pending.constFirst()->refreshes != m_inFlight.constFirst()->refreshes)
            break;
        EntryPointer entry = m_pending.takeFirst();
        if (entry->progress() != Progress::Waiting)
            continue;
        entry->setProgress(Progress::InFlight);
        keys.append(entry->key);
        m_inFlight.append(std::move(entry));
    }
    if (m_pending.isEmpty())
        m_pending = {}; // gives back what so many keys took
    if (keys.isEmpty())
        return m_batchRetry.stop();
    m_requestScheduled = true;
    m_due.append(Request::Batch);
    load(keys);
}

template <class K, class V>
void LazyLoader<K, V>::load(const QList<K>& keys)
{
    // Called last and as a copy: the function may drop the loader.
    const LoadFunction function = m_loadFunction;
    const auto isLoading = m_isLoading;
    const QScopedValueRollback<bool> loading(*isLoading, true);
    function(keys);
}

template <class K, class V>
void LazyLoader<K, V>::repeatBatch()
{
    if (m_inFlight.isEmpty()) { // there was no memory for a request
        m_batchRetry.stop();
        return requestAll();
    }
    QList<K> unanswered;
    for (const EntryPointer& entry : std::as_const(m_inFlight)) {
        if (entry->progress() == Progress::InFlight)
            unanswered.append(entry->key);
    }
    if (unanswered.isEmpty())
        endArrivedBatch();
    else
        load(unanswered);
}

template <class K, class V>
void LazyLoader<K, V>::endArrivedBatch()
{
    const auto isAwaited = [](const EntryPointer& each) { return each->progress() == Progress::InFlight; };
    if (m_inFlight.isEmpty() || std::any_of(m_inFlight.cbegin(), m_inFlight.cend(), isAwaited))
        return;
    m_due.removeOne(Request::Batch);
    end(takeBatch());
}

template <class K, class V>
void LazyLoader<K, V>::updateDone()
{
    end(takeAnswered(Answer::OfBatch));
}

template <class K, class V>
void LazyLoader<K, V>::end(const Batch& answered)
{
    detail::FirstException thrown;
    thrown.guard([this] { requestAll(); });
    thrown.guard([&] { settle(answered); });
    thrown.rethrow();
}

template <class K, class V>
auto LazyLoader<K, V>::takeAnswered(Answer answer) -> Batch
{
    qsizetype ended = 0;
    if (answer == Answer::OfBatch)
        ended = m_due.indexOf(Request::Batch) + 1;
    else if (answer == Answer::Nothing && !m_due.isEmpty())
        ended = 1;
    else if (answer == Answer::Nothing)
        endRefresh(); // what was left out is not there
    Batch answered;
    for (; ended > 0; --ended) {
        if (m_due.first() == Request::Refresh) {
            endRefresh();
            continue;
        }
        m_due.remove(0);
        answered = takeBatch();
    }
    return answered;
}

template <class K, class V>
auto LazyLoader<K, V>::takeBatch() -> Batch
{
    m_batchRetry.stop();
    m_requestScheduled = false;
    return std::exchange(m_inFlight, {});
}

template <class K, class V>
void LazyLoader<K, V>::requestNext()
{
    if (!m_requestScheduled && !*m_isLoading && isBatchWaiting())
        performRequestAll();
    else
        requestAll();
}

template <class K, class V>
void LazyLoader<K, V>::settle(const Batch& answered)
{
    detail::FirstException thrown;
    for (const EntryPointer& each : answered) {
        if (each->progress() == Progress::InFlight)
            thrown.guard([&] { m_outdated.insert(each->key); });
        each->setProgress(Progress::Settled);
    }
    if (!m_outdated.isEmpty() && !m_refreshRetry.isActive())
        thrown.guard([this] { m_refreshRetry.start(); });
    for (const EntryPointer& each : answered)
        thrown.guard([&each] { each->notifyObservers(); });
    thrown.rethrow();
}

template <class K, class V>
void LazyLoader<K, V>::refresh()
{
    forgetRequests();
    ++m_refreshes;
    // It goes out, whatever there is no memory for: at the worst it is not repeated.
    detail::FirstException thrown;
    thrown.guard([this] {
        for (const EntryPointer& each : std::as_const(m_entries)) {
            if (each->progress() >= Progress::Arrived)
                m_outdated.insert(each->key);
        }
    });
    if (m_inFlight.isEmpty()) {
        thrown.guard([this] { requestAll(); });
    } else {
        m_due.append(Request::Batch);
        thrown.guard([this] { m_batchRetry.start(); });
    }
    m_due.append(Request::Refresh);
    if (!m_outdated.isEmpty())
        thrown.guard([this] { m_refreshRetry.start(); });
    thrown.guard([this] { load(keys()); });
    thrown.rethrow();
}

template <class K, class V>
void LazyLoader<K, V>::repeatRefresh()
{
    QList<K> keys = m_outdated.values();
    if (keys.size() > RepeatLimit) {
        m_repeated = (m_repeated + RepeatLimit) % keys.size();
        std::rotate(keys.begin(), keys.begin() + m_repeated, keys.end());
        keys.resize(RepeatLimit);
    }
    load(keys);
}

template <class K, class V>
void LazyLoader<K, V>::endRefresh()
{
    m_due.removeOne(Request::Refresh);
    m_outdated.clear();
    m_refreshRetry.stop();
}

template <class K, class V>
void LazyLoader<K, V>::forgetRequests()
{
    m_due.clear();
    m_outdated.clear();
    m_batchRetry.stop();
    m_refreshRetry.stop();
}

/// Whether the keys that wait, those left out that need no request any more, fill one.
template <class K, class V>
bool LazyLoader<K, V>::isBatchWaiting() const
{
    int count = 0;
    for (auto waiting = m_pending.cbegin(); waiting != m_pending.cend() && count < m_batchLimit; ++waiting)
        count += (*waiting)->progress() == Progress::Waiting;
    return count == m_batchLimit;
}

} // namespace iface
