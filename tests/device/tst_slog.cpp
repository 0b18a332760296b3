// SPDX-License-Identifier: Apache-2.0
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <device/Log.h>
#include <slog/slog.h>

#include <cerrno>
#include <cstdarg>

static QStringList systemLines;

/// In the place of the system's log.
extern "C" void syslog(int priority, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    systemLines.append(u"%1 "_s.arg(priority) + QString::vasprintf(format, arguments));
    va_end(arguments);
}

class TstSlog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesLinesUpToTheLevel()
    {
        const std::pair<QByteArray, int> rows[] = {{"", 5},    {"7", 7},     {"2", 2},
                                                   {"-1", -1}, {"9", 7},     {"99999999999999999999", 7},
                                                   {"-5", -1}, {"debug", 5}, {"7x", 5}};
        for (const auto& [level, highest] : rows) {
            const SlogCapture log;
            level.isEmpty() ? qunsetenv("ZEL_SLOG_LEVEL") : qputenv("ZEL_SLOG_LEVEL", level);
            slog_reload();
            QStringList expected;
            for (int severity = 0; severity <= 7; ++severity) {
                QCOMPARE(device::isLogged(severity), severity <= highest);
                QCOMPARE(slogf(1, severity, "%s %d", "line", severity), 0);
                if (severity <= highest)
                    expected.append(u"%1: line %1"_s.arg(severity));
            }
            QCOMPARE(log.lines(), expected);
        }
    }

    void writesEachTextOnOneLine()
    {
        const SlogCapture log;
        errno = ECONNREFUSED;
        slogf(1, 3, "a\nb\r\nc");
        QCOMPARE(errno, ECONNREFUSED);
        slogf(1, 3, "%s", "100 % %s");
        QStringList expected{u"3: a b  c"_s, u"3: 100 % %s"_s};
        for (const int length : {0, 980, 995, 996, 997, 998, 999, 1000, 1001, 1024, 70000}) {
            const QByteArray text(length, 'x');
            slogf(1, 2, "%s", text.constData());
            expected.append(u"2: "_s + QString::fromLatin1(text));
        }
        QCOMPARE(log.lines(), expected);
        // What cannot be written is given up.
        const int full = ::open("/dev/full", O_WRONLY | O_CLOEXEC);
        ::dup2(full, STDERR_FILENO);
        ::close(full);
        QCOMPARE(slogf(1, 2, "lost"), -1);
        qputenv("ZEL_SLOG", "std"); // is not the word for it
        slog_reload();
        for (const int severity : {-1, 0, 1, 6, 7})
            QCOMPARE(slogf(1, severity, "of severity %d", severity), 0);
        QCOMPARE(systemLines, QStringList({u"1 of severity -1"_s, u"1 of severity 0"_s, u"2 of severity 1"_s,
                                           u"7 of severity 6"_s, u"7 of severity 7"_s}));
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstSlog)
#include "tst_slog.moc"
