// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QCollator>
#include <QtCore/QList>
#include <QtCore/QSharedData>
#include <QtCore/QString>

#include <algorithm>
#include <optional>
#include <vector>

namespace vx::platform::zel {

/// By what people are in order: the name as the locale has it, and for one name the handle.
struct Key
{
    QCollatorSortKey name;
    QString handle;

    int compare(const Key& other) const
    {
        const int byName = name.compare(other.name);
        return byName != 0 ? byName : handle.compare(other.handle);
    }
};

/// A row of the source model. Whoever is at work on it holds it while slots run, in which it may go.
struct Person : QSharedData
{
    int row = -1;           ///< in the source model; -1 when it is gone from there
    std::optional<Key> key; ///< while it is shown: that of the place where it is, not of what its source says by now
};
using PersonPointer = QExplicitlySharedDataPointer<Person>;
using People = QList<PersonPointer>;

/// Those who are shown, in order. The free room is where the last change was, so that all changes of a sweep together
/// cost no more than one of them.
class ContactOrder
{
public:
    int count() const { return int(m_people.size()) - m_free; }
    Person* at(int place) const { return m_people[size_t(place < m_gap ? place : place + m_free)]; }

    void insert(int place, Person* person) { *room(place, 1) = person; }
    /// Where to put \a count of them.
    Person** room(int place, int count)
    {
        openAt(place);
        if (m_free < count) {
            const int more = count + this->count() / 2;
            m_people.insert(m_people.begin() + m_gap, size_t(more), nullptr);
            m_free += more;
        }
        m_gap += count;
        m_free -= count;
        return m_people.data() + place;
    }
    void remove(int place, int count)
    {
        openAt(place);
        m_free += count;
    }
    void clear()
    {
        m_people.clear();
        m_gap = m_free = 0;
    }

private:
    void openAt(int place)
    {
        const auto begin = m_people.begin();
        if (place < m_gap)
            std::move_backward(begin + place, begin + m_gap, begin + m_gap + m_free);
        else
            std::move(begin + m_gap + m_free, begin + place + m_free, begin + m_gap);
        m_gap = place;
    }

    std::vector<Person*> m_people;
    int m_gap = 0; ///< the place before which the free room is
    int m_free = 0;
};

} // namespace vx::platform::zel
