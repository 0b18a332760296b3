// SPDX-License-Identifier: Apache-2.0
#include <platform/messaging/MessageServiceDelegate.h>

namespace vx::platform::zel {

MessageServiceDelegate::MessageServiceDelegate(Services*, QObject* parent)
    : QObject(parent)
{
}

} // namespace vx::platform::zel
