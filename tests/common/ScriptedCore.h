// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/system/ObjectServer.h>

#include <QtCore/QHash>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>
#include <QtCore/QObject>
#include <QtCore/QQueue>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <functional>

/// The core service at the end of a script: a test says what it answers by itself and reads the rest of what the
/// library wrote, record by record, as text.
///
/// Make it before anything opens the platform object: it sets PPS_ROOT to a folder of its own and serves the object
/// there. It sends to every client. Runs on the test's event loop.
class ScriptedCore : public QObject
{
public:
    using Answer = std::function<void(const QJsonObject& body)>;

    ScriptedCore()
    {
        qputenv("PPS_ROOT", m_root.path().toLocal8Bit());
        QString error;
        if (!m_root.isValid() || !m_server.listen(QStringLiteral("/pps/services/zelcore/platform"), &error))
            qFatal("cannot serve the platform object: %s", qPrintable(error));
        connect(&m_server, &vx::system::ObjectServer::recordReceived, this,
                [this](int, const QByteArray& record) { receive(record); });
    }

    static QJsonObject json(const QByteArray& text) { return QJsonDocument::fromJson(text).object(); }

    /// From now on messages of this type are answered here and do not show in nextRecord().
    void answer(const QString& type, Answer how) { m_answers.insert(type, std::move(how)); }
    void leaveToTest(const QString& type) { m_answers.remove(type); }

    /// The next record that was not answered, or an empty one after five seconds without any.
    QByteArray nextRecord()
    {
        if (!QTest::qWaitFor([this] { return !m_records.isEmpty(); }))
            return {};
        return m_records.dequeue();
    }
    /// The next record's message without the lines around it; of a record without them, the record.
    QByteArray nextMessage()
    {
        const QByteArray record = nextRecord();
        return record.startsWith(head) && record.endsWith('\n')
                   ? record.mid(head.size(), record.size() - head.size() - 1)
                   : record;
    }
    /// What has come and was not answered, without waiting.
    bool hasRecord() const { return !m_records.isEmpty(); }

    void send(const QString& type, const QJsonObject& body) { sendRecord(recordOf(type, body)); }
    static QByteArray recordOf(const QString& type, const QJsonObject& body)
    {
        const QJsonObject message{{type, body}};
        return "@platform\ndat:json:" + QJsonDocument(message).toJson(QJsonDocument::Compact) + '\n';
    }
    void sendRecord(const QByteArray& record)
    {
        const QList<int> clients = m_server.clients();
        for (int client : clients)
            m_server.send(client, record);
    }
    bool hasClient() const { return !m_server.clients().isEmpty(); }

    QString root() const { return m_root.path(); }
    vx::system::ObjectServer& server() { return m_server; }

private:
    inline static const QByteArray head = QByteArrayLiteral("msg::zel\ndat:json:");

    void receive(const QByteArray& record)
    {
        const QJsonObject message = json(record.startsWith(head) ? record.mid(head.size()) : record);
        const QString type = message.isEmpty() ? QString() : message.begin().key();
        const auto how = m_answers.value(type);
        if (how)
            how(message.value(type).toObject());
        else
            m_records.enqueue(record);
    }

    QTemporaryDir m_root;
    vx::system::ObjectServer m_server;
    QHash<QString, Answer> m_answers;
    QQueue<QByteArray> m_records;
};
