// SPDX-License-Identifier: Apache-2.0
#include <common/SlogCapture.h>
#include <common/TestMain.h>

#include <device/Log.h>
#include <slog/slog.h>

#include <QtTest/QTest>

#include <cerrno>
#include <thread>
#include <vector>

using namespace Qt::StringLiterals;

class TstSlog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void takesLinesUpToTheLevel()
    {
        const std::pair<QByteArray, int> levels[] = {{{}, 5},    {"7", 7},     {"2", 2},
                                                     {"-1", -1}, {"9", 7},     {"99999999999999999999", 7},
                                                     {"-5", -1}, {"debug", 5}, {"7x", 5}};
        for (const auto& [level, highest] : levels) {
            const SlogCapture log;
            level.isNull() ? qunsetenv("ZEL_SLOG_LEVEL") : qputenv("ZEL_SLOG_LEVEL", level);
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
        for (const int length : {980, 995, 996, 997, 998, 999, 1000, 1001, 1024, 70000}) {
            const QByteArray text(length, 'x');
            slogf(1, 2, "%s", text.constData());
            expected.append(u"2: "_s + QString::fromLatin1(text));
        }
        QCOMPARE(log.lines(), expected);
    }

    void keepsLinesOfSeveralThreadsApart()
    {
        const SlogCapture log;
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([t] {
                for (int i = 0; i < 200; ++i)
                    slogf(1, 5, "%d.%d.%s", t, i, "end");
            });
        }
        for (std::thread& thread : threads)
            thread.join();
        const QStringList lines = log.lines();
        QCOMPARE(lines.size(), 800);
        for (const QString& line : lines)
            QVERIFY2(line.startsWith(u"5: "_s) && line.endsWith(u".end"_s) && line.count(u'.') == 2, qPrintable(line));
    }
};

ZEL_TEST_WITHOUT_APPLICATION(TstSlog)
#include "tst_slog.moc"
