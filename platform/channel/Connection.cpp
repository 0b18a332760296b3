// SPDX-License-Identifier: Apache-2.0
#include <platform/channel/ServiceBridge.h>

#include <iface/Export.h>

// For a simulated service in the process of the application, which must not link the library and so finds these by
// name. Applications have no use for them.

/// The folder of objects in which this process looked for the service, "/pps" where PPS_ROOT does not move it; null
/// when it has not looked yet.
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
