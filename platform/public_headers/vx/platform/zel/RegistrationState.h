// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QObject>

namespace vx::platform::zel {

/// Where the application stands with the messaging service, as Context::registrationState() reports it.
/// A holder for the enumeration; never instantiated.
class ZEL_EXPORT RegistrationState
{
    Q_GADGET

public:
    /// What the service says of the application's registration.
    enum Type : int {
        Allowed = 0,                     ///< Registered; the public classes give access.
        Unknown = 1,                     ///< Nothing heard yet, or a state that this version does not know.
        Unregistered = 2,                ///< Registration may be requested.
        Pending = 3,                     ///< A registration is under way.
        BlockedByUser = 4,               ///< Refused by the user. Also: there was no service to be opened at start.
        BlockedByTOV = 5,                ///< Refused by the service's operator.
        NoDataConnection = 6,            ///< No network; may be requested again.
        UnexpectedError = 7,             ///< May be requested again.
        InvalidUuid = 8,                 ///< The application's UUID is null or was refused; may be requested again.
        TemporaryError = 9,              ///< May be requested again.
        MaxDownloadsReached = 10,        ///< No more users may run this application.
        Expired = 11,                    ///< The application's registration has run out.
        CancelledByUser = 12,            ///< The user cancelled the request; may be requested again.
        MaxAppsReached = 13,             ///< The user's limit of applications is reached.
        ZelDisabled = 14,                ///< The messaging service is switched off on the device.
        BlockedEnterprisePerimeter = 15, ///< Not available in the device's work perimeter.
    };
    Q_ENUM(Type)

    RegistrationState() = delete;
};

/// Writes the name of \a state to \a debug, without the class: "Pending".
ZEL_EXPORT QDebug operator<<(QDebug debug, RegistrationState::Type state);

} // namespace vx::platform::zel
