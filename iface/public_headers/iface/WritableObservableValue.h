// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ObservableValueImpl.h>

#include <utility>

namespace iface {

/// A value that its owner sets.
///
///     using Ready = iface::WritableObservableValue<bool>;
///     QExplicitlySharedDataPointer<Ready> ready(new Ready); ready->setValue(true);
template <class T>
class WritableObservableValue : public ObservableValueImpl<T>
{
public:
    using ObservableValueImpl<T>::ObservableValueImpl;

    /// Stores a value that differs from the present one and then notifies. Answers whether it differed.
    bool setValue(T newValue)
    {
        if (this->value == newValue)
            return false;
        // The old value goes only after the announcement: what its destructor does cannot get in between.
        std::swap(this->value, newValue);
        this->notifyObservers();
        return true;
    }
};

} // namespace iface
