// SPDX-License-Identifier: Apache-2.0
#pragma once

#ifdef __cplusplus
extern "C" {
#endif
#pragma GCC visibility push(default)

/*
 * Opens a publish/subscribe object and gives its descriptor, or -1 with errno. The descriptor is used with plain
 * read(), write(), close() and poll(): one write() hands over one record, one read() takes one, and what a read() has
 * no room for is gone. `flags` are those of open(2): O_RDWR, and O_NONBLOCK if wanted. The descriptor is closed on
 * exec.
 *
 * A path below "/pps" is looked for below the folder that the environment variable PPS_ROOT names, when it is set and
 * the program is not set-user-id.
 *
 * Where a sequenced-packet socket stands at the path, the object is served by whoever listens there. Such an object
 * must be served when it is opened: a socket that nobody listens on fails with ECONNREFUSED, and a service that is too
 * busy to accept within a second with ETIMEDOUT. From then on
 * - the descriptor never reports end of file and never raises SIGPIPE. When the service goes away the object is quiet:
 *   what is written meanwhile is lost without notice. A service that comes back at the same path is connected to
 *   within a second.
 * - a write() never waits for the service. Records that the service does not take at once are kept in order, up to
 *   1 MiB (each counted with 64 bytes more than its length); what is written past that is lost without notice.
 * - a service is held back, and loses nothing, while the caller does not read.
 * - records of any length that the kernel carries (about 400 KiB) are passed on whole, in both directions; an empty one
 *   is not passed on.
 * - close() ends it. What was written before is delivered, if the service takes it within a second; a program that
 *   ends waits for that for 200 ms at most.
 * A child made with fork() that runs no other program has no part in its parent's objects: nothing comes from the
 * descriptor there, and a write() fails at once. It opens its own.
 *
 * A thread of the library's own carries the records; it takes no signals and ends after the descriptor is closed.
 *
 * Anything else at the path (a terminal, a pipe, a file) is opened as it is, and none of the above is promised for it.
 */
int pps_object_open(const char* path, int flags);

#pragma GCC visibility pop
#ifdef __cplusplus
}
#endif
