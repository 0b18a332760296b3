// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <common/Program.h>

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QRegularExpression>

/// zelctl as a program that another one drives.
class ZelctlProcess : public Program
{
public:
    explicit ZelctlProcess(const QString& root)
        : Program(QStringLiteral(ZELCTL_PATH), root)
    {
    }

    /// `--json shell` up to its first line and the first registration state.
    void startShell()
    {
        start({QStringLiteral("--json"), QStringLiteral("shell")});
        takeUntil("Unregistered");
    }
    /// Takes the lines up to the one that announces this registration state.
    void takeUntil(const QByteArray& registrationState)
    {
        for (QByteArray line = "?"; !line.isEmpty() && !line.contains('"' + registrationState + "\"}");)
            line = takeLine();
    }

    /// How often its threads have gone to sleep: once more for every time that something woke one of them.
    int timesAsleep() const
    {
        static const QRegularExpression count(QStringLiteral("\nvoluntary_ctxt_switches:\\s*(\\d+)"));
        int times = 0;
        const QDir threads(QStringLiteral("/proc/%1/task").arg(process.processId()));
        for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile status(threads.filePath(thread + QStringLiteral("/status")));
            if (status.open(QIODevice::ReadOnly))
                times += count.match(QString::fromLatin1(status.readAll())).captured(1).toInt();
        }
        return times;
    }
};
