// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QScopedValueRollback>

#include <algorithm>

namespace iface {

template <class T>
CachedObservableList<T>::CachedObservableList()
    : m_inputObserver(this)
    , m_addFunction([](int, const T&) {})
    , m_removeFunction([](int, const T&) {})
    , m_updateFunction([](int, const T&, const T&) {})
    , m_changeFunction([](ChangeType::Type, const QSharedPointer<IndexMapper>&, const QList<T>&, const QList<T>&) {})
{
}

template <class T>
void CachedObservableList<T>::setInput(const ObservableList<T>& input)
{
    // The old input goes at the end: nobody is called while this is half done.
    const ObservableList<T> before = std::exchange(m_input, input);
    m_inputObserver.follow(m_input.impl());
    resynchronise();
}

template <class T>
int CachedObservableList<T>::childCount(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() ? int(m_cache.size()) : 0;
}

template <class T>
bool CachedObservableList<T>::hasChildren(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() && !m_cache.isEmpty();
}

template <class T>
QVariant CachedObservableList<T>::data(const QVariantList& indexPath) const
{
    return itemAt(indexOfPath(indexPath));
}

template <class T>
QVariant CachedObservableList<T>::itemAt(int index) const
{
    return index >= 0 && index < m_cache.size() ? QVariant::fromValue(m_cache.at(index)) : QVariant();
}

template <class T>
void CachedObservableList<T>::takeIn(const ListChange& change, bool isNext)
{
    if (!isNext)
        return resynchronise();
    switch (change.kind) {
    case ListChange::ItemAdded:
        return handleRowItemAdded(change.index);
    case ListChange::ItemUpdated:
        return handleRowItemUpdated(change.index);
    case ListChange::ItemRemoved:
        return handleRowItemRemoved(change.index);
    case ListChange::ItemsChanged:
        return handleRowItemsChanged(change.type, change.mapper);
    }
}

template <class T>
void CachedObservableList<T>::handleRowItemAdded(int index)
{
    const Announcement announcement(*this);
    if (!begin(index, 1))
        return resynchronise();
    const std::optional<T> item = read(index);
    if (!item)
        return resynchronise();
    m_cache.insert(index, *item);
    tellAndAnnounce(announcement, {&CachedObservableList::fireItemAdded, index, {}, {}},
                    [&] { m_addFunction(index, *item); });
}

template <class T>
void CachedObservableList<T>::handleRowItemUpdated(int index)
{
    const Announcement announcement(*this);
    if (!begin(index, 0))
        return resynchronise();
    const std::optional<T> item = read(index);
    if (!item)
        return resynchronise();
    const T before = std::exchange(m_cache[index], *item);
    tellAndAnnounce(announcement, {&CachedObservableList::fireItemUpdated, index, {}, {}},
                    [&] { m_updateFunction(index, before, *item); });
}

template <class T>
void CachedObservableList<T>::handleRowItemRemoved(int index)
{
    const Announcement announcement(*this);
    if (!begin(index, -1))
        return resynchronise();
    const T item = m_cache.takeAt(index);
    tellAndAnnounce(announcement, {&CachedObservableList::fireItemRemoved, index, {}, {}},
                    [&] { m_removeFunction(index, item); });
}

template <class T>
void CachedObservableList<T>::handleRowItemsChanged(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    const Announcement announcement(*this);
    const bool isNext = settle();
    // Reading the input may change it, or set another, and so lead here again; what counts is what was read last.
    constexpr int MaximumRounds = 16;
    QList<T> now;
    int changesBegun = -1;
    int rounds = 0;
    for (; rounds < MaximumRounds && changesBegun != m_changesBegun; ++rounds) {
        const QScopedValueRollback<bool> takingIn(m_isTakingIn, true);
        changesBegun = ++m_changesBegun;
        const ObservableList<T> input = m_input;
        now = ObservableTracker::runUntracked([&input] { return input.toList(); });
    }
    Change change{nullptr, -1, type, mapper};
    if (!isNext || rounds > 1)
        change = Change{};
    const QList<T> before = std::exchange(m_cache, now);
    tellAndAnnounce(announcement, change, [&] { m_changeFunction(change.type, change.mapper, before, now); });
}

/// Announces what is outstanding. Tells whether the change at hand follows what the copy shows: not so if another one
/// was made in answer to that, or is itself waiting to be taken in. What an observer throws meanwhile goes on only when
/// the change at hand has been taken in.
template <class T>
bool CachedObservableList<T>::settle()
{
    const int changesBegun = m_changesBegun;
    const QScopedValueRollback<bool> takingIn(m_isTakingIn);
    const bool isFirst = !std::exchange(m_isTakingIn, true);
    try {
        announceOutstanding();
    } catch (...) {
        m_thrown = std::current_exception();
    }
    return changesBegun == m_changesBegun++ && isFirst;
}

/// Whether the change of one item fits what the copy knows: not so when another change was heard of before it.
template <class T>
bool CachedObservableList<T>::begin(int index, int growth)
{
    if (!settle())
        return false;
    const int length = m_input.impl() ? m_input.impl()->childCount(QVariantList()) : 0;
    return index >= 0 && index < std::max(length, int(m_cache.size())) && length == m_cache.size() + growth;
}

/// The input's item, or nothing when reading it changed the list.
template <class T>
std::optional<T> CachedObservableList<T>::read(int index)
{
    const QScopedValueRollback<bool> takingIn(m_isTakingIn, true);
    const int changesBegun = m_changesBegun;
    const ObservableList<T> input = m_input;
    T item = ObservableTracker::runUntracked([&] { return input[index]; });
    return changesBegun == m_changesBegun ? std::optional<T>(std::move(item)) : std::nullopt;
}

template <class T>
template <class Call>
void CachedObservableList<T>::tellAndAnnounce(const Announcement& announcement, Change change, Call call)
{
    const std::exception_ptr thrown = std::exchange(m_thrown, nullptr);
    m_outstanding = std::move(change);
    try {
        call();
    } catch (...) {
        if (announcement.isAlive())
            announceOutstanding();
        throw;
    }
    if (announcement.isAlive())
        announceOutstanding();
    if (thrown)
        std::rethrow_exception(thrown);
}

template <class T>
void CachedObservableList<T>::announceOutstanding()
{
    if (!m_outstanding)
        return;
    const Change change = *std::exchange(m_outstanding, std::nullopt);
    if (change.fire)
        (this->*change.fire)(change.index);
    else
        fireItemsChanged(change.type, change.mapper);
}

} // namespace iface
