// SPDX-License-Identifier: Apache-2.0
#include <pps/object.h>

#include <cstdarg>
#include <cstring>

#include <fcntl.h>
#include <sys/syscall.h>
#include <unistd.h>

// On a platform a publish/subscribe object is opened as any other file.
extern "C" __attribute__((visibility("default"))) int open(const char* path, int flags, ...)
{
    thread_local bool isOpening = false;
    if (!isOpening && std::strncmp(path, "/pps/", 5) == 0) {
        isOpening = true;
        const int descriptor = pps_object_open(path, flags);
        isOpening = false;
        return descriptor;
    }
    va_list arguments;
    va_start(arguments, flags);
    const int mode = (flags & (O_CREAT | O_TMPFILE)) ? va_arg(arguments, int) : 0;
    va_end(arguments);
    return static_cast<int>(::syscall(SYS_openat, AT_FDCWD, path, flags, mode));
}
