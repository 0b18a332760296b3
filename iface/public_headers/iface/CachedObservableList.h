// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableList.h>
#include <iface/detail/DerivedList.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QList>

#include <boost/function.hpp>

#include <list>
#include <utility>

namespace iface {

/// A full copy of an input list, with functions that are called with old and new contents before each announcement.
///
/// It starts without an input, empty, and holds the one it is given until the next. Each change of the input is taken
/// over before anybody is told of it (see Round), told to the matching function (which does nothing unless one is set)
/// and then announced just as the input announced it; reading answers from the copy.
///
/// The functions are called once for every change that was taken over, in order, though changes of which nobody had
/// been told yet are announced as one: those made in a round of their own by a function, say, or by whoever heard of
/// the change before this list announced it. A function may do whatever an observer may. When it throws (an empty one
/// throws `boost::bad_function_call`) the change is announced, and then the exception goes on. An item that throws when
/// it is read of the input is a default-made one here until its next change. One thread.
template <class T>
class CachedObservableList : public detail::DerivedList
{
public:
    using ItemFunction = boost::function<void(int, const T&)>;
    /// Gets the index, the old item, the new one.
    using UpdateFunction = boost::function<void(int, const T&, const T&)>;
    /// Gets the old contents, then the new ones.
    using ChangeFunction = boost::function<void(ChangeType::Type, QSharedPointer<IndexMapper>, QList<T>, QList<T>)>;

    CachedObservableList();
    explicit CachedObservableList(const ObservableList<T>& input)
        : CachedObservableList()
    {
        setInput(input);
    }
    ~CachedObservableList() override { close(); }

    /// Replaces the content: a change of kind Reset. A handle on nothing makes the list empty.
    void setInput(const ObservableList<T>& input);

    void setAddFunction(ItemFunction function) { m_addFunction = std::move(function); }
    void setRemoveFunction(ItemFunction function) { m_removeFunction = std::move(function); }
    void setUpdateFunction(UpdateFunction function) { m_updateFunction = std::move(function); }
    void setChangeFunction(ChangeFunction function) { m_changeFunction = std::move(function); }

    /// The copy, which costs nothing for each item; a read that is tracked.
    QList<T> toList() const;

private:
    /// A change that the copy shows, as the function for it is told.
    struct Taken
    {
        Change change;
        T before = T(); ///< of an item
        T after = T();
        QList<T> allBefore = {}; ///< of a wholesale change
        QList<T> all = {};
    };

    int count() const override { return int(m_copy.size()); }
    QVariant item(int index) const override;
    void take(const Change& change) override;
    T read(const ObservableList<T>& input, int index);
    QList<T> readAll(const ObservableList<T>& input);
    void noteTaken(Taken taken);
    void callFunctions();
    void callFunction(const Taken& taken);

    QList<T> m_copy;
    std::list<Taken> m_untold; ///< to the functions; nodes, since what copies an item may run anything
    ItemFunction m_addFunction;
    ItemFunction m_removeFunction;
    UpdateFunction m_updateFunction;
    ChangeFunction m_changeFunction;
};

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
    const auto hold = this->catchUp();
    return m_copy;
}

template <class T>
QVariant CachedObservableList<T>::item(int index) const
{
    return index < m_copy.size() ? QVariant::fromValue(m_copy.at(index)) : QVariant();
}

// What is read of the input may change it, and then everything is read again.
template <class T>
void CachedObservableList<T>::take(const Change& noted)
{
    const Change change = fitting(noted, count());
    const int index = change.index;
    if (change.kind == Change::Removed)
        return noteTaken({change, m_copy.takeAt(index)});
    const ObservableList<T> input(this->input());
    if (change.kind == Change::Added || change.kind == Change::Updated) {
        const T item = read(input, index);
        if (isOvertaken())
            return;
        if (change.kind == Change::Updated)
            return noteTaken({change, std::exchange(m_copy[index], item), item});
        m_copy.insert(index, item);
        return noteTaken({change, T(), item});
    }
    const QList<T> items = readAll(input);
    if (!isOvertaken())
        noteTaken({change, T(), T(), std::exchange(m_copy, items), items});
}

/// An item that throws when it is read is a default one here, until the input says that it is another.
template <class T>
T CachedObservableList<T>::read(const ObservableList<T>& input, int index)
{
    try {
        return input[index];
    } catch (...) {
        this->itemThrew();
        return T();
    }
}

template <class T>
QList<T> CachedObservableList<T>::readAll(const ObservableList<T>& input)
{
    const int count = this->inputCount();
    QList<T> items;
    items.reserve(count);
    for (int i = 0; i < count && !this->isOvertaken(); ++i)
        items.append(read(input, i));
    return items;
}

template <class T>
void CachedObservableList<T>::noteTaken(Taken taken)
{
    m_untold.push_back(std::move(taken));
    note(m_untold.back().change,
         [](ObservableImpl& list) { static_cast<CachedObservableList&>(list).callFunctions(); });
}

/// The first exception goes on when all have been called. A function may make changes, which add to what is to be
/// called and may well be told before it returns; and it may be what destroys a list that nobody counts.
template <class T>
void CachedObservableList<T>::callFunctions()
{
    const Hold hold(*this);
    detail::FirstException thrown;
    while (hold.isAlive() && !m_untold.empty()) {
        std::list<Taken> told;
        told.splice(told.begin(), m_untold, m_untold.begin());
        thrown.guard([&] { callFunction(told.front()); });
    }
    thrown.rethrow();
}

/// As a copy, since a function may set another in its place.
template <class T>
void CachedObservableList<T>::callFunction(const Taken& taken)
{
    const Change& change = taken.change;
    switch (change.kind) {
    case Change::Added:
        return ItemFunction{m_addFunction}(change.index, taken.after);
    case Change::Removed:
        return ItemFunction{m_removeFunction}(change.index, taken.before);
    case Change::Updated:
        return UpdateFunction{m_updateFunction}(change.index, taken.before, taken.after);
    default:
        return ChangeFunction{m_changeFunction}(change.type(), change.mapper, taken.allBefore, taken.all);
    }
}

} // namespace iface
