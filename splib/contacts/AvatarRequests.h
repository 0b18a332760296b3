// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>

namespace zelsplib {

/// Who waits for the picture on which stream. Users with the same picture wait on one stream together; a user waits
/// for one picture, the one asked for last.
class AvatarRequests
{
public:
    void add(const QString& streamId, const QString& userId)
    {
        const auto known = m_streams.constFind(userId);
        if (known != m_streams.constEnd() && *known == streamId)
            return;
        cancel(userId);
        m_streams.insert(userId, streamId);
        m_users[streamId].append(userId);
    }

    void cancel(const QString& userId)
    {
        const auto users = m_users.find(m_streams.take(userId));
        if (users == m_users.end())
            return;
        users->removeOne(userId);
        if (users->isEmpty())
            m_users.erase(users);
    }

    /// The users who wait on a stream, in the order in which they began to. They wait no more.
    QStringList take(const QString& streamId)
    {
        const QStringList users = m_users.take(streamId);
        for (const QString& userId : users)
            m_streams.remove(userId);
        return users;
    }

private:
    QHash<QString, QStringList> m_users;
    QHash<QString, QString> m_streams;
};

} // namespace zelsplib
