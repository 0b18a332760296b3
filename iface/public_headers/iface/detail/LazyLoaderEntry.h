// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LazyLoaderValue.h>
#include <iface/detail/KeyIndex.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QSharedData>

#include <optional>
#include <utility>

namespace iface::detail {

/// One key's contents and how far they have come; small, because there is one per key.
template <class K, class V>
class LazyLoaderEntry : public QSharedData, public KeyHook
{
public:
    using Value = LazyLoaderValue<K, V>;

    enum class Progress : quint8 {
        Waiting,  ///< to be requested
        InFlight, ///< in the request under way, or in one whose answer is being stored
        Arrived,  ///< the same, and its contents have been stored
        Settled
    };

    LazyLoaderEntry(const K& itsKey, const V& contents, int refreshesBefore)
        : key(itsKey)
        , refreshes(refreshesBefore)
        , m_contents(contents)
    {
    }

    const K key;
    const int refreshes; ///< how many there were before it was asked for

    const V& contents() const { return m_contents; }
    Progress progress() const { return m_progress; }
    Value* value()
    {
        if (!m_value) {
            m_value = QExplicitlySharedDataPointer<Value>(new Value(m_contents));
            setProgress(m_progress);
        }
        return m_value.data();
    }

    void setProgress(Progress progress)
    {
        m_progress = progress;
        if (m_value)
            m_value->m_state = progress == Progress::Settled ? Value::Settled : Value::Requested;
    }
    bool isShown() const { return m_value; }
    /// Answers whether they differ from what was there. Observers of the value have been told then. A copy is `shown`
    /// by the value where there is one.
    bool setContents(V contents, std::optional<V> shown)
    {
        if (m_contents == contents)
            return false;
        const V before = std::exchange(m_contents, std::move(contents)); // goes last: that may run anything
        if (shown)
            m_value->setValue(std::move(*shown));
        return true;
    }
    void notifyObservers()
    {
        if (m_value)
            m_value->notifyObservers();
    }

private:
    V m_contents;
    QExplicitlySharedDataPointer<Value> m_value;
    Progress m_progress = Progress::Waiting;
};

} // namespace iface::detail
