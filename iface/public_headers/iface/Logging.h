// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore5Compat/QRegExp>
#include <QtCore/QString>

namespace iface {

struct LogLevel
{
    enum Type : int { Debug = 0, Info = 1, Error = 2 };
};

struct LogCategory
{
    enum Type : int { General = 0 };
};

/// Messages below this level are not written; Info at first. All settings hold for the whole process and are not
/// locked: set them at start-up.
ZEL_EXPORT void setLogLevel(LogLevel::Type level);
/// Kept, and without effect: categories do not decide what is written.
ZEL_EXPORT void setLogCategory(LogCategory::Type category);
/// Only messages from source files whose whole name matches are written. Always taken as a wildcard pattern that
/// ignores case, whatever the expression's own settings; an invalid expression changes nothing.
ZEL_EXPORT void setFilenameFilter(QRegExp filter);

/// The file name at the end of a path with slashes or backslashes.
ZEL_EXPORT QString filterFilename(const char* path);
ZEL_EXPORT bool loggingEnabled(const char* file, LogLevel::Type level, LogCategory::Type category);
/// Writes one line, asked for or not; use ZEL_IFACE_LOG.
ZEL_EXPORT void writeLogLine(const char* file, int line, const QString& message);

} // namespace iface

/// Writes `message` (a QString expression, evaluated only if the line is written) under a file name and line number
/// that the caller gives: some lines name fixed ones, which tools look for.
#define ZEL_IFACE_LOG(file, line, level, category, message)                                                            \
    do {                                                                                                               \
        if (::iface::loggingEnabled(file, level, category))                                                            \
            ::iface::writeLogLine(file, line, message);                                                                \
    } while (false)
