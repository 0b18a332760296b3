// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/Follower.h>
#include <iface/ObservableMap.h>

#include <utility>

namespace iface {

/// A map through two maps: keys to what the first has for them, and that to what the second has for it.
///
/// It holds both maps for its whole life, and itself while it is asked: they may drop the last handle of it. A change
/// of the first is its own change, under the same keys or without. The keys of the second cannot be translated back, so
/// a change there is announced without keys: plain observers alone hear of it.
template <class K, class M, class V>
class CompositeMap : public ObservableMapImpl<K, V>
{
public:
    static ObservableMap<K, V> create(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second)
    {
        return ObservableMap<K, V>(new CompositeMap(first, second));
    }

    V get(const K& key) const override;
    bool equals(const V& a, const V& b) const override;

private:
    class Inner : public Follower
    {
    public:
        Inner(CompositeMap* owner, bool isFirst)
            : m_owner(owner)
            , m_isFirst(isFirst)
        {
        }

    protected:
        void mark(const Change& change) override { m_owner->note(m_isFirst ? change : Change{Change::Plain}); }

    private:
        CompositeMap* const m_owner;
        const bool m_isFirst;
    };

    CompositeMap(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second);

    const ObservableMap<K, M> m_first;
    const ObservableMap<M, V> m_second;
    Inner m_firstFollower{this, true};
    Inner m_secondFollower{this, false};
};

template <class K, class M, class V>
CompositeMap<K, M, V>::CompositeMap(const ObservableMap<K, M>& first, const ObservableMap<M, V>& second)
    : m_first(first)
    , m_second(second)
{
    if (m_first.impl())
        m_firstFollower.follow(*m_first.impl());
    if (m_second.impl())
        m_secondFollower.follow(*m_second.impl());
}

template <class K, class M, class V>
V CompositeMap<K, M, V>::get(const K& key) const
{
    const typename CompositeMap::Hold hold(*this); // a map that is asked may drop the last handle
    return m_second.get(m_first.get(key));
}

template <class K, class M, class V>
bool CompositeMap<K, M, V>::equals(const V& a, const V& b) const
{
    return m_second.impl() ? m_second.impl()->equals(a, b) : iEqual<V>()(a, b);
}

} // namespace iface
