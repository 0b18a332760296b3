// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>
#include <QtCore/QVariant>

namespace zelsplib {

/// One named value of the core service's "global" list. A value.
struct GlobalVar
{
    QString name;
    /// A PlatformPermissions under "permission", a PlatformContact under "platformProfile", else invalid.
    QVariant value;

    friend bool operator==(const GlobalVar&, const GlobalVar&) = default;
};

} // namespace zelsplib
