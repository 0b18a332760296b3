// SPDX-License-Identifier: Apache-2.0
#include <common/Program.h>
#include <common/TestMain.h>
#include <simulator/RawApplication.h>

#include <QtCore/QFileInfo>
#include <QtCore/QTemporaryDir>

#include <sys/resource.h>

using namespace Qt::StringLiterals;

/// zelcore-sim, as it is run from a shell.
class TstProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_program = std::make_unique<Program>(QStringLiteral(ZELCORE_SIM), QString()); }

    void takesCommandsAndShowsWhatHappens()
    {
        run({u"--trace"_s, u"--scenario"_s, u"first-steps"_s, u"--contacts"_s, u"20"_s, u"--seed"_s, u"4"_s,
             u"--paused"_s});
        m_program->write("contacts\ntimeline\r\nnonsense\nhelp");
        QVERIFY(m_program->says("contacts: ") && m_program->says("0 ms, paused\n") &&
                m_program->says("\"nonsense\" is not a command"));
        QVERIFY(m_program->says("  contact change HANDLE FIELD=VALUE...  changes one\n")); // as long as may be
        m_program->process.closeWriteChannel(); // the end of the input ends nothing
        RawApplication application(m_folder.path());
        application.begin();
        application.send("registrationRequest", R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})");
        application.send("requestUserAvatar", R"({"userId":"user-anna","streamId":"s"})");
        for (const char* line :
             {"application 1 comes\n", "app 1 --> tpaApi {\"apiType\":\"Qt\"}\n",
              "asks to be registered as 6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b, silently\n", "registration: Success\n",
              "app 1 <-- stream {\"id\":\"s\",\"value\":\"iVBORw0KGg", "(1600 characters),\"last\":true}\n"})
            QVERIFY(m_program->says(line));
        QVERIFY(application.connectTo(m_folder.path(), "/services/invocation/sys.zel.chathandler"));
        QVERIFY(m_program->says("application 1 goes\n"));
        application.send(R"({"target":"sys.zel.chathandler","action":"a","mimeType":"m","data":"d"})");
        QVERIFY(m_program->says("invocation sys.zel.chathandler a m d\n"));
        QVERIFY(!m_program->lines().join().contains("zelcore-sim> ")); // a prompt is for a terminal
        QFile process(u"/proc/%1/stat"_s.arg(m_program->process.processId()));
        QVERIFY(process.open(QIODevice::ReadOnly));
        QTRY_VERIFY(process.seek(0) && process.readAll().contains(") S ")); // it sleeps
    }

    void playsAgainWhatItRecorded()
    {
        for (const QString& option : {u"--record"_s, u"--replay"_s}) {
            init();
            run({u"--trace"_s, option, m_folder.filePath(u"recording"_s)});
            RawApplication application(m_folder.path());
            application.begin();
            application.send("requestEcoId", R"({"ppid":")" + option.toUtf8() + R"("})");
            QVERIFY(m_program->says("app 1 --> requestEcoId "));
        }
        QVERIFY(m_program->says("replay: application 1 sent another requestEcoId ") &&
                m_program->says("replay: all of it has been played; differences: 1\n"));
    }

    void endsInOrder()
    {
        for (const int signal : {0, SIGTERM, SIGINT}) {
            init();
            run({});
            const QString socket = m_folder.path() + u"/services/zelcore/platform"_s;
            QVERIFY(QFileInfo::exists(socket));
            signal == 0 ? m_program->write("quit") : m_program->end(signal);
            QCOMPARE(m_program->finish(), 0);
            QVERIFY(!QFileInfo::exists(socket));
        }
    }

    void goesOnServingWhenTheRecordingIsFull()
    {
        m_program->process.setChildProcessModifier([] {
            const rlimit oneKilobyte = {1024, 1024};
            ::setrlimit(RLIMIT_FSIZE, &oneKilobyte);
        });
        run({u"--contacts"_s, u"50"_s, u"--record"_s, m_folder.filePath(u"full"_s)});
        RawApplication application(m_folder.path());
        application.begin();
        application.send("requestListAll", R"({"type":"platformContact"})");
        QVERIFY(m_program->says("there is no room for more; the recording ends here\n"));
        m_program->write("contacts");
        QVERIFY(m_program->says("contacts: "));
    }

    void refusesWrongUse()
    {
        const QString usage = u"--contacts many|--contacts=-1|--seed=x|word|--rot|--root |--replay  --trace|--at-once|"
                              "--replay a --contacts 1|--anonymise nowhere"_s;
        const QString trouble = u"--scenario nowhere|--root /proc/none|--replay nowhere|--record /proc/none|"
                                "--anonymise nowhere new|--root /"_s +
                                QString(300, u'x');
        for (const auto& [lines, status] : {std::pair(usage, 2), std::pair(trouble, 1)}) {
            for (const QString& line : lines.split(u'|')) {
                init();
                QCOMPARE(m_program->run(line.split(u' ')), status);
                QVERIFY(m_program->diagnostics().startsWith("zelcore-sim: ") && m_program->lines().isEmpty());
                QVERIFY(status == 2 || m_program->diagnostics().contains(line.section(u' ', 1, 1).toUtf8()));
            }
        }
    }

private:
    void run(const QStringList& arguments)
    {
        m_program->start(QStringList{u"--root"_s, m_folder.path()} + arguments);
        QVERIFY(m_program->says("export PPS_ROOT=" + m_folder.path().toUtf8() + '\n'));
    }

    const QTemporaryDir m_folder;
    std::unique_ptr<Program> m_program;
};

ZEL_TEST(TstProgram)
#include "tst_program.moc"
