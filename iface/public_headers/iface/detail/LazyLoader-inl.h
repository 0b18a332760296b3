// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyLoader.h>

namespace iface {

template <class K, class V>
LazyLoader<K, V>::LazyLoader(LoadFunction loadFunction, V defaultValue, int batchLimit)
    : m_loadFunction(std::move(loadFunction))
    , m_defaultValue(std::move(defaultValue))
    , m_batchLimit(batchLimit)
    , m_retry([this] { repeatRequest(); })
{
}

template <class K, class V>
auto LazyLoader<K, V>::create(const K& key) -> ValuePointer
{
    ValuePointer created(new Value(m_defaultValue));
    m_values.insert(key, created);
    return created;
}

template <class K, class V>
ObservableValue<V> LazyLoader<K, V>::getObservableValue(const K& key)
{
    ValuePointer found = m_values.value(key);
    if (!found) {
        found = create(key);
        m_pending.append({key, found});
        requestAll();
    }
    return ObservableValue<V>(found.data());
}

template <class K, class V>
bool LazyLoader<K, V>::store(const K& key, const V& contents)
{
    ValuePointer found = m_values.value(key);
    if (!found)
        found = create(key);
    found->m_stored = true;
    // Contents that come for a key in flight settle with their request; a key that still waits need not be requested.
    const bool settles = found->m_state == Value::Requested && !found->m_inFlight;
    if (settles)
        found->m_state = Value::Settled;
    const bool changed = found->setValue(contents);
    if (settles && !changed)
        found->notifyObservers();
    return changed;
}

template <class K, class V>
bool LazyLoader<K, V>::isLoaded(const K& key) const
{
    const Value* found = value(key);
    return found && (found->m_stored || found->m_state == Value::Settled);
}

template <class K, class V>
void LazyLoader<K, V>::requestAll()
{
    if (m_requestScheduled || m_pending.isEmpty())
        return;
    m_requestScheduled = true;
    m_realm.asyncExec([this] { performRequestAll(); });
}

template <class K, class V>
void LazyLoader<K, V>::performRequestAll()
{
    m_inFlight.clear();
    QList<K> keys;
    while (!m_pending.isEmpty() && m_inFlight.size() < m_batchLimit) {
        const Waiting waiting = m_pending.takeFirst();
        if (waiting.value->m_state != Value::Requested)
            continue;
        waiting.value->m_inFlight = true;
        m_inFlight.append(waiting);
        keys.append(waiting.key);
    }
    if (m_pending.isEmpty())
        m_pending = {}; // gives back what so many keys took
    if (m_inFlight.isEmpty()) {
        m_requestScheduled = false;
        return;
    }
    m_retry.start();
    load(keys);
}

template <class K, class V>
void LazyLoader<K, V>::load(const QList<K>& keys)
{
    // Called last and as a copy: the function may drop the loader.
    const LoadFunction function = m_loadFunction;
    function(keys);
}

template <class K, class V>
void LazyLoader<K, V>::repeatRequest()
{
    QList<K> unanswered;
    for (const Waiting& waiting : std::as_const(m_inFlight)) {
        if (!waiting.value->m_stored)
            unanswered.append(waiting.key);
    }
    // Everything has come but for the end of the answer.
    if (unanswered.isEmpty())
        updateDone();
    else
        load(unanswered);
}

template <class K, class V>
void LazyLoader<K, V>::updateDone()
{
    if (m_inFlight.isEmpty())
        return;
    m_retry.stop();
    m_answered += std::exchange(m_inFlight, {});
    m_requestScheduled = false;
    requestAll();
    answerStored();
}

template <class K, class V>
bool LazyLoader<K, V>::requestNext()
{
    if (m_inFlight.isEmpty() || !isBatchWaiting())
        return false;
    m_answered += std::exchange(m_inFlight, {});
    performRequestAll();
    return true;
}

template <class K, class V>
void LazyLoader<K, V>::answerStored()
{
    QList<Waiting> answered = std::exchange(m_answered, {});
    for (const Waiting& each : std::as_const(answered))
        each.value->m_inFlight = false;
    answered.removeIf([](const Waiting& each) { return each.value->m_state != Value::Requested; });
    for (const Waiting& each : std::as_const(answered))
        each.value->m_state = Value::Settled;
    for (const Waiting& each : std::as_const(answered))
        each.value->notifyObservers();
}

template <class K, class V>
void LazyLoader<K, V>::answerLost()
{
    for (const Waiting& each : std::exchange(m_answered, {})) {
        each.value->m_inFlight = false;
        if (each.value->m_stored)
            each.value->m_state = Value::Settled;
        else
            m_pending.append(each);
    }
    requestAll();
}

/// Whether the keys that wait, those left out that need no request any more, fill one.
template <class K, class V>
bool LazyLoader<K, V>::isBatchWaiting() const
{
    int count = 0;
    for (auto waiting = m_pending.cbegin(); waiting != m_pending.cend() && count < m_batchLimit; ++waiting)
        count += waiting->value->m_state == Value::Requested;
    return count == m_batchLimit;
}

} // namespace iface
