// SPDX-License-Identifier: Apache-2.0
// What the targets share that run on Qt. Included once in each.
#pragma once

#include <QtCore/QCoreApplication>
#include <QtCore/QString>

#include <cstdio>
#include <cstdlib>

inline void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "broken: %s\n", what);
    std::abort();
}

/// \a complaint is empty when all is well.
inline void requireNone(const QString& complaint)
{
    require(complaint.isEmpty(), qPrintable(complaint));
}

/// Qt as it is the same in every run, without a word, and without a core service.
inline void beginQuietly()
{
    ::setenv("QT_NO_GLIB", "1", 1);
    ::setenv("QT_HASH_SEED", "0", 1);
    ::setenv("PPS_ROOT", "/nonexistent", 1);
    ::setenv("ZEL_SLOG_LEVEL", "-1", 1);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    static int argumentCount = 0;
    static QCoreApplication application(argumentCount, nullptr);
}

/// Much is made anew for every input: traces of allocations would take most of the time. To look into a find, run it
/// with ASAN_OPTIONS=malloc_context_size=30.
extern "C" inline const char* __asan_default_options()
{
    return "malloc_context_size=2:quarantine_size_mb=32:max_malloc_fill_size=0";
}
