// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <slog/reload.h>

#include <QtCore/QByteArray>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>

#include <cstdio>
#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

/// Catches what the system log takes while it lives, of every severity unless told otherwise.
class SlogCapture
{
public:
    explicit SlogCapture(int highestSeverity = 7)
        : m_file(::memfd_create("slog", MFD_CLOEXEC))
        , m_standardError(::dup(STDERR_FILENO))
    {
        // Appending is what keeps two threads' writes from landing at one place of a file.
        ::fcntl(m_file, F_SETFL, O_APPEND);
        std::fflush(stderr);
        ::dup2(m_file, STDERR_FILENO);
        configure(QByteArray::number(highestSeverity));
    }

    ~SlogCapture()
    {
        configure(m_levelBefore);
        std::fflush(stderr);
        ::dup2(m_standardError, STDERR_FILENO);
        ::close(m_standardError);
        ::close(m_file);
    }

    Q_DISABLE_COPY(SlogCapture)

    /// Each line so far as "severity: text".
    QStringList lines() const
    {
        static const QRegularExpression mark(QStringLiteral("^zelplatform\\[severity (\\d)\\]"));
        QByteArray text(static_cast<qsizetype>(::lseek(m_file, 0, SEEK_END)), '\0');
        text.truncate(::pread(m_file, text.data(), static_cast<size_t>(text.size()), 0));
        return QString::fromUtf8(text).split(u'\n').filter(mark).replaceInStrings(mark, QStringLiteral("\\1"));
    }

private:
    static void configure(const QByteArray& level)
    {
        qputenv("ZEL_SLOG", "stderr");
        level.isNull() ? qunsetenv("ZEL_SLOG_LEVEL") : qputenv("ZEL_SLOG_LEVEL", level);
        slog_reload();
    }

    const QByteArray m_levelBefore = qgetenv("ZEL_SLOG_LEVEL");
    const int m_file;
    const int m_standardError;
};
