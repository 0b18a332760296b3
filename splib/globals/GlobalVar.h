// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QMetaType>
#include <QtCore/QString>
#include <QtCore/QVariant>

namespace zelsplib {

/// One named value of the core service's "global" list. A value.
struct GlobalVar
{
    QString name;
    /// A PlatformPermissions under "permission", a PlatformContact under "platformProfile", else invalid.
    QVariant value;

    friend bool operator==(const GlobalVar& a, const GlobalVar& b) { return a.name == b.name && a.value == b.value; }
    friend bool operator!=(const GlobalVar& a, const GlobalVar& b) { return !(a == b); }
};

} // namespace zelsplib

Q_DECLARE_METATYPE(zelsplib::GlobalVar)
