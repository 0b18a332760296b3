// SPDX-License-Identifier: Apache-2.0
#include "RawServer.h"

#include <common/TestMain.h>

#include <pps/object.h>
#include <vx/system/ObjectServer.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtTest/QSignalSpy>
#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

#include <csignal>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

using namespace Qt::StringLiterals;

using vx::system::ObjectServer;

namespace {

constexpr auto objectPath = "/pps/services/test/object";

// A descriptor as an application holds it: plain read, write, close.
class Object
{
public:
    explicit Object(const char* name = objectPath, int flags = O_RDWR)
        : descriptor(pps_object_open(name, flags))
        , error(descriptor == -1 ? errno : 0)
    {
    }
    ~Object() { close(); }
    Object(const Object&) = delete;
    Object& operator=(const Object&) = delete;

    void close()
    {
        if (descriptor != -1)
            ::close(std::exchange(descriptor, -1));
    }
    bool write(const QByteArray& record) const
    {
        return ::write(descriptor, record.constData(), size_t(record.size())) == record.size();
    }
    // What was written and has not been taken off the descriptor.
    int waiting() const
    {
        int bytes = -1;
        return ::ioctl(descriptor, TIOCOUTQ, &bytes) == 0 ? bytes : -1;
    }
    bool isReadable() const { return RawServer::isReadable(descriptor); }
    // One read of 64 KiB, as the library does it. Runs the event loop until there is something, for the server's sake.
    QByteArray read() const
    {
        if (!QTest::qWaitFor([this] { return isReadable(); }))
            return "nothing came";
        return RawServer::readFrom(descriptor, 65536);
    }

    int descriptor;
    const int error;
};

// A server that sends each record back and keeps it.
class EchoServer : public ObjectServer
{
public:
    explicit EchoServer(const QString& path = QString::fromLatin1(objectPath))
        : m_path(path)
    {
        connect(this, &ObjectServer::recordReceived, this, [this](int client, const QByteArray& record) {
            received.append(record);
            send(client, record);
        });
        start();
    }
    void start() { QVERIFY(listen(m_path, nullptr)); }

    QList<QByteArray> received;

private:
    const QString m_path;
};

int threadCount()
{
    return int(QDir(u"/proc/self/task"_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot).size());
}

QString file()
{
    return QString::fromLocal8Bit(qgetenv("PPS_ROOT")) + u"/services/test/object"_s;
}

// An object, and the server that has taken its connection and does nothing by itself.
struct Served
{
    Served() { QVERIFY(server.accept()); }

    RawServer server{file()};
    Object object;
};

constexpr auto numbered = RawServer::numbered;

} // namespace

class TstObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // The default: a write that raises SIGPIPE ends this program.
        ::signal(SIGPIPE, SIG_DFL);
    }

    void init()
    {
        m_root = std::make_unique<QTemporaryDir>();
        qputenv("PPS_ROOT", m_root->path().toLocal8Bit());
        QVERIFY(QDir().mkpath(QFileInfo(file()).path()));
        m_threads = threadCount();
    }

    void cleanup() { QTRY_COMPARE(threadCount(), m_threads); }

    void carriesRecordsBothWays()
    {
        EchoServer server;
        const Object object;
        const Object other;
        QTRY_COMPARE(server.clients().size(), 2);
        for (const int size : {4096, 65535, 65536, 65537, 200000, 1}) {
            const QByteArray record = numbered(size, size);
            QVERIFY(object.write(record));
            QVERIFY(other.write("other"));
            // What the read has no room for is gone: the next record is the next one.
            QCOMPARE(object.read(), record.left(65536));
            QCOMPARE(other.read(), QByteArray("other"));
            QVERIFY(server.received.contains(record));
        }
        QVERIFY(!object.isReadable() && !other.isReadable());
        int sockets = 0;
        for (int descriptor = 3; descriptor < 100; ++descriptor) {
            struct stat status;
            if (::fstat(descriptor, &status) != 0 || !S_ISSOCK(status.st_mode))
                continue;
            ++sockets;
            QVERIFY(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
        }
        QVERIFY(sockets >= 7);
    }

    void carriesEmptyRecordsNowhere()
    {
        const Served served;
        QVERIFY(::send(served.object.descriptor, "", 0, 0) == 0);
        QVERIFY(served.server.send(QByteArray()));
        QVERIFY(served.object.write("a"));
        QVERIFY(served.server.send("b"));
        QCOMPARE(served.server.receive(), QByteArray("a"));
        QCOMPARE(served.object.read(), QByteArray("b"));
    }

    void failsToOpenWhatIsNotServed()
    {
        QCOMPARE(Object().error, ENOENT);
        {
            RawServer server(file());
            QVERIFY(server.isListening);
            server.stop();
            QVERIFY(QFile::exists(file()));
            QCOMPARE(Object().error, ECONNREFUSED);
        }
        {
            // Nobody accepts, and there is no more room to wait in: a moment's patience, no more.
            const RawServer server(file(), 0);
            const Object waiting;
            QCOMPARE(waiting.error, 0);
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(Object().error, ETIMEDOUT);
            QVERIFY(timer.elapsed() < 4000);
        }
        QCOMPARE(Object(nullptr).error, EINVAL);
    }

    void opensOtherFilesPlainly()
    {
        QVERIFY(::mkfifo(QFile::encodeName(file()).constData(), 0600) == 0);
        const Object object(objectPath, O_RDWR);
        QVERIFY(object.write("pipe"));
        QCOMPARE(object.read(), QByteArray("pipe"));
        QCOMPARE(threadCount(), m_threads);
        // The root belongs to the first name alone, not to one that begins like it; unset, paths are taken as they
        // stand.
        QVERIFY(QDir().mkpath(m_root->filePath(u"x"_s)));
        QCOMPARE(Object("/ppsx", O_RDONLY).error, ENOENT);
        QCOMPARE(Object("/pps/x", O_RDONLY | O_DIRECTORY).error, 0);
        QCOMPARE(Object(QFile::encodeName(m_root->path()).constData(), O_RDONLY | O_DIRECTORY).error, 0);
        qunsetenv("PPS_ROOT");
        QCOMPARE(Object("/pps/x", O_RDONLY | O_DIRECTORY).error, ENOENT);
    }

    void opensAtPathsOfAnyLength()
    {
        qputenv("PPS_ROOT", m_root->filePath(QString(100, u'r')).toLocal8Bit());
        const QByteArray name = "/pps/" + QByteArray(120, 'd') + '/' + QByteArray(200, 'o');
        EchoServer server(QString::fromLatin1(name));
        QVERIFY(server.path().endsWith(QString(200, u'o')));
        const Object object(name.constData());
        QCOMPARE(object.error, 0);
        QVERIFY(object.write("far"));
        QCOMPARE(object.read(), QByteArray("far"));
        server.close();
        QVERIFY(!QFile::exists(server.path()));
        server.start();
        QSignalSpy connected(&server, &ObjectServer::clientConnected);
        QVERIFY(connected.wait());
    }

    void isQuietWhileTheServerIsAway()
    {
        EchoServer server;
        const Object object;
        for (int round = 0; round < 3; ++round) {
            QVERIFY(object.write("before"));
            QCOMPARE(object.read(), QByteArray("before"));
            server.close();
            QVERIFY(object.write("lost"));
            QVERIFY(!QTest::qWaitFor([&] { return object.isReadable(); }, 50));
            server.received.clear();

            QSignalSpy connected(&server, &ObjectServer::clientConnected);
            server.start();
            QVERIFY(connected.wait(1500));
            QVERIFY(object.write("after"));
            QCOMPARE(object.read(), QByteArray("after"));
            QCOMPARE(server.received, QList<QByteArray>{"after"});
        }
    }

    void picksUpAServiceThatRestartsWhileTheCallerIsBusy()
    {
        Served served;
        // Twice as much is said as is taken while nobody reads, the second time after all that was said first.
        int said = 0;
        served.server.sendAll(&said, 35000);
        QVERIFY(said < 200); // it is held back, and the other direction is free
        QVERIFY(served.object.write("meanwhile"));
        QCOMPARE(served.server.receive(), QByteArray("meanwhile"));
        served.server.hangUp();
        QVERIFY(served.server.accept());
        QVERIFY(served.object.write("heard"));
        QCOMPARE(served.server.receive(), QByteArray("heard"));
        served.server.sendAll(&said, 35000);
        QVERIFY(served.object.write("unread"));
        QTRY_COMPARE(served.object.waiting(), 0);
        served.server.hangUp();
        for (int i = 0; i < said; ++i)
            QCOMPARE(served.object.read(), numbered(i, 35000));
        QVERIFY(served.server.accept());
        QVERIFY(served.object.write("again"));
        QCOMPARE(served.server.receive(), QByteArray("again"));
    }

    // Which calls one that hangs up only now and then, and raises no pipe signals.
    void isHarmlessWithAServerThatHangsUp()
    {
        QElapsedTimer timer;
        timer.start();
        Served served;
        for (int calls = 1; calls < 4; ++calls)
            QVERIFY(served.server.accept());
        // The first call is the opening; the others come one by one.
        QVERIFY2(timer.elapsed() >= 500, qPrintable(QString::number(timer.elapsed())));
        ::shutdown(served.server.client(), SHUT_RDWR);
        for (int i = 0; i < 100; ++i) {
            QVERIFY(served.object.write("into the dark"));
            if (i == 50)
                served.server.stop();
        }
        QVERIFY(!served.object.isReadable());
    }

    void losesOnlyWhatIsPastTheLimitOfAServerThatDoesNotRead()
    {
        constexpr int size = 50000;
        constexpr int count = 200;
        const Served served;
        const auto& [server, object] = served;
        QElapsedTimer timer;
        timer.start();
        for (int i = 0; i < count; ++i)
            QVERIFY(object.write(numbered(i, size)));
        QVERIFY(timer.elapsed() < 5000);

        // Before any room is made, or the last ones would find it.
        QTRY_COMPARE(object.waiting(), 0);
        int received = 0;
        for (QByteArray record = server.receive(); !record.isEmpty(); record = server.receive(500))
            QCOMPARE(record, numbered(received++, size));
        // The queue's 1 MiB and what the kernel holds, in order and without a gap.
        QVERIFY2(received >= 1024 * 1024 / (size + 64) && received < 60, qPrintable(QString::number(received)));
        QVERIFY(object.write("still there"));
        QCOMPARE(server.receive(), QByteArray("still there"));
    }

    void aChildOfTheProcessHasNoPartInIt()
    {
        EchoServer server;
        Object object;
        QTRY_COMPARE(server.clients().size(), 1);
        int stop[2];
        QVERIFY(::pipe2(stop, O_CLOEXEC) == 0);
        const pid_t child = ::fork();
        if (child == 0) {
            ::signal(SIGALRM, SIG_DFL);
            ::alarm(10);
            for (int i = 0; i < 1000; ++i) {
                if (::write(object.descriptor, "from the child", 14) >= 0)
                    ::_exit(1);
            }
            if (object.isReadable())
                ::_exit(2);
            ::close(stop[1]);
            char byte;
            ::_exit(::read(stop[0], &byte, 1) == 0 ? 0 : 3);
        }
        QVERIFY(object.write("from the parent"));
        QCOMPARE(object.read(), QByteArray("from the parent"));
        QCOMPARE(server.received, QList<QByteArray>{"from the parent"});
        // The connection ends with the parent's descriptor, whatever the child does.
        object.close();
        QTRY_VERIFY(server.clients().isEmpty());
        ::close(stop[1]);
        ::close(stop[0]);
        int status = -1;
        QCOMPARE(::waitpid(child, &status, 0), child);
        QCOMPARE(status, 0);
    }

    void deliversWhatWasWrittenBeforeClosing()
    {
        EchoServer server;
        Object object;
        QTRY_COMPARE(server.clients().size(), 1);
        QCOMPARE(threadCount(), m_threads + 1);
        QVERIFY(server.send(server.clients().first(), "unread"));
        QTRY_VERIFY(object.isReadable());
        for (int i = 0; i < 30; ++i)
            QVERIFY(object.write(numbered(i, 1000)));
        // Longer than one read of the library, and still whole.
        QVERIFY(object.write(numbered(30, 400000)));
        // More than a socket holds: the service, busy here, has not taken it by the time of closing.
        for (int i = 31; i < 36; ++i)
            QVERIFY(object.write(numbered(i, 100000)));
        object.close();
        QTRY_COMPARE(server.received.size(), 36);
        QCOMPARE(server.received.at(30), numbered(30, 400000));
        QCOMPARE(server.received.last(), numbered(35, 100000));
        QTRY_COMPARE(server.clients().size(), 0);
        // It may close while the server is away, too.
        Object again;
        server.close();
        again.close();
        QTRY_COMPARE(threadCount(), m_threads);
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
    int m_threads = 0;
};

ZEL_TEST(TstObject)
#include "tst_object.moc"
