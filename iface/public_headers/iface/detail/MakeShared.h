// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QSharedPointer>

#include <memory>
#include <utility>

namespace iface::detail {

/// Also where there is no memory for the count: what was made goes then.
template <class T>
QSharedPointer<T> shared(std::unique_ptr<T> made)
{
    const QSharedPointer<T> counted(made.get());
    static_cast<void>(made.release());
    return counted;
}

/// What QSharedPointer::create() does, but for memory that runs out: that then lets go of something it never had.
template <class T, class... Arguments>
QSharedPointer<T> makeShared(Arguments&&... arguments)
{
    return shared(std::make_unique<T>(std::forward<Arguments>(arguments)...));
}

} // namespace iface::detail
