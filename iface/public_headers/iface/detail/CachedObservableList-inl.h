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

// What is read of the input may change it, and then everything is read again. A function is called as a copy, since it
// may set another in its place.
template <class T>
void CachedObservableList<T>::take(const Change& noted)
{
    const Change change = fitting(noted, count());
    const int index = change.index;
    if (change.kind == Change::Removed) {
        return noteWith(change,
                        [this, index, item = m_copy.takeAt(index)] { ItemFunction{m_removeFunction}(index, item); });
    }
    const ObservableList<T> input(this->input());
    if (change.kind == Change::Added || change.kind == Change::Updated) {
        const T item = input[index];
        if (isOvertaken())
            return;
        if (change.kind == Change::Added) {
            m_copy.insert(index, item);
            return noteWith(change, [this, index, item] { ItemFunction{m_addFunction}(index, item); });
        }
        return noteWith(change, [this, index, before = std::exchange(m_copy[index], item), item] {
            UpdateFunction{m_updateFunction}(index, before, item);
        });
    }
    const QList<T> items = input.toList();
    if (isOvertaken())
        return;
    noteWith(change, [this, change, before = std::exchange(m_copy, items), items] {
        ChangeFunction{m_changeFunction}(change.type(), change.mapper, before, items);
    });
}

template <class T>
void CachedObservableList<T>::noteWith(const Change& change, boost::function<void()> call)
{
    m_calls.push_back(std::move(call));
    note(change, [](ObservableImpl& list) { static_cast<CachedObservableList&>(list).callFunctions(); });
}

/// The first exception goes on when all have been called. A function may make changes, which add to what is to be
/// called and may well be told before it returns; and it may be what destroys a list that nobody counts.
template <class T>
void CachedObservableList<T>::callFunctions()
{
    const Hold hold(*this);
    detail::FirstException thrown;
    while (hold.isAlive() && !m_calls.empty()) {
        const boost::function<void()> call = std::move(m_calls.front());
        m_calls.erase(m_calls.begin());
        thrown.guard(call);
    }
    thrown.rethrow();
}

} // namespace iface
