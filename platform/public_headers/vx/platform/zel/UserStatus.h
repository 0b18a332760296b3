// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// Whether a user is available. There is no value 0: what has no profile to read answers Available.
/// A holder for the enumeration; never instantiated.
class ZEL_EXPORT UserStatus
{
    Q_GADGET

public:
    /// Whether the user may be disturbed.
    enum Type : int {
        Available = 1,
        Busy = 2,
    };
    Q_ENUM(Type)

    UserStatus() = delete;
};

/// Writes the name of \a status to \a debug, without the class: "Busy".
ZEL_EXPORT QDebug operator<<(QDebug debug, UserStatus::Type status);

} // namespace vx::platform::zel
