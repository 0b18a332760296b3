// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

namespace zelsplib {

/// What the user allows the application, and how far its registration is. A value.
struct PlatformPermissions
{
    bool showAppBox = false;   ///< the application's profile box may be shown
    bool zelInvites = false;   ///< invitations through the service are allowed
    QString registrationState; ///< the access code, empty until the core service has named one
    bool zelSetup = false;     ///< the service is set up on the device

    friend bool operator==(const PlatformPermissions&, const PlatformPermissions&) = default;
};

} // namespace zelsplib
