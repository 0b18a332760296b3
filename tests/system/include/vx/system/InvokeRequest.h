// SPDX-License-Identifier: Apache-2.0
#pragma once

// A value with its code in the header: the stand-in that serves it must see the same one.
#include "../../../../../device/public_headers/vx/system/InvokeRequest.h"
