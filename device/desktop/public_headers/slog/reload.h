// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* Reads the environment variables of the desktop's log (see slog/slog.h) again: for tests. */
void slog_reload(void);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
