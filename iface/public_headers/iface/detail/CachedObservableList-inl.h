// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace iface {

template <class T>
CachedObservableList<T>::CachedObservableList()
    : m_addFunction([](int, const T&) {})
    , m_removeFunction([](int, const T&) {})
    , m_updateFunction([](int, const T&, const T&) {})
    , m_changeFunction([](ChangeType::Type, const QSharedPointer<IndexMapper>&, const QList<T>&, const QList<T>&) {})
{
}

template <class T>
void CachedObservableList<T>::setInput(const ObservableList<T>& input)
{
    // The old input goes at the end: nobody is called while this is half done.
    const auto before = this->input();
    follow(input.impl());
    reset();
}

template <class T>
QList<T> CachedObservableList<T>::toList() const
{
    ObservableTracker::getterCalled(this);
    catchUp();
    return m_copy;
}

template <class T>
QVariant CachedObservableList<T>::item(int index) const
{
    return index < m_copy.size() ? QVariant::fromValue(m_copy.at(index)) : QVariant();
}

template <class T>
void CachedObservableList<T>::take(const Change& change)
{
    TakenOver taken{fitting(change, count()), {}, {}, {}, {}};
    if (!applyToCopy(taken))
        return; // reading the input changed it: everything is read again
    m_untold.push_back(std::move(taken));
    note(m_untold.back().change,
         [](ObservableImpl& list) { static_cast<CachedObservableList&>(list).callFunctions(); });
}

template <class T>
bool CachedObservableList<T>::applyToCopy(TakenOver& taken)
{
    const int index = taken.change.index;
    if (taken.change.kind == Change::Removed) {
        taken.itemBefore = m_copy.takeAt(index);
        return true;
    }
    const ObservableList<T> input(this->input());
    if (taken.change.kind == Change::Added || taken.change.kind == Change::Updated) {
        taken.itemAfter = input[index];
        if (isOvertaken())
            return false;
        if (taken.change.kind == Change::Added)
            m_copy.insert(index, *taken.itemAfter);
        else
            taken.itemBefore = std::exchange(m_copy[index], *taken.itemAfter);
        return true;
    }
    taken.after = input.toList();
    if (isOvertaken())
        return false;
    taken.before = std::exchange(m_copy, taken.after);
    return true;
}

/// The first exception goes on when all have been called. A function may make changes, which add to what is untold and
/// may well be told before it returns; and it may be what destroys a list that nobody counts.
template <class T>
void CachedObservableList<T>::callFunctions()
{
    const Hold hold(*this);
    detail::FirstException thrown;
    while (hold.isAlive() && !m_untold.empty()) {
        const TakenOver taken = std::move(m_untold.front());
        m_untold.erase(m_untold.begin());
        thrown.guard([&] { callFunction(taken); });
    }
    thrown.rethrow();
}

template <class T>
void CachedObservableList<T>::callFunction(const TakenOver& taken) const
{
    // Copies: a function may set another in its place.
    switch (taken.change.kind) {
    case Change::Added:
        return ItemFunction(m_addFunction)(taken.change.index, *taken.itemAfter);
    case Change::Updated:
        return UpdateFunction(m_updateFunction)(taken.change.index, *taken.itemBefore, *taken.itemAfter);
    case Change::Removed:
        return ItemFunction(m_removeFunction)(taken.change.index, *taken.itemBefore);
    default:
        return ChangeFunction(m_changeFunction)(taken.change.type(), taken.change.mapper, taken.before, taken.after);
    }
}

} // namespace iface
