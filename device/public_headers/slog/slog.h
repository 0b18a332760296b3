// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/*
 * The system log. Severities: 0 shutdown, 1 critical, 2 error, 3 warning, 4 notice, 5 information, 6 and 7 debug.
 * A line is taken when its severity is not above the number in the environment variable ZEL_SLOG_LEVEL (5 when that
 * is unset or no number). Lines go to syslog(3) at the nearest priority or, with ZEL_SLOG=stderr, to standard error as
 *     zelplatform[severity 3]: the text
 * one line each, written at once, with line breaks inside the text turned into blanks. The environment is read at the
 * first use. All of it may be called from any thread.
 */

/*
 * Writes one line and answers 0, or -1 when it could not be written. A line that is not taken answers 0 and is not
 * formatted. The opcode tells the device's log tools which program speaks; a desktop's log knows that already.
 */
int slogf(int opcode, int severity, const char* format, ...) __attribute__((format(printf, 3, 4)));

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
