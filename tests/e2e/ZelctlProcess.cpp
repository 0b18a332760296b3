// SPDX-License-Identifier: Apache-2.0
#include "ZelctlProcess.h"

#include <QtCore/QJsonDocument>
#include <QtTest/QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

constexpr int patience = 20'000; // for machines that are busy with other things, too

}

ZelctlProcess::ZelctlProcess(const QString& root)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(u"PPS_ROOT"_s);
    if (!root.isEmpty())
        environment.insert(u"PPS_ROOT"_s, root);
    m_process.setProcessEnvironment(environment);
    m_process.setProgram(QStringLiteral(ZELCTL_PATH));
}

ZelctlProcess::~ZelctlProcess()
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    m_process.kill();
    m_process.waitForFinished(patience);
}

bool ZelctlProcess::start(const QStringList& arguments)
{
    m_process.setArguments(arguments);
    m_process.start();
    return m_process.waitForStarted(patience);
}

QJsonObject ZelctlProcess::startShell(const QStringList& options)
{
    return start(QStringList{u"--json"_s} + options + QStringList{u"shell"_s}) ? take() : QJsonObject();
}

void ZelctlProcess::write(const QByteArray& line)
{
    m_process.write(line + '\n');
}

QByteArray ZelctlProcess::takeLine()
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
    const qsizetype end = m_output.indexOf('\n', m_taken);
    const QByteArray line = m_output.mid(m_taken, end - m_taken);
    m_taken = end + 1;
    return line;
}

QJsonObject ZelctlProcess::ask(const QByteArray& command)
{
    write(command);
    return take();
}

QList<QJsonObject> ZelctlProcess::takeUntil(const QString& registrationState)
{
    QList<QJsonObject> result;
    for (;;) {
        const QJsonObject line = take();
        const bool isState = line.value("signal"_L1).toString() == "registrationStateUpdated"_L1;
        if (line.isEmpty() || (isState && line.value("state"_L1).toString() == registrationState))
            return result;
        result += line;
    }
}

void ZelctlProcess::interrupt()
{
    ::kill(pid_t(m_process.processId()), SIGINT);
}

int ZelctlProcess::finish()
{
    m_process.closeWriteChannel();
    const bool ended = QTest::qWaitFor([this] { return m_process.state() == QProcess::NotRunning; }, patience);
    collect();
    return ended && m_process.exitStatus() == QProcess::NormalExit ? m_process.exitCode() : -1;
}

int ZelctlProcess::run(const QStringList& arguments, const QByteArray& input)
{
    if (!start(arguments))
        return -1;
    m_process.write(input);
    return finish();
}

QByteArray ZelctlProcess::diagnostics()
{
    collect();
    return m_diagnostics;
}

QList<QByteArray> ZelctlProcess::lines() const
{
    QList<QByteArray> lines = m_output.split('\n');
    lines.removeLast();
    return lines;
}

QJsonObject ZelctlProcess::parsed(const QByteArray& line)
{
    return QJsonDocument::fromJson(line).object();
}

void ZelctlProcess::collect()
{
    m_output += m_process.readAllStandardOutput();
    m_diagnostics += m_process.readAllStandardError();
}
