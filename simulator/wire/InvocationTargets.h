// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QHash>
#include <QtCore/QObject>
#include <QtCore/QSet>

#include <map>
#include <memory>

namespace vx::system {
class ObjectServer;
}

namespace zelcore {

/// The applications that take invitations and chats: they take anything, and tell, unless they were told otherwise.
class InvocationTargets : public QObject
{
    Q_OBJECT
public:
    explicit InvocationTargets(QObject* parent = nullptr);
    ~InvocationTargets() override;

    bool start(const QString& root, QString* error);
    void stop();

    static QStringList names();
    Simulator::TargetState state(const QString& target) const { return m_states.value(target); }
    /// At once when it runs. Empty, or why not.
    QString setState(const QString& target, Simulator::TargetState state);

Q_SIGNALS:
    /// Any record, before anything is done about it; \a process is the number of whose it is.
    void passed(const QString& target, qint64 process, const QByteArray& record);
    void received(const QString& target, const QString& action, const QString& mimeType, const QByteArray& data);
    /// Somebody was invited.
    void invited(const QString& ecoId);
    void refused(const QString& line);

private:
    void take(const QString& target, const QByteArray& record);

    QString open(const QString& target);
    void close(const QString& target);

    QString m_folder; ///< Where their sockets are; empty while they do not run.
    QHash<QString, Simulator::TargetState> m_states;
    std::map<QString, std::unique_ptr<vx::system::ObjectServer>> m_servers;
    QSet<QString> m_closed; ///< those that refuse, with a file of ours in the place of their socket
};

} // namespace zelcore
