// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/ChangedKeys.h>
#include <iface/ObservableListImpl.h>

#include <QtCore/QSharedPointer>

namespace iface {

/// How a value, a map or a list has changed, on its way to those who follow it (see Follower).
struct ZEL_EXPORT Change
{
    using Mapper = QSharedPointer<ObservableListImpl::IndexMapper>;
    using Type = ObservableListImpl::ChangeType::Type;

    enum Kind {
        None,
        Plain, ///< changed, and nothing more is known
        Keys,  ///< of a map, under known keys
        Added, ///< an item of a list, and so on
        Updated,
        Removed,
        Moved, ///< ChangeType::IndexesChanged
        Data,  ///< ChangeType::DataChanged
        Reset  ///< ChangeType::Reset
    };

    static Change wholesale(Type type, const Mapper& mapper);
    /// For Moved, Data and Reset.
    Type type() const;

    Kind kind = None;
    int index = -1;                    ///< of the item that came, went or changed
    Mapper mapper = nullptr;           ///< of a wholesale change
    const ChangedKeys* keys = nullptr; ///< of Keys; good as long as Follower::mark() lasts
};

namespace detail {
ZEL_EXPORT Change mergedBoth(const Change& first, const Change& second);
} // namespace detail

/// Two changes of one container, of which nobody was told, as one: at worst a Reset. Throws nothing.
inline Change merged(const Change& first, const Change& second)
{
    return first.kind == Change::None    ? second
           : second.kind == Change::None ? first
                                         : detail::mergedBoth(first, second);
}

} // namespace iface
