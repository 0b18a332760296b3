// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

/// zelcore-sim as a process of its own, so that what the service costs is on another's account, the same for every
/// client. Everybody it makes up comes from one seed.
class CoreProcess
{
public:
    /// Serves when this returns, or says why not and ends the program.
    CoreProcess(const QString& program, int contacts);
    ~CoreProcess();
    Q_DISABLE_COPY_MOVE(CoreProcess)

    QString root() const { return m_folder.path(); }
    qint64 process() const { return m_process.processId(); }
    /// Executes a command of the simulator.
    void tell(const QByteArray& command);
    /// The service stands still until resume(): what is written to it meanwhile waits. However slowly an application
    /// starts, under a tool that counts say, the service then hears from it at once, and takes it for one that starts.
    void pause();
    void resume();

private:
    QTemporaryDir m_folder;
    QProcess m_process;
};
