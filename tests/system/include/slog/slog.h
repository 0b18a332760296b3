// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C"
#endif
    int
    slogf(int opcode, int severity, const char* format, ...);
