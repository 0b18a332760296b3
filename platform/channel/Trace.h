// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QDebug>
#include <QtCore/QLoggingCategory>

namespace vx::platform::zel {

/// Where the public classes and their delegates trace: category "zel.platform". Warnings show; the debug traces, some
/// of which hold names and messages of people, are off until QT_LOGGING_RULES="zel.platform.debug=true" asks for them.
Q_DECLARE_LOGGING_CATEGORY(lcPlatform)

} // namespace vx::platform::zel
