// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QHash>
#include <QtCore/QScopeGuard>

namespace vx::platform::zel {

/// What is being told, by what it is about. A slot may spin an event loop in which there is news of the same: of two
/// announcements that nest, the outer one reaches the last of its slots after the inner one, with what is no longer
/// true. Slots take what was told last from here.
template <class Key, class News>
class ToldLast
{
public:
    /// To be asked while something is being told.
    News of(const Key& key) const { return m_news.value(key); }

    /// Calls `announce`, which may throw.
    template <class Announce>
    void tell(const Key& key, const News& news, Announce announce)
    {
        m_news.insert(key, news);
        ++m_depth;
        const auto end = qScopeGuard([this] {
            if (--m_depth == 0)
                m_news.clear();
        });
        announce();
    }

private:
    QHash<Key, News> m_news;
    int m_depth = 0;
};

} // namespace vx::platform::zel
