// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

/// The service's words that the library knows: names in the "global" list, and how it says that something went well.
namespace zelsplib::globalnames {

inline QString permission()
{
    return QStringLiteral("permission");
}
inline QString platformProfile()
{
    return QStringLiteral("platformProfile");
}

inline QString success()
{
    return QStringLiteral("Success");
}

} // namespace zelsplib::globalnames
