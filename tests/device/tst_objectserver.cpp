// SPDX-License-Identifier: Apache-2.0
#include "RawServer.h"

#include <common/TestMain.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QPointer>
#include <QtTest/QSignalSpy>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <sys/stat.h>

using namespace Qt::StringLiterals;

using vx::system::ObjectServer;

namespace {

// A client on a bare socket.
class Client
{
public:
    explicit Client(const QString& path)
        : descriptor(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0))
    {
        const sockaddr_un address = RawServer::addressOf(path);
        isConnected = ::connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    }
    ~Client() { ::close(descriptor); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool send(const QByteArray& record) const
    {
        return ::send(descriptor, record.constData(), size_t(record.size()), MSG_NOSIGNAL) == record.size();
    }
    // Empty at the end of the connection.
    QByteArray receive() const
    {
        if (!QTest::qWaitFor([this] { return RawServer::isReadable(descriptor); }))
            return "nothing came";
        return RawServer::readFrom(descriptor);
    }

    const int descriptor;
    bool isConnected = false;
};

struct Listening : ObjectServer
{
    explicit Listening(const QString& path)
    {
        [&] { QVERIFY(listen(path, nullptr)); }();
    }
};

int mode(const QString& path)
{
    struct stat status;
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? int(status.st_mode & 07777) : -1;
}

} // namespace

class TstObjectServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"a/b/object"_s);
    }

    void isForTheUserAlone()
    {
        const mode_t before = ::umask(0);
        const Listening server(m_path);
        ::umask(before);
        QCOMPARE(mode(m_path), 0600);
        QCOMPARE(mode(m_folder->filePath(u"a"_s)), 0700);
        QCOMPARE(mode(m_folder->filePath(u"a/b"_s)), 0700);
        QCOMPARE(server.path(), m_path);
    }

    void replacesAStaleSocketOnly()
    {
        QString error;
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        {
            RawServer stale(m_path);
            QVERIFY(stale.isListening);
            ObjectServer early;
            QVERIFY(!early.listen(m_path, &error));
            QVERIFY2(error.contains(u"served already"_s), qPrintable(error));
            stale.stop();
            ObjectServer server;
            QVERIFY2(server.listen(m_path, &error), qPrintable(error));
            QVERIFY(Client(m_path).isConnected);

            ObjectServer second;
            QVERIFY(!second.listen(m_path, &error));
            QVERIFY(!second.isListening() && second.path().isEmpty());
            // Nor is another's removed, should it stand where the own one stood.
            QVERIFY(QFile::rename(m_path, m_path + u"-moved"_s));
            QVERIFY(second.listen(m_path, nullptr));
            server.close();
            QVERIFY(Client(m_path).isConnected);
        }
        QVERIFY(!QFileInfo::exists(m_path));
        QFile file(m_path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        ObjectServer server;
        QVERIFY(!server.listen(m_path, &error));
        QVERIFY2(error.contains(u"no socket"_s), qPrintable(error));
        QVERIFY(QFileInfo(m_path).isFile());
    }

    void leavesNothingBehindWhenItCannotListen()
    {
        QVERIFY(QDir().mkpath(m_path));
        ObjectServer server;
        QString error;
        QVERIFY(!server.listen(m_path, &error));
        QVERIFY(!server.listen(m_path + u"/"_s, &error));
        QVERIFY(!server.listen(u"/proc/no/such/place"_s, &error));
        QVERIFY(!error.isEmpty());
        QCOMPARE(QDir(QFileInfo(m_path).path())
                     .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"object"_s});
    }

    void tellsOfClientsOnce()
    {
        Listening server(m_path);
        QVERIFY(!server.listen(m_path, nullptr));
        QSignalSpy connected(&server, &ObjectServer::clientConnected);
        QSignalSpy disconnected(&server, &ObjectServer::clientDisconnected);
        auto first = std::make_unique<Client>(m_path);
        const Client second(m_path);
        QTRY_COMPARE(connected.size(), 2);
        first.reset();
        QVERIFY(disconnected.wait());
        QCOMPARE(disconnected.first().first().toInt(), 1);
        QCOMPARE(server.clients(), QList<int>{2});
        server.close();
        QVERIFY(!server.isListening() && server.clients().isEmpty());
        QCOMPARE(disconnected.size(), 2);
        QCOMPARE(second.receive(), QByteArray());
        // It may listen again, and goes on counting.
        QVERIFY(server.listen(m_path, nullptr));
        const Client third(m_path);
        QTRY_COMPARE(server.clients(), QList<int>{3});
    }

    void queuesWhatAClientDoesNotTake()
    {
        constexpr int size = 60000;
        Listening server(m_path);
        server.setQueueLimit(20 * size);
        auto client = std::make_unique<Client>(m_path);
        QTRY_COMPARE(server.clients().size(), 1);
        int sent = 0;
        while (server.send(1, QByteArray::number(sent).leftJustified(size)))
            ++sent;
        QVERIFY2(sent >= 20 && sent < 40, qPrintable(QString::number(sent)));
        // Another client is served meanwhile.
        const Client other(m_path);
        QTRY_COMPARE(server.clients().size(), 2);
        QSignalSpy received(&server, &ObjectServer::recordReceived);
        QVERIFY(other.send("question"));
        QVERIFY(received.wait());
        QVERIFY(server.send(2, "answer"));
        QCOMPARE(other.receive(), QByteArray("answer"));
        // What can never arrive is refused, to whomever.
        server.setQueueLimit(100 * size);
        for (const int id : {1, 2}) {
            QVERIFY(!server.send(id, QByteArray()));
            QVERIFY(!server.send(id, QByteArray(2 * 208 * 1024, 'x')));
        }
        QVERIFY(!server.send(3, "nobody"));
        for (int i = 0; i < sent; ++i)
            QCOMPARE(client->receive().trimmed(), QByteArray::number(i));
        QVERIFY(server.send(1, "room again"));
        QCOMPARE(client->receive(), QByteArray("room again"));
        client.reset();
        QVERIFY(!server.send(1, "gone, and not noticed yet"));
        QTRY_COMPARE(server.clients(), QList<int>{2});
    }

    void handlersMayDeleteTheServer()
    {
        using Server = ObjectServer;
        const auto deleted = [this](auto signal, const std::function<void(Server&, std::unique_ptr<Client>&)>& happen) {
            const QPointer<Server> server(new Server);
            connect(server, signal, this, [&] { delete server; });
            if (!server->listen(m_path, nullptr))
                return false;
            auto client = std::make_unique<Client>(m_path);
            const Client other(m_path);
            client->send("one");
            client->send("two");
            happen(*server, client);
            return QTest::qWaitFor([&] { return !server; }) && !QFileInfo::exists(m_path) && other.receive().isEmpty();
        };
        const auto nothing = [](Server&, auto&) {};
        QVERIFY(deleted(&Server::clientConnected, nothing));
        QVERIFY(deleted(&Server::recordReceived, nothing));
        QVERIFY(deleted(&Server::clientDisconnected, [](Server&, auto& client) { client.reset(); }));
        QVERIFY(deleted(&Server::clientDisconnected, [](Server& server, auto&) {
            if (QTest::qWaitFor([&] { return server.clients().size() == 2; }))
                server.close();
        }));
    }

    void handlersMaySpinAnEventLoop()
    {
        Listening server(m_path);
        QList<QByteArray> received;
        connect(&server, &ObjectServer::recordReceived, &server, [&](int, const QByteArray& record) {
            received.append(record);
            // The others arrive inside the handler of the first.
            if (received.size() == 1)
                QTRY_COMPARE(received.size(), 3);
        });
        const Client first(m_path);
        const Client second(m_path);
        QVERIFY(first.send("first"));
        QVERIFY(first.send("second"));
        QVERIFY(second.send("other"));
        QTRY_COMPARE(received.size(), 3);
        QVERIFY(received.indexOf("first") < received.indexOf("second"));
        QVERIFY(received.contains("other"));
    }

private:
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_folder;
};

ZEL_TEST(TstObjectServer)
#include "tst_objectserver.moc"
