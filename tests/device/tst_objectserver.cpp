// SPDX-License-Identifier: Apache-2.0
#include <common/FailingAllocations.h>
#include <common/Heard.h>
#include <common/RawServer.h>
#include <common/TestMain.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QPointer>
#include <QtCore/QSocketNotifier>
#include <QtTest/QSignalSpy>

#include <algorithm>
#include <functional>
#include <optional>
#include <sys/resource.h>
#include <sys/stat.h>

using vx::system::ObjectServer;

namespace {

struct Listening : ObjectServer
{
    explicit Listening(const QString& path) { QVERIFY(listen(path, nullptr)); }
};

} // namespace

class TstObjectServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_application.emplace(m_argumentCount, nullptr);
        m_folder = std::make_unique<QTemporaryDir>();
        m_path = m_folder->filePath(u"a/b/object"_s);
    }

    void replacesAStaleSocketOnly()
    {
        const auto refused = [](const QString& path, const QString& why) {
            ObjectServer server;
            QString error;
            return !server.listen(path, &error) && error.contains(why) && !server.isListening() &&
                   server.path().isEmpty();
        };
        QVERIFY(QDir().mkpath(QFileInfo(m_path).path()));
        {
            RawServer stale(m_path, 0);
            const RawEnd waiting(m_path); // and there is no room for another
            QVERIFY(refused(m_path, u"served already"_s));
            stale.stop();
            Listening server(m_path);
            QVERIFY(RawEnd(m_path).descriptor != -1);
            QVERIFY(refused(m_path, u"served already"_s));
            // Nor is another's removed, should it stand where the own one stood.
            QVERIFY(QFile::rename(m_path, m_path + u"-moved"_s));
            const Listening second(m_path);
            server.close();
            QCOMPARE(server.path(), QString());
            QVERIFY(RawEnd(m_path).descriptor != -1);
        }
        QVERIFY(QFile::remove(m_path + u"-moved"_s));
        const QString elsewhere = m_folder->filePath(u"elsewhere"_s);
        QVERIFY(QFile::link(elsewhere, m_path)); // whoever laid this wants a socket there, or the one there gone
        QVERIFY(refused(m_path, u"no socket"_s) && !QFile::exists(elsewhere));
        RawServer stale(elsewhere);
        stale.stop();
        QVERIFY(refused(m_path, u"no socket"_s) && QFile::exists(elsewhere) && QFile::remove(m_path));
        QVERIFY(QFile(m_path).open(QIODevice::WriteOnly)); // a file
        QVERIFY(refused(m_path, u"no socket"_s));
        QVERIFY(refused(u"/proc"_s, u"no socket"_s));
        QVERIFY(refused(m_path + u"/"_s, QString()));
        QVERIFY(refused(u"/proc/no/such/place"_s, QString()));
        QCOMPARE(QDir(QFileInfo(m_path).path())
                     .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot),
                 QStringList{u"object"_s});
    }

    void tellsOfClientsOnce()
    {
        const mode_t before = ::umask(0);
        Listening server(m_path);
        ::umask(before);
        for (const QString& place : {u"a"_s, u"a/b"_s, u"a/b/object"_s}) // for the user alone
            QVERIFY(!(QFileInfo(m_folder->filePath(place)).permissions() & QFile::Permissions::fromInt(0x77)));
        QCOMPARE(server.path(), m_path);
        QVERIFY(!server.listen(m_path, nullptr));
        Heard heard;
        heard.follow(server);
        connect(&server, &ObjectServer::clientDisconnected, &server, &ObjectServer::close);
        RawEnd first(m_path);
        const RawEnd second(m_path);
        const RawEnd third(m_path);
        QTRY_COMPARE(heard.lines().size(), 3);
        first.close();
        QTRY_VERIFY(!server.isListening() && server.clients().isEmpty());
        QCOMPARE(heard.lines(),
                 QStringList({u"clientConnected 1"_s, u"clientConnected 2"_s, u"clientConnected 3"_s,
                              u"clientDisconnected 1"_s, u"clientDisconnected 2"_s, u"clientDisconnected 3"_s}));
        QCOMPARE(second.receive(), QByteArray());
        // It may listen again, under another application object, too, and goes on counting.
        QVERIFY(server.listen(m_path, nullptr));
        m_application.emplace(m_argumentCount, nullptr);
        const RawEnd fourth(m_path);
        QTRY_COMPARE(server.clients(), QList<int>{4});
        QVERIFY(server.processOf(4) == ::getpid() && server.processOf(3) == 0);
        QTRY_COMPARE(server.findChildren<QSocketNotifier*>().size(), 3); // its own, and two for the fourth
        connect(&server, &ObjectServer::clientConnected, &server, &ObjectServer::close);
        const RawEnd fifth(m_path);
        QTRY_VERIFY(!server.isListening());
    }

    void queuesWhatAClientDoesNotTake()
    {
        constexpr int size = 60000;
        const QByteArray longest(2 * 208 * 1024 - 32, 'x');
        Listening server(m_path);
        RawEnd client(m_path);
        const RawEnd other(m_path);
        QTRY_COMPARE(server.clients().size(), 2);
        for (int times = 0; times < 2; ++times) {
            int sent = 0;
            const auto sendAll = [&](qint64 limit) {
                server.setQueueLimit(limit);
                while (server.send(1, QByteArray::number(sent).leftJustified(size)))
                    ++sent;
                return sent;
            };
            const int held = sendAll(-2 * size); // by the kernel
            QCOMPARE(sendAll(20 * size) - held, 20);
            QVERIFY(server.send(2, "another is served meanwhile"));
            QVERIFY(other.receive().startsWith("another"));
            // What can never arrive is refused, to whomever.
            server.setQueueLimit(100 * size);
            for (const int id : {1, 2})
                QVERIFY(!server.send(id, QByteArray("")) && !server.send(id, longest + 'x'));
            QVERIFY(server.send(1, longest));
            for (int i = 0; i < sent; ++i)
                QCOMPARE(client.receive().trimmed(), QByteArray::number(i));
            QCOMPARE(client.receive(), longest);
        }
        const auto notifiers = server.findChildren<QSocketNotifier*>();
        for (const QSocketNotifier* notifier : notifiers)
            QTRY_COMPARE(notifier->isEnabled(), notifier->type() == QSocketNotifier::Read);
        // Nobody is served without end.
        QByteArray order;
        connect(&server, &ObjectServer::recordReceived, this, [&](int id) { order += QByteArray::number(id); });
        for (int i = 0; i < 20; ++i)
            QVERIFY(client.send("x") && other.send("x"));
        QTRY_COMPARE(order.size(), 40);
        QVERIFY(order.startsWith(QByteArray(16, '1') + '2') || order.startsWith(QByteArray(16, '2') + '1'));
        QVERIFY(!server.send(3, "nobody"));
        client.close();
        QVERIFY(!server.send(1, "gone, and not noticed yet"));
        QTRY_COMPARE(server.clients(), QList<int>{2});
    }

    void losesARecordOrAClientAndNothingElseWithoutMemory()
    {
        qputenv("QT_NO_GLIB", "1"); // which ends a process without memory
        m_application.emplace(m_argumentCount, nullptr);
        qunsetenv("QT_NO_GLIB");
        struct Served
        {
            explicit Served(const QString& path)
                : server(path)
                , client(path)
            {
                QObject::connect(&server, &ObjectServer::recordReceived, &server, [this] { isHeard = true; });
                QTRY_COMPARE(server.clients(), QList<int>{1});
                QVERIFY(client.send("heard"));
            }
            Listening server;
            const RawEnd client;
            bool isHeard = false;
            int taken = 0;
        };
        const QByteArray large(150000, 'x');
        const auto act = [&](Served& served) {
            while (served.taken < 5 && served.server.send(1, large))
                ++served.taken;
            QCoreApplication::processEvents();
        };
        const auto check = [&](Served& served) {
            QTRY_VERIFY(served.isHeard || served.server.clients().isEmpty());
            if (!served.isHeard)
                return;
            for (int more = 0; more < 5; ++more, ++served.taken)
                QVERIFY(served.server.send(1, large));
            for (; served.taken > 0; --served.taken)
                QCOMPARE(served.client.receive(), large);
            QVERIFY(served.server.send(1, "last") && served.client.receive() == "last");
        };
        QVERIFY(failing::eachInTurn([this] { return std::make_unique<Served>(m_path); }, act, check) > 1);
    }

    void takesAWaitingClientWhenThereAreDescriptorsAgain()
    {
        Listening server(m_path);
        const QSignalSpy tries(server.findChild<QSocketNotifier*>(),
                               SIGNAL(activated(QSocketDescriptor, QSocketNotifier::Type)));
        const RawEnd first(m_path);
        QTRY_COMPARE(server.clients().size(), 1); // what a sanitizer looks at needs descriptors the first time, too
        const RawEnd second(m_path);
        rlimit limit;
        ::getrlimit(RLIMIT_NOFILE, &limit);
        const int lowestFree = ::dup(0);
        ::close(lowestFree);
        const rlimit none = {rlim_t(lowestFree), limit.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &none);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"a client has to wait: Too many open files$"_s));
        QTest::failOnWarning(QRegularExpression(u"."_s)); // it is said once
        QTRY_VERIFY(tries.size() > 3);
        QVERIFY(tries.size() < 50 && server.send(1, "served meanwhile"));
        ::setrlimit(RLIMIT_NOFILE, &limit);
        QTRY_COMPARE(server.clients().size(), 2);
        QVERIFY(server.send(2, "served, too") && second.receive() == "served, too");
    }

    void handlersMayDeleteTheServer()
    {
        const auto deleted = [this](auto signal, bool serverCloses = false) {
            const QPointer<ObjectServer> server(new ObjectServer);
            connect(server, signal, this, [&] { delete server; });
            if (!server->listen(m_path, nullptr))
                return false;
            RawEnd client(m_path);
            const RawEnd other(m_path);
            client.send("one");
            client.send("two");
            if (QTest::qWaitFor([&] { return !server || server->clients().size() == 2; }) && server)
                serverCloses ? server->close() : client.close();
            return QTest::qWaitFor([&] { return !server; }) && !QFileInfo::exists(m_path) && other.receive().isEmpty();
        };
        QVERIFY(deleted(&ObjectServer::clientConnected) && deleted(&ObjectServer::recordReceived));
        QVERIFY(deleted(&ObjectServer::clientDisconnected) && deleted(&ObjectServer::clientDisconnected, true));
    }

    // The others arrive inside the handler of the first.
    void handlersMaySpinAnEventLoop()
    {
        Listening server(m_path);
        QByteArrayList received;
        connect(&server, &ObjectServer::recordReceived, &server, [&](int client, const QByteArray& record) {
            received.append(QByteArray::number(client) + record);
            if (received.size() == 1)
                QTRY_COMPARE(received.size(), 3);
        });
        const RawEnd first(m_path);
        const RawEnd second(m_path);
        QVERIFY(first.send("a") && first.send("b") && second.send("a"));
        QTRY_COMPARE(received.size(), 3);
        QVERIFY(received.indexOf("1a") < received.indexOf("1b") && received.contains("2a"));
    }

    void handlersMayStopReadingAndClose()
    {
        Listening server(m_path);
        server.setReading(false);
        const RawEnd client(m_path);
        QTRY_COMPARE(server.clients().size(), 1);
        QVERIFY(client.send("a") && client.send("b") && client.send("c"));
        QByteArray heard;
        connect(&server, &ObjectServer::recordReceived, &server, [&](int, const QByteArray& record) {
            heard += record;
            record == "a" ? server.setReading(false) : server.close();
        });
        for (const char* const expected : {"a", "ab"}) {
            const auto notifiers = server.findChildren<QSocketNotifier*>();
            QCOMPARE(std::count_if(notifiers.begin(), notifiers.end(), std::mem_fn(&QSocketNotifier::isEnabled)), 1);
            server.setReading(true);
            QTRY_COMPARE(heard, expected);
        }
        QVERIFY(!server.isListening());
    }

private:
    int m_argumentCount = 0;
    std::optional<QCoreApplication> m_application;
    QString m_path;
    std::unique_ptr<QTemporaryDir> m_folder;
};

ZEL_TEST_WITHOUT_APPLICATION(TstObjectServer)
#include "tst_objectserver.moc"
