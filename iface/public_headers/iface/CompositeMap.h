// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/LightObserver.h>
#include <iface/ObservableMap.h>

#include <utility>

namespace iface {

/// A map through two maps: keys to what the first has for them, and that to what the second has for it.
///
/// It holds both maps for its whole life. A change of the first is its own change, under the same keys. The keys of the
/// second cannot be translated back, so a change there is announced without keys: plain observers alone hear of it.
template <class K, class M, class V>
class CompositeMap : public ObservableMapImpl<K, V>
{
public:
    static ObservableMap<K, V> create(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second);

    V get(const K& key) const override { return m_second.get(m_first.get(key)); }
    bool equals(const V& a, const V& b) const override;

private:
    class FirstObserver : public LightObserver
    {
    public:
        explicit FirstObserver(CompositeMap* owner)
            : m_owner(owner)
        {
        }

    protected:
        void observableChanged() override {}
        void keysChanged(const ChangedKeys& keys) override { m_owner->fireChangedKeys(keys); }

    private:
        CompositeMap* const m_owner;
    };

    class SecondObserver : public LightObserver
    {
    public:
        explicit SecondObserver(CompositeMap* owner)
            : m_owner(owner)
        {
        }

    protected:
        void observableChanged() override { m_owner->fireMapChanged(MapChange()); }

    private:
        CompositeMap* const m_owner;
    };

    CompositeMap(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second);

    const ObservableMap<K, M> m_first;
    const ObservableMap<M, V> m_second;
    FirstObserver m_firstObserver;
    SecondObserver m_secondObserver;
};

template <class K, class M, class V>
ObservableMap<K, V> CompositeMap<K, M, V>::create(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second)
{
    return ObservableMap<K, V>(new CompositeMap(first, second));
}

template <class K, class M, class V>
CompositeMap<K, M, V>::CompositeMap(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second)
    : m_first(first)
    , m_second(second)
    , m_firstObserver(this)
    , m_secondObserver(this)
{
    if (m_first.impl())
        m_firstObserver.observe(*m_first.impl());
    if (m_second.impl())
        m_secondObserver.observe(*m_second.impl());
}

template <class K, class M, class V>
bool CompositeMap<K, M, V>::equals(const V& a, const V& b) const
{
    return m_second.impl() ? m_second.impl()->equals(a, b) : iEqual<V>()(a, b);
}

} // namespace iface
