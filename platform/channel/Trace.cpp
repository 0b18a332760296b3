// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/Trace.h>

namespace vx::platform::zel {

Q_LOGGING_CATEGORY(lcPlatform, "zel.platform", QtInfoMsg)

} // namespace vx::platform::zel
