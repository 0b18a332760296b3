// SPDX-License-Identifier: Apache-2.0
#include <common/FailingAllocations.h>
#include <common/RawServer.h>
#include <common/TestMain.h>

#include <pps/object.h>
#include <vx/system/ObjectServer.h>

#include <QtCore/QElapsedTimer>
#include <QtTest/QSignalSpy>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <ctime>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

using vx::system::ObjectServer;

namespace {

constexpr auto objectPath = "/pps/services/test/object";

// A descriptor as an application holds it: plain read, write, close.
struct Object : RawEnd
{
    explicit Object(const char* name = objectPath, int flags = O_RDWR)
        : RawEnd(pps_object_open(name, flags))
        , error(descriptor == -1 ? errno : 0)
    {
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
    // One read of 64 KiB, as the library does it.
    QByteArray read() const { return receive(5000, 65536); }

    const int error;
};

QStringList entries(const QString& folder)
{
    return QDir(folder).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
}
// The threads of objects, and this one, that no signal reaches.
int deafThreads()
{
    int deaf = 0;
    for (const QString& task : entries(u"/proc/self/task"_s)) {
        QFile status(u"/proc/self/task/%1/status"_s.arg(task));
        const QByteArray text = status.open(QIODevice::ReadOnly) ? status.readAll() : QByteArray();
        const quint64 blocked = text.mid(text.indexOf("SigBlk:") + 8, 16).toULongLong(nullptr, 16);
        const bool isOurs = text.startsWith("Name:\tpps-object\n") || task.toInt() == ::getpid();
        deaf += isOurs && (blocked >> (SIGTERM - 1) & 1);
    }
    return deaf;
}

QString file()
{
    return QString::fromLocal8Bit(qgetenv("PPS_ROOT")) + u"/services/test/object"_s;
}

// An object, and the server that has taken its connection and does nothing by itself.
struct Served
{
    Served() { QVERIFY(server.accept()); }
    bool carries(const QByteArray& record) const { return object.write(record) && server.receive() == record; }

    RawServer server{file()};
    Object object;
};

constexpr auto numbered = RawServer::numbered;

} // namespace

class TstObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        ::signal(SIGPIPE, SIG_DFL); // a write that raises it ends this program
        m_root = std::make_unique<QTemporaryDir>();
        qputenv("PPS_ROOT", m_root->path().toLocal8Bit());
        QVERIFY(QDir().mkpath(QFileInfo(file()).path()));
    }

    void cleanup() { QTRY_COMPARE(deafThreads(), 0); }

    void carriesRecordsBothWays()
    {
        const Served served;
        for (const int size : {4096, 65535, 65536, 65537, 200000, 1}) {
            const QByteArray record = numbered(size, size);
            QVERIFY(::send(served.object.descriptor, "", 0, 0) == 0); // is nothing
            QVERIFY(served.server.send(QByteArray()));
            QVERIFY(served.carries(record));
            QVERIFY(served.server.send(record));
            // What the read has no room for is gone: the next record is the next one.
            QCOMPARE(served.object.read(), record.left(65536));
        }
        QVERIFY(!served.object.isReadable());
        QCOMPARE(deafThreads(), 1);
        for (int descriptor = 3; descriptor < 100; ++descriptor) {
            struct stat status;
            if (::fstat(descriptor, &status) == 0 && S_ISSOCK(status.st_mode))
                QVERIFY(::fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
        }
    }

    void opensWhatIsServedAndOtherFilesPlainly()
    {
        QCOMPARE(Object(nullptr).error, EINVAL);
        QCOMPARE(Object().error, ENOENT);
        {
            // Nobody accepts, and there is no more room to wait in: a moment's patience, no more.
            RawServer server(file(), 0);
            const Object waiting;
            QCOMPARE(waiting.error, 0);
            QElapsedTimer timer;
            timer.start();
            QCOMPARE(Object().error, ETIMEDOUT);
            QVERIFY(timer.elapsed() < 4000);
            server.stop();
            QCOMPARE(Object().error, ECONNREFUSED);
        }
        QTRY_COMPARE(deafThreads(), 0);
        QVERIFY(::mkfifo(QFile::encodeName(file()).constData(), 0600) == 0);
        const Object object;
        QVERIFY(object.write("pipe") && object.read() == "pipe" && deafThreads() == 0);
        // The root belongs to the first name alone, not to one that begins like it.
        for (const QString& folder : {u"r/x"_s, u"rx"_s})
            QVERIFY(QDir().mkpath(m_root->filePath(folder)));
        qputenv("PPS_ROOT", m_root->filePath(u"r"_s).toLocal8Bit());
        QCOMPARE(Object("/ppsx", O_RDONLY | O_DIRECTORY).error, ENOENT);
        QCOMPARE(Object("/pps/x", O_RDONLY | O_DIRECTORY).error, 0);
        qunsetenv("PPS_ROOT");
        QCOMPARE(Object("/pps/x", O_RDONLY | O_DIRECTORY).error, ENOENT);
    }

    void isOpenedOrNotAndLeavesNothingWithoutMemory()
    {
        RawServer server(file(), 50);
        const auto descriptors = entries(u"/proc/self/fd"_s).size();
        const auto open = [](std::unique_ptr<Object>& object) { object = std::make_unique<Object>(); };
        const auto check = [&](std::unique_ptr<Object>& object) {
            if (object && object->error == 0) {
                QVERIFY(server.accept() && object->write("heard") && server.receive() == "heard");
            } else {
                QVERIFY(!object || object->error == ENOMEM || object->error == EAGAIN);
                server.accept(0); // it may have come as far as that
            }
            object.reset();
            server.close();
            QTRY_COMPARE(entries(u"/proc/self/fd"_s).size(), descriptors);
        };
        QVERIFY(failing::eachInTurn([] { return std::make_unique<std::unique_ptr<Object>>(); }, open, check) > 3);
    }

    void isQuietWhileTheServerIsAway()
    {
        const QByteArray name = "/pps/" + QByteArray(120, 'd') + '/' + QByteArray(200, 'o');
        ObjectServer server;
        QSignalSpy received(&server, &ObjectServer::recordReceived);
        QVERIFY(server.listen(QString::fromLatin1(name), nullptr));
        const Object object(name.constData());
        for (int round = 1; round < 4; ++round) {
            QVERIFY(QTest::qWaitFor([&] { return server.clients() == QList<int>{round}; }, 1500));
            QVERIFY(object.write("question"));
            QTRY_COMPARE(received.size(), round);
            QVERIFY(server.send(round, "answer") && object.read() == "answer");
            server.close();
            QVERIFY(object.write("lost"));
            QVERIFY(!QTest::qWaitFor([&] { return object.isReadable(); }, 50));
            QVERIFY(server.listen(QString::fromLatin1(name), nullptr));
        }
    }

    void picksUpAServiceThatRestartsWhileTheCallerIsBusy()
    {
        Served served;
        // Twice as much is said as is taken while nobody reads, the second time after all that was said first.
        int said = 0;
        served.server.sendAll(&said, 35000);
        QVERIFY(said < 200); // it is held back, and the other direction is free
        QVERIFY(served.carries("meanwhile"));
        QVERIFY(served.server.accept() && served.carries("heard"));
        served.server.sendAll(&said, 35000);
        QVERIFY(served.object.write("unread"));
        QTRY_COMPARE(served.object.waiting(), 0);
        served.server.close();
        for (int i = 0; i < said; ++i)
            QCOMPARE(served.object.read(), numbered(i, 35000));
        QVERIFY(served.server.accept() && served.carries("again"));
    }

    // Which calls one that hangs up only now and then, and sleeps in between, and raises no pipe signals.
    void isHarmlessWithAServerThatHangsUp()
    {
        QElapsedTimer timer;
        timer.start();
        const std::clock_t before = std::clock();
        Served served;
        for (int calls = 1; calls < 4; ++calls)
            QVERIFY(served.server.accept());
        // The first call is the opening; the others come one by one.
        QVERIFY2(timer.elapsed() >= 500, qPrintable(QString::number(timer.elapsed())));
        QVERIFY(std::clock() - before < CLOCKS_PER_SEC / 4);
        ::shutdown(served.server.descriptor, SHUT_RDWR);
        for (int i = 0; i < 100; ++i) {
            QVERIFY(served.object.write("into the dark"));
            if (i == 50)
                served.server.stop();
        }
        QVERIFY(!served.object.isReadable());
    }

    void losesOnlyWhatIsPastTheLimitOfAServerThatDoesNotRead()
    {
        Served served;
        auto& [server, object] = served;
        // Before any room is made, or the last ones would find it.
        const auto fill = [&object = object](int size) {
            for (int i = 0; i < 200; ++i)
                QVERIFY(object.write(numbered(i, size)));
            QTRY_COMPARE(object.waiting(), 0);
        };
        for (const int size : {65472, 65473}) { // of the first, the queue's 1 MiB holds 16, and not a byte more
            fill(size);
            int held = 0; // by the kernel
            QVERIFY(::ioctl(server.descriptor, FIONREAD, &held) == 0);
            for (int i = 0; i < held / size + 1024 * 1024 / (size + 64); ++i)
                QCOMPARE(server.receive(), numbered(i, size));
            QVERIFY(served.carries("still there"));
        }
        // What waits for one that goes is not for the one that comes.
        fill(50000);
        QVERIFY(server.accept() && served.carries("begins anew"));
        // Nor is it waited for any longer than a second when the caller goes. His number may be somebody else's by
        // then, whom a child of the process has, too.
        fill(50000);
        QElapsedTimer timer;
        timer.start();
        const int number = object.descriptor;
        object.close();
        QCOMPARE(::dup2(STDERR_FILENO, number), number);
        const pid_t child = ::fork();
        if (child == 0)
            ::_exit(int(::write(number, "", 0)));
        int status = -1;
        QVERIFY(::waitpid(child, &status, 0) == child && status == 0);
        ::close(number);
        QTRY_COMPARE(deafThreads(), 0);
        QVERIFY2(timer.elapsed() > 900 && timer.elapsed() < 4000, qPrintable(QString::number(timer.elapsed())));
    }

    void aChildOfTheProcessHasNoPartInIt()
    {
#if defined(__SANITIZE_THREAD__)
        QSKIP("Under this sanitizer a child of a process with threads can begin none.");
#endif
        Served served;
        QVERIFY(served.server.send("for the parent"));
        QTRY_VERIFY(served.object.isReadable());
        const pid_t child = ::fork();
        if (child == 0) {
            pollfd coming{served.object.descriptor, POLLIN, 0};
            if (::poll(&coming, 1, 0) == 0 && ::write(served.object.descriptor, "from the child", 14) < 0 &&
                Object().descriptor >= 0)
                ::raise(SIGSTOP);
            ::_exit(1);
        }
        int status = 0;
        QCOMPARE(::waitpid(child, &status, WUNTRACED), child);
        // The connection ends with the parent's descriptor, whatever the child holds.
        served.object.close();
        const bool isOver = served.server.receive().isEmpty();
        ::kill(child, SIGKILL);
        ::waitpid(child, nullptr, 0);
        QVERIFY(WIFSTOPPED(status) && isOver);
        // It may have an object of its own, write its last words and end at once.
        const pid_t last = ::fork();
        if (last == 0) {
            const Object own;
            for (int i = 0; i < 12; ++i)
                own.write(numbered(i, 60000));
            ::close(STDERR_FILENO); // to a sanitizer, what the parent's threads hold is lost
            std::exit(0);
        }
        QVERIFY(served.server.accept() && served.server.accept()); // the first one's is over
        for (int i = 0; i < 12; ++i)
            QCOMPARE(served.server.receive(), numbered(i, 60000));
        ::waitpid(last, nullptr, 0);
    }

    // To a service that takes it only later, more than a socket holds, and a record longer than the library's reads.
    void deliversWhatWasWrittenBeforeClosing()
    {
        Served served;
        QVERIFY(served.server.send("unread"));
        QTRY_VERIFY(served.object.isReadable());
        const auto record = [](int i) { return numbered(i, i < 30 ? 1000 : i == 30 ? 400000 : 100000); };
        for (int i = 0; i < 41; ++i) {
            QVERIFY(served.object.write(record(i)));
            QTRY_VERIFY(i != 39 || served.object.waiting() == 0);
        }
        served.object.close();
        for (int i = 0; i < 41; ++i)
            QCOMPARE(served.server.receive(), record(i));
        QTRY_COMPARE(deafThreads(), 0);
        // It may close while the server is away, too.
        Object again;
        served.server.stop();
        again.close();
    }

private:
    std::unique_ptr<QTemporaryDir> m_root;
};

ZEL_TEST(TstObject)
#include "tst_object.moc"
