// SPDX-License-Identifier: Apache-2.0
#include <device/Log.h>
#include <slog/reload.h>
#include <slog/slog.h>
#include <slog/terminal.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>

#include <syslog.h>
#include <unistd.h>

namespace {

constexpr int defaultLevel = 5;

struct Settings
{
    std::atomic<int> level{defaultLevel};
    std::atomic<bool> toStandardError{false};
    Settings() { read(); }
    void read()
    {
        const char* const text = ::secure_getenv("ZEL_SLOG_LEVEL");
        char* end = nullptr;
        const long number = text ? std::strtol(text, &end, 10) : 0;
        const bool isNumber = text && end != text && *end == '\0';
        level = isNumber ? static_cast<int>(std::clamp(number, -1L, 7L)) : defaultLevel;
        const char* const target = ::secure_getenv("ZEL_SLOG");
        toStandardError = target && std::strcmp(target, "stderr") == 0;
    }
};

std::atomic<void (*)()> beforeLine{nullptr};

Settings& settings()
{
    static Settings instance;
    return instance;
}

// Severity 0 is not LOG_EMERG: that one shouts on every terminal.
int priorityOf(int severity)
{
    constexpr int priorities[] = {LOG_ALERT,  LOG_CRIT, LOG_ERR,   LOG_WARNING,
                                  LOG_NOTICE, LOG_INFO, LOG_DEBUG, LOG_DEBUG};
    return priorities[severity < 0 ? 0 : severity > 7 ? 7 : severity];
}

// One line at a time: neither a write that takes two steps nor a file that was not opened for appending mixes lines.
bool writeAll(const char* text, size_t length)
{
    static std::mutex oneAtATime;
    const std::lock_guard<std::mutex> lock(oneAtATime);
    while (length > 0) {
        const ssize_t written = ::write(STDERR_FILENO, text, length);
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        text += written;
        length -= static_cast<size_t>(written);
    }
    return true;
}

// The line's text is formatted into `line` from `start` on, which has room for the line break as well.
int writeLine(char* line, size_t length, int severity, size_t start, bool toStandardError)
{
    for (char* c = line + start; c != line + length; ++c) {
        if (*c == '\n' || *c == '\r')
            *c = ' ';
    }
    if (!toStandardError) {
        ::syslog(priorityOf(severity), "%s", line + start);
        return 0;
    }
    if (void (*const function)() = beforeLine)
        function();
    line[length] = '\n';
    return writeAll(line, length + 1) ? 0 : -1;
}

__attribute__((format(printf, 2, 0))) int writeFormatted(int severity, const char* format, va_list arguments)
{
    char inlineLine[1024];
    const size_t start =
        static_cast<size_t>(std::snprintf(inlineLine, sizeof inlineLine, "zelplatform[severity %d]: ", severity));
    va_list again;
    va_copy(again, arguments);
    const int textLength = std::vsnprintf(inlineLine + start, sizeof inlineLine - start, format, again);
    va_end(again);
    if (textLength < 0)
        return -1;
    const bool toStandardError = settings().toStandardError;
    const size_t length = start + static_cast<size_t>(textLength);
    if (length + 1 < sizeof inlineLine)
        return writeLine(inlineLine, length, severity, start, toStandardError);

    const std::unique_ptr<char[]> line(new (std::nothrow) char[length + 2]);
    if (!line)
        return -1;
    std::memcpy(line.get(), inlineLine, start);
    std::vsnprintf(line.get() + start, static_cast<size_t>(textLength) + 1, format, arguments);
    return writeLine(line.get(), length, severity, start, toStandardError);
}

} // namespace

int slogf(int, int severity, const char* format, ...)
{
    if (!device::isLogged(severity))
        return 0;
    // A caller who logs a failure may still want its errno.
    const int savedError = errno;
    va_list arguments;
    va_start(arguments, format);
    const int result = writeFormatted(severity, format, arguments);
    va_end(arguments);
    errno = savedError;
    return result;
}

void slog_reload(void)
{
    settings().read();
}

void slog_before_line(void (*function)(void))
{
    beforeLine = function;
}

bool device::isLogged(int severity)
{
    return severity <= settings().level.load(std::memory_order_relaxed);
}
