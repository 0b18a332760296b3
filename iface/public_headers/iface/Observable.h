// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QSharedData>

namespace iface {

class ObserverImpl;

/// Anything whose changes can be observed.
///
/// Every observable carries a reference count and is held by `QExplicitlySharedDataPointer`s (or by the handles that
/// wrap them); the last one to go deletes it. A fresh observable has a count of zero: take a handle before it is read
/// or fired. One whose count is zero is owned by other means (a member, the stack), and nothing in the library ever
/// deletes it or records it as read.
///
/// Observables belong to the thread that made them.
class ZEL_EXPORT Observable : public QSharedData
{
public:
    Observable() = default;
    virtual ~Observable();

    /// Registers an observer once more; answers whether that worked. The observer stays its owner's. Filters and
    /// monitors come through this to what is no ObservableImpl, or lives in another thread.
    virtual bool addObserver(const ObserverImpl* observer) const = 0;
    /// Takes all registrations of an observer back; answers whether there was one.
    virtual bool removeObserver(const ObserverImpl* observer) const = 0;

private:
    Q_DISABLE_COPY_MOVE(Observable)
};

/// A shared reference on something that was read.
using ObservablePointer = QExplicitlySharedDataPointer<Observable const>;

} // namespace iface
