// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// The answer to a Permission. A holder for the enumeration; never instantiated.
class ZEL_EXPORT PermissionValue
{
    Q_GADGET

public:
    /// Whether it is.
    enum Type : int {
        Allowed = 1,
        Denied = 2,
    };
    Q_ENUM(Type)

    PermissionValue() = delete;
};

/// Writes the name of \a value to \a debug, without the class: "Denied".
ZEL_EXPORT QDebug operator<<(QDebug debug, PermissionValue::Type value);

} // namespace vx::platform::zel
