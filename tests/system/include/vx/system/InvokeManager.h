// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "../../../../../device/public_headers/vx/system/InvokeManager.h"
