// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableListImpl.h>
#include <iface/ObservableTracker.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QList>

#include <type_traits>
#include <utility>

namespace iface {

/// A typed reader of a list: a value that shares the list with its copies. The last reference to go deletes the list.
///
/// Every read is recorded as one of the whole list (see ObservableTracker). A handle on nothing reads as empty. Handles
/// on a derived implementation convert to handles on its base. One thread.
///
///     iface::ObservableList<QString> names(new NameList);
///     for (int i = 0; i < names.size(); ++i)
///         qDebug() << names[i];
template <class T, class Impl = ObservableListImpl>
class ObservableList
{
public:
    ObservableList() = default;
    explicit ObservableList(Impl* impl)
        : d(impl)
    {
    }
    explicit ObservableList(const QExplicitlySharedDataPointer<Impl>& impl)
        : d(impl)
    {
    }
    template <class Derived>
    requires(std::is_convertible_v<Derived*, Impl*> && !std::is_same_v<Derived, Impl>)
        ObservableList(const ObservableList<T, Derived>& other)
        : d(other.impl())
    {
    }
    ObservableList(const ObservableList&) = default;
    ObservableList(ObservableList&&) noexcept = default;
    ObservableList& operator=(const ObservableList&) = default;
    ObservableList& operator=(ObservableList&&) noexcept = default;
    virtual ~ObservableList() = default;

    /// The item at `index`, read through the list's variants; a default-constructed one where there is none.
    virtual T operator[](int index) const;
    virtual T operator[](int index) { return std::as_const(*this)[index]; }
    virtual int size() const;
    virtual bool isEmpty() const { return size() == 0; }
    virtual bool contains(const T& value) const { return indexOf(value) >= 0; }
    /// The first item that equals `value`, or -1. Reads item by item, so it is meant for short lists.
    virtual int indexOf(const T& value) const;
    QList<T> toList() const;

    Impl* impl() const { return d.data(); }
    friend bool operator==(const ObservableList& a, const ObservableList& b) { return a.d == b.d; }

private:
    QExplicitlySharedDataPointer<Impl> d;
};

template <class T, class Impl>
T ObservableList<T, Impl>::operator[](int index) const
{
    if (!d)
        return T();
    ObservableTracker::getterCalled(d.data());
    return d->itemAt(index).template value<T>();
}

template <class T, class Impl>
int ObservableList<T, Impl>::size() const
{
    if (!d)
        return 0;
    ObservableTracker::getterCalled(d.data());
    return d->childCount(QVariantList());
}

template <class T, class Impl>
int ObservableList<T, Impl>::indexOf(const T& value) const
{
    for (int i = 0; i < size(); ++i) {
        if (operator[](i) == value)
            return i;
    }
    return -1;
}

template <class T, class Impl>
QList<T> ObservableList<T, Impl>::toList() const
{
    QList<T> items;
    items.reserve(size());
    for (int i = 0; i < size(); ++i)
        items.append(operator[](i));
    return items;
}

} // namespace iface
