// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

/// The names in the "global" list that the library knows.
namespace zelsplib::globalnames {

inline QString permission()
{
    return QStringLiteral("permission");
}
inline QString platformProfile()
{
    return QStringLiteral("platformProfile");
}

} // namespace zelsplib::globalnames
