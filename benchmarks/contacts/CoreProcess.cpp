// SPDX-License-Identifier: Apache-2.0
#include "CoreProcess.h"

#include <QtCore/QFile>
#include <QtCore/QThread>

#include <cstdio>
#include <cstdlib>

#include <csignal>

using namespace Qt::StringLiterals;

CoreProcess::CoreProcess(const QString& program, int contacts)
{
    m_process.setStandardOutputFile(QProcess::nullDevice());
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_process.start(program,
                    {u"--root"_s, m_folder.path(), u"--contacts"_s, QString::number(contacts), u"--seed"_s, u"1"_s});
    const QString object = m_folder.path() + u"/services/zelcore/platform"_s;
    // The socket is there once clients can connect.
    while (!QFile::exists(object)) {
        if (m_process.waitForFinished(1)) {
            std::fprintf(stderr, "bench_contacts: %s did not serve\n", qPrintable(program));
            std::exit(1);
        }
    }
    qputenv("PPS_ROOT", QFile::encodeName(m_folder.path()));
}

CoreProcess::~CoreProcess()
{
    tell("quit");
    if (!m_process.waitForFinished(5000))
        m_process.kill();
    m_process.waitForFinished();
}

void CoreProcess::tell(const QByteArray& command)
{
    m_process.write(command + '\n');
    // Written by the event loop otherwise, at some later time.
    m_process.waitForBytesWritten();
}

void CoreProcess::pause()
{
    ::kill(pid_t(m_process.processId()), SIGSTOP);
}

void CoreProcess::resume()
{
    ::kill(pid_t(m_process.processId()), SIGCONT);
}
