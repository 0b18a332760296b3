// SPDX-License-Identifier: Apache-2.0
#pragma once

extern "C" int slogf(int opcode, int severity, const char* format, ...);
