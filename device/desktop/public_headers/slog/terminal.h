// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/* For a program at which somebody types: what is called before each line that goes to standard error, on the thread
   that writes it. Null, as at first: nothing. */
void slog_before_line(void (*function)(void));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
