// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableImpl.h>
#include <iface/ObservableTracker.h>

#include <utility>

namespace iface {

/// One value that tells its observers when it changes. Reading it is recorded (see ObservableTracker).
template <class T>
class ObservableValueImpl : public ObservableImpl
{
public:
    ObservableValueImpl()
        : value()
    {
    }
    explicit ObservableValueImpl(T initial)
        : value(std::move(initial))
    {
    }

    /// The reference lives as long as this does and shows later changes.
    virtual const T& getValue() const
    {
        ObservableTracker::getterCalled(this);
        return value;
    }

protected:
    T value;
};

} // namespace iface
