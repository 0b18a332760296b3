// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableValueImpl.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QHashFunctions>

#include <boost/functional/hash.hpp>

#include <type_traits>

namespace iface {

/// A reader of one observable value: a value that shares the implementation with its copies. The last reference to go
/// deletes the implementation.
///
/// Handles are equal when they share their implementation, whatever it holds. A handle on nothing reads as a default
/// value. Handles on a derived implementation convert to handles on its base. One thread.
template <class T, class Impl = ObservableValueImpl<T>>
class ObservableValue
{
public:
    ObservableValue() = default;
    explicit ObservableValue(Impl* impl)
        : d(impl)
    {
    }
    explicit ObservableValue(const QExplicitlySharedDataPointer<Impl>& impl)
        : d(impl)
    {
    }
    template <class Derived>
    requires(std::is_convertible_v<Derived*, Impl*> && !std::is_same_v<Derived, Impl>)
        ObservableValue(const ObservableValue<T, Derived>& other)
        : d(other.impl())
    {
    }

    static ObservableValue create(const QExplicitlySharedDataPointer<Impl>& impl) { return ObservableValue(impl); }

    T getValue() const { return d ? d->getValue() : T(); }

    Impl* impl() const { return d.data(); }
    friend bool operator==(const ObservableValue& a, const ObservableValue& b) { return a.d == b.d; }
    friend std::size_t qHash(const ObservableValue& handle, std::size_t seed = 0)
    {
        return ::qHash(handle.d.data(), seed);
    }
    friend std::size_t hash_value(const ObservableValue& handle) { return boost::hash<Impl*>()(handle.d.data()); }

private:
    QExplicitlySharedDataPointer<Impl> d;
};

} // namespace iface
