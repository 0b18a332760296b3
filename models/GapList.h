// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

namespace vx::platform::zel {

/// A list whose free room is where the last change was, so that all changes of a sweep together cost no more than one
/// of them.
template <typename T>
class GapList
{
public:
    /// How many items there are.
    int count() const { return int(m_items.size()) - m_free; }
    /// The item at a place that there is.
    const T& at(int place) const { return m_items[slot(place)]; }
    /// The same, to be changed.
    T& operator[](int place) { return m_items[slot(place)]; }

    /// The first place from \a from on of which \a isBefore is no longer true.
    template <typename IsBefore>
    int firstNot(IsBefore isBefore, int from = 0) const
    {
        for (int end = count(); from < end;) {
            const int middle = from + (end - from) / 2;
            if (isBefore(at(middle)))
                from = middle + 1;
            else
                end = middle;
        }
        return from;
    }

    /// \a count new items from \a place on, which are for the caller to set.
    std::span<T> insert(int place, int count)
    {
        openAt(place);
        if (m_free < count) {
            const int more = count + this->count() / 2;
            m_items.insert(m_items.begin() + m_gap, size_t(more), T());
            m_free += more;
        }
        m_gap += count;
        m_free -= count;
        return {m_items.begin() + place, size_t(count)};
    }
    /// Takes \a count items out from \a place on.
    void remove(int place, int count)
    {
        openAt(place);
        std::fill_n(m_items.begin() + place + m_free, count, T());
        m_free += count;
    }
    /// Takes one item from one place to another.
    void move(int from, int to)
    {
        T item = std::move((*this)[from]);
        remove(from, 1);
        insert(to, 1)[0] = std::move(item);
    }
    /// Takes all out.
    void clear() { *this = {}; }

    /// The place before which the free room is.
    int gap() const { return m_gap; }
    /// Has the free room before \a place.
    void openAt(int place)
    {
        const auto begin = m_items.begin();
        if (place < m_gap)
            std::move_backward(begin + place, begin + m_gap, begin + m_gap + m_free);
        else
            std::move(begin + m_gap + m_free, begin + place + m_free, begin + m_gap);
        m_gap = place;
    }

private:
    size_t slot(int place) const { return size_t(place < m_gap ? place : place + m_free); }

    std::vector<T> m_items;
    int m_gap = 0;
    int m_free = 0;
};

} // namespace vx::platform::zel
