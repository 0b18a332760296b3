// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>
#include <vector>

namespace vx::system {
class ObjectServer;
}

namespace zelcore {

/// The applications that take invitations and chats: they take anything, and tell.
class InvocationTargets : public QObject
{
    Q_OBJECT
public:
    explicit InvocationTargets(QObject* parent = nullptr);
    ~InvocationTargets() override;

    bool start(const QString& root, QString* error);
    void stop();

Q_SIGNALS:
    /// Any record, before anything is done about it; \a process is the number of whose it is.
    void passed(const QString& target, qint64 process, const QByteArray& record);
    void received(const QString& target, const QString& action, const QString& mimeType, const QByteArray& data);
    /// Somebody was invited.
    void invited(const QString& ecoId);
    void refused(const QString& line);

private:
    void take(const QString& target, const QByteArray& record);

    std::vector<std::unique_ptr<vx::system::ObjectServer>> m_servers;
};

} // namespace zelcore
