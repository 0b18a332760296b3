// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QProcess>
#include <QtTest/QTest>

#include <csignal>

/// A program as another one drives it: words in, lines out. The event loop runs while something is waited for, since
/// the other end of the object may live in this process.
class Program
{
public:
    /// \a root is its PPS_ROOT.
    Program(const QString& path, const QString& root)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PPS_ROOT"), root);
        process.setProcessEnvironment(environment);
        process.setProgram(path);
        QObject::connect(&process, &QProcess::readyReadStandardOutput, &process,
                         [this] { m_output += process.readAllStandardOutput(); });
        QObject::connect(&process, &QProcess::readyReadStandardError, &process,
                         [this] { m_diagnostics += process.readAllStandardError(); });
    }
    ~Program()
    {
        process.kill();
        process.waitForFinished(patience);
    }
    Q_DISABLE_COPY_MOVE(Program)

    /// Standard input stays open until finish().
    bool start(const QStringList& arguments)
    {
        process.setArguments(arguments);
        process.start();
        return process.waitForStarted(patience);
    }
    void end(int signal) const { ::kill(pid_t(process.processId()), signal); }
    /// Closes standard input and waits for the end. The exit status; -1 when it crashed or did not end.
    int finish()
    {
        process.closeWriteChannel();
        const bool ended = waitFor([this] { return process.state() == QProcess::NotRunning; });
        return ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    }
    /// Runs it to its end on \a input.
    int run(const QStringList& arguments, const QByteArray& input = QByteArray())
    {
        if (!start(arguments))
            return -1;
        process.write(input);
        return finish();
    }

    void write(const QByteArray& line) { process.write(line + '\n'); }
    /// Whether it says this, if it has not yet.
    bool says(const QByteArray& text)
    {
        return waitFor([&] { return m_output.contains(text) || m_diagnostics.contains(text); });
    }

    /// What it wrote in all.
    QList<QByteArray> lines() const { return m_output.split('\n').mid(0, m_output.count('\n')); }
    QByteArray diagnostics() const { return m_diagnostics; }

    QProcess process;

private:
    template <typename Condition>
    bool waitFor(Condition isMet) const
    {
        const bool isMetInTime = QTest::qWaitFor(isMet, patience);
        if (!isMetInTime)
            qWarning("it said no more; so far: %s\n%s", m_output.constData(), m_diagnostics.constData());
        return isMetInTime;
    }

    static constexpr int patience = 20'000; // for machines that are busy with other things, too

    QByteArray m_output;
    QByteArray m_diagnostics;
};
