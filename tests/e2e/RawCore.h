// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QJsonObject>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QString>

#include <memory>
#include <vector>

class QSocketNotifier;

/// The other end of the object for tests, down to the bytes: plain sockets and QJsonDocument, nothing of the library,
/// so that an error on our side cannot cancel itself out.
///
/// It answers requests for the globals that were set and, when told so, requests for full lists with empty ones. All
/// else that arrives is only kept.
class RawCore : public QObject
{
    Q_OBJECT

public:
    explicit RawCore(const QString& root);
    ~RawCore() override;

    QString path() const { return m_path; }

    bool listen();
    /// Ends as a service does that is killed: the socket's file stays, nobody listens on it.
    void die();
    /// Ends in good order.
    void leave();

    /// What is answered when \a name is asked for. Not announced by itself.
    void setGlobal(const QString& name, const QJsonObject& value) { m_globals.insert(name, value); }
    void setPermission(const QString& state);
    /// Full lists are answered as empty ones from now on.
    void serveEmptyLists() { m_servesLists = true; }
    /// setGlobal() and a "listChange" with these members to everybody.
    void changeGlobal(const QString& name, const QJsonObject& members);
    void changeState(const QString& state);

    void send(const QByteArray& record);
    void sendMessage(const QString& type, const QJsonObject& body);

    bool waitForClient();
    /// Everything that arrived so far, as it arrived.
    const QList<QByteArray>& records() const { return m_records; }
    /// The bodies of those of this type, in order of arrival.
    QList<QJsonObject> bodies(const QString& type) const;
    /// Waits for the next record of this type that was not taken before. Empty when none comes.
    QJsonObject take(const QString& type);

    static QByteArray recordOf(const QString& type, const QJsonObject& body);
    static QJsonObject permission(const QString& state);

private:
    struct Client;

    void accept();
    void read(Client* client);
    void answer(Client* client, const QString& type, const QJsonObject& body);
    void answerElements(Client* client, const QJsonObject& request);
    void answerList(Client* client, const QJsonObject& request);
    static void write(const Client& client, const QByteArray& record);
    void close();

    const QString m_path;
    int m_listener = -1;
    std::unique_ptr<QSocketNotifier> m_notifier;
    std::vector<std::unique_ptr<Client>> m_clients;
    QJsonObject m_globals;
    bool m_servesLists = false;
    QList<QByteArray> m_records;
    QHash<QString, int> m_taken;
};
