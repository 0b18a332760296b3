// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QList>
#include <QtCore/QProcess>
#include <QtCore/QRegularExpression>
#include <QtCore/QStringList>
#include <QtTest/QTest>

#include <csignal>

/// zelctl as a program that another one drives: words in, lines out.
class ZelctlProcess
{
public:
    /// \a root is its PPS_ROOT.
    explicit ZelctlProcess(const QString& root)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QStringLiteral("PPS_ROOT"), root);
        m_process.setProcessEnvironment(environment);
        m_process.setProgram(QStringLiteral(ZELCTL_PATH));
    }
    ~ZelctlProcess()
    {
        m_process.kill();
        m_process.waitForFinished(patience);
    }

    /// Standard input stays open until finish().
    bool start(const QStringList& arguments)
    {
        m_process.setArguments(arguments);
        m_process.start();
        return m_process.waitForStarted(patience);
    }
    /// `--json shell` up to its first line and the first registration state.
    void startShell()
    {
        start({QStringLiteral("--json"), QStringLiteral("shell")});
        takeUntil("Unregistered");
    }

    void write(const QByteArray& line) { m_process.write(line + '\n'); }
    /// The next line; empty when none comes.
    QByteArray takeLine()
    {
        // The event loop runs meanwhile: the other end of the object lives in this process.
        const auto there = [this] {
            collect();
            return m_output.indexOf('\n', m_taken) >= 0;
        };
        if (!QTest::qWaitFor(there, patience)) {
            qWarning("zelctl said no more; so far: %s\n%s", m_output.constData(), diagnostics().constData());
            return {};
        }
        const qsizetype start = std::exchange(m_taken, m_output.indexOf('\n', m_taken) + 1);
        return m_output.mid(start, m_taken - 1 - start);
    }
    QByteArray ask(const QByteArray& command)
    {
        write(command);
        return takeLine();
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
        const QDir threads(QStringLiteral("/proc/%1/task").arg(m_process.processId()));
        for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
            QFile status(threads.filePath(thread + QStringLiteral("/status")));
            if (status.open(QIODevice::ReadOnly))
                times += count.match(QString::fromLatin1(status.readAll())).captured(1).toInt();
        }
        return times;
    }

    void end(int signal) { ::kill(pid_t(m_process.processId()), signal); }
    /// Closes standard input and waits for the end. The exit status; -1 when it crashed or did not end.
    int finish()
    {
        m_process.closeWriteChannel();
        const bool ended = QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, patience);
        collect();
        return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
    }
    /// Runs it to its end on \a input.
    int run(const QStringList& arguments, const QByteArray& input = QByteArray())
    {
        if (!start(arguments))
            return -1;
        m_process.write(input);
        return finish();
    }

    /// What it wrote in all.
    QList<QByteArray> lines() const { return m_output.split('\n').mid(0, m_output.count('\n')); }
    QByteArray diagnostics()
    {
        collect();
        return m_diagnostics;
    }

private:
    void collect()
    {
        m_output += m_process.readAllStandardOutput();
        m_diagnostics += m_process.readAllStandardError();
    }

    static constexpr int patience = 20'000; // for machines that are busy with other things, too

    QProcess m_process;
    QByteArray m_output;
    QByteArray m_diagnostics;
    qsizetype m_taken = 0;
};
