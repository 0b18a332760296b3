// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QString>

#include <QtCore/QtGlobal>

#include <unistd.h>

/// What a process holds, and what it has used up, at one moment; any process of the user's, as the kernel tells it.
struct Usage
{
    double megabytes = 0;     ///< Resident.
    double mostMegabytes = 0; ///< The most that ever were.
    double seconds = 0;       ///< On a processor.
    qsizetype descriptors = 0;

    static Usage of(qint64 process)
    {
        const QString folder = QStringLiteral("/proc/%1/").arg(process);
        Usage usage;
        const QByteArray status = contentsOf(folder + QStringLiteral("status"));
        usage.megabytes = kilobytesIn(status, "VmRSS:") / 1024;
        usage.mostMegabytes = kilobytesIn(status, "VmHWM:") / 1024;
        // The program's name comes first, in brackets, and may hold anything.
        const QByteArray stat = contentsOf(folder + QStringLiteral("stat"));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        usage.seconds = (fields.value(11).toDouble() + fields.value(12).toDouble()) / double(::sysconf(_SC_CLK_TCK));
        usage.descriptors = QDir(folder + QStringLiteral("fd"))
                                .entryList(QDir::NoDotAndDotDot | QDir::AllEntries | QDir::System)
                                .size();
        return usage;
    }

private:
    static QByteArray contentsOf(const QString& path)
    {
        QFile file(path);
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
    static double kilobytesIn(const QByteArray& status, const QByteArray& name)
    {
        const qsizetype start = status.indexOf(name);
        return start < 0 ? 0 : status.mid(start + name.size(), 20).trimmed().split(' ').first().toDouble();
    }
};
