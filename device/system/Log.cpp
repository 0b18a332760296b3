// SPDX-License-Identifier: Apache-2.0
#include <device/Log.h>

// The platform's log takes a line or drops it, and cannot be asked before.
bool device::isLogged(int)
{
    return true;
}
