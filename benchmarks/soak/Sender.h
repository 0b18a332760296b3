// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

/// A core service in a process of its own that changes one contact after the other, as fast as it can, as many times as
/// it is told to: no more than the application can take if that tells it of what it has taken, and on and on if not.
class Sender
{
public:
    /// This many changes are asked for at a time.
    static constexpr int portion = 1000;

    explicit Sender(int contacts);
    ~Sender();
    Q_DISABLE_COPY_MOVE(Sender)

    void send(int portions);
    qint64 process() const { return m_process.processId(); }
    /// How sending went: the longest that a portion took, by the clock on the wall, and how many times the process gave
    /// the processor up to wait for something, which unlike the clock says nothing of what else runs.
    struct Pace
    {
        double longestMilliseconds = 0;
        int waits = 0;
    };
    /// Has it end.
    Pace finish();

    /// What the process of its own does; with what it ends.
    static int serve(const QString& root, int contacts);

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};
