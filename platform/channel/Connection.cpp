// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/ServiceBridge.h>

#include <iface/Export.h>

// For a simulated service in the process of the application, which must not link the library and so finds these by
// name. Applications have no use for them.

/// The folder that stood for the service when this process connected to it, as PPS_ROOT had it; null when the process
/// is not connected and has not tried to be.
extern "C" ZEL_EXPORT const char* zel_platform_root()
{
    return vx::platform::zel::ServiceBridge::root();
}

/// Ends the connection and forgets everything that came over it: the next Context begins as in a new process. False
/// while there is a Context.
extern "C" ZEL_EXPORT bool zel_platform_let_go()
{
    return vx::platform::zel::ServiceBridge::letGo();
}
