// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// How the user stands with the owner of an eco identifier. A holder for the enumeration; never instantiated.
class ZEL_EXPORT EcoIdStatus
{
    Q_GADGET

public:
    /// How the user stands with the owner of an eco identifier.
    enum Type : int {
        Unknown = 0,                    ///< Not a contact, or not known to the service.
        ContactExists = 1,              ///< Already a contact.
        PendingContactInviteExists = 2, ///< An invitation is on its way.
    };
    Q_ENUM(Type)

    EcoIdStatus() = delete;
};

/// Writes the name of \a status to \a debug, without the class: "ContactExists".
ZEL_EXPORT QDebug operator<<(QDebug debug, EcoIdStatus::Type status);

} // namespace vx::platform::zel
