// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// What ApplicationPermissions can be asked about. A holder for the enumeration; never instantiated.
class ZEL_EXPORT Permission
{
    Q_GADGET

public:
    /// What may be allowed.
    enum Type : int {
        ProfileUpdatesAllowed = 1,     ///< The application may show its profile box in the user's profile.
        ContactInvitationsAllowed = 2, ///< The application may invite people to become contacts.
    };
    Q_ENUM(Type)

    Permission() = delete;
};

/// Writes the name of \a permission to \a debug, without the class: "ProfileUpdatesAllowed".
ZEL_EXPORT QDebug operator<<(QDebug debug, Permission::Type permission);

} // namespace vx::platform::zel
