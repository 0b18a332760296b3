// SPDX-License-Identifier: Apache-2.0
#include <common/Program.h>
#include <simulator/ServiceTest.h>

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>
#include <QtCore/QTemporaryDir>

#include <sys/stat.h>
#include <unistd.h>

using zelcore::Simulator;

namespace {

const QString zelctl = QStringLiteral(ZELCTL_PATH);
const QByteArray png("\x89PNG\r\n\x1a\n"); // by its first bytes; the rest does not matter to anybody

/// The end of a line that tells of a picture.
QByteArray pictureOf(const QByteArray& data)
{
    return "displayPictureSize:" + QByteArray::number(data.size()) +
           ",displayPictureSha1:" + QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex() + '}';
}

/// How often its threads have gone to sleep: once more for every time that something woke one of them.
int timesAsleep(qint64 process)
{
    static const QRegularExpression count(u"\nvoluntary_ctxt_switches:\\s*(\\d+)"_s);
    int times = 0;
    const QDir threads(u"/proc/%1/task"_s.arg(process));
    for (const QString& thread : threads.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile status(threads.filePath(thread + u"/status"_s));
        if (status.open(QIODevice::ReadOnly))
            times += count.match(QString::fromLatin1(status.readAll())).captured(1).toInt();
    }
    return times;
}

} // namespace

/// zelctl as people and programs run it, against the simulated core service in this process.
class TstZelctl : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void init() { begin(); }

    void registersAndShowsTheWay()
    {
        const QByteArray state = "Context.registrationStateUpdated,state:";
        QCOMPARE(readable(run("register")),
                 '{' + state + "Unregistered} {register " + state + "Pending} {" + state + "Allowed}");
        m_simulator->setPermissions({.showAppBox = false});
        QCOMPARE(run("permissions").last(),
                 R"({"answer":"permissions","profileUpdates":"Denied","contactInvitations":"Allowed"})");
        // A service that knows the application already has nothing to do.
        m_simulator->setRegistrationState(u"Success"_s);
        QCOMPARE(readable(run("register")), '{' + state + "Allowed}");
        QCOMPARE(runForPeople("register").last(), "Registered.");
    }

    void saysWhyNot()
    {
        // What the service is told first, the command, the status with which that ends, and why.
        const std::tuple<const char*, const char*, int, const char*> rows[] = {
            {"state BlockedByTov", "profile", 1, "the state is BlockedByTOV: the service's operator blocked"},
            {"", "register", 1, "the state is BlockedByTOV"},
            {"registration CancelledByUser", "profile", 1, "BlockedByTOV"},
            {"state Unregistered", "contacts", 1, "the state is CancelledByUser"},
            {"registration manual", "--timeout 2.5 profile", 1, "2.5 s; the last state was Pending"},
            {"state Success", "contact nobody", 1, "'nobody'"},
            {"drop listChunk", "--timeout 1.5 profile", 1, "state within 1.5 s"},
            {"drop listChunk", "--timeout 0.5 state", 1, "state within 0.5 s"},
            {"drop requestEcoIdResponse", "--timeout 2.5 eco-id pp", 1, "answer within 2.5 s; ZEL_SLOG"},
            {"", "set-picture /", 1, "cannot read /"},
            {"", "set-picture /dev/null", 1, "no picture"},
            {"", "box-add ''", 1, "100 characters"}, // the library knows why
            {"", "--timeout 5", 2, "no command"},
            {"", "setstatus", 2, "no command 'setstatus', but 'set-status';"},
            {"", "-- --json", 2, "no command '--json'"},
            {"", "state --json", 2, "--json goes before"}};
        QByteArrayList printed;
        for (const auto& [service, line, status, why] : rows) {
            QVERIFY2(m_simulator->execute(QString::fromLatin1(service)), service);
            printed += run(line, status, why);
        }
        QCOMPARE(readable(printed),
                 "{Context.registrationStateUpdated,state:BlockedByTOV} {register,ok:false} {state,registrationState:"
                 "Unknown,accessAllowed:false,zelSetup:false,platformVersion:200,ready:false} {eco-id,ok:true} "
                 "{box-add,ok:true}");
    }

    void saysThatThereIsNoService()
    {
        const QString socket = m_simulator->root() + u"/services/zelcore/platform"_s;
        m_simulator->stop();
        QVERIFY(run("contacts", 1, "zelctl: There is no core service at " + socket.toUtf8() + ". Start").isEmpty());
        Program far(zelctl, u'/' + QString(300, u'x'));
        QVERIFY(far.run({u"state"_s}) == 1 && far.diagnostics().contains("/platform (File name too long). Start"));
        QVERIFY2(!m_diagnostics.contains("zel.platform"), "it is said once");
        QVERIFY(run("state", 1).value(0).contains("\"BlockedByUser\""));
        QVERIFY(run("watch", 1, socket.toUtf8()).isEmpty());
        Program person(zelctl, m_simulator->root());
        QCOMPARE(person.run({u"shell"_s}, "\nwatch\nregister\nset-status --help\nhelp dance\nhelp"), 0);
        QCOMPARE(person.lines().mid(0, 8),
                 QByteArrayList({"Ready, the registration state is BlockedByUser. 'help' lists the commands.",
                                 "watch: ok", "register: refused", "set-status available|busy TEXT",
                                 "  change the status and its message", "  for example: set-status busy 'In a meeting'",
                                 "error: there is no command 'dance'", "help:"}));
        QCOMPARE(person.lines().mid(person.lines().size() - 2).join(' ').simplified(),
                 "help COMMAND one of them, with an example quit end");
        QVERIFY(person.diagnostics().contains("zelctl: There is no core service at "));
        Program shell(zelctl, m_simulator->root());
        QCOMPARE(shell.run({u"--json"_s, u"shell"_s}, "register\ncontacts\nbox-add hello\nhelp register"), 0);
        QCOMPARE(readable(shell.lines()),
                 "{ready:true,registrationState:BlockedByUser,accessAllowed:false,zelSetup:false,platformVersion:200} "
                 "{register,ok:false} {contacts,valid:false,complete:false,count:0,contacts:[]} {box-add,ok:false} "
                 "{help,text:register [--silent]\\n  register the application\\n  for example: register}");
    }

    void asksNoEnvironmentWhenItMayMoreThanWhoRunsIt()
    {
        const QString privileged = m_folder.filePath(u"zelctl"_s);
        QVERIFY(QFile::copy(zelctl, privileged));
        const QByteArray path = QFile::encodeName(privileged);
        if (::chown(path, uid_t(-1), ::getegid() + 1) != 0 || ::chmod(path, 02755) != 0)
            QSKIP("only root can give a program another group");
        Program process(privileged, m_simulator->root());
        QProcessEnvironment environment = process.process.processEnvironment();
        environment.insert(u"ZEL_SLOG"_s, u"stderr"_s);
        environment.insert(u"ASAN_OPTIONS"_s, u"detect_leaks=0"_s); // nobody may look into such a process
        process.process.setProcessEnvironment(environment);
        QCOMPARE(process.run({u"contacts"_s}), 1);
        QVERIFY(process.diagnostics().startsWith("zelctl: There is no core service at /pps/"));
    }

    void tellsWhatBecomesOfIt()
    {
        addContact("zoe");
        addContact("bob");
        addContact("not", "installed=off");
        const QByteArray icon = png + QByteArray(92, 'p');
        const QByteArray face = png + QByteArray(32760, 'p');
        const QByteArray iconFile = file("icon", icon);
        const QByteArray faceFile = file("me.gif", face);
        QVERIFY(m_simulator->setContactPicture(u"bob"_s, face));
        m_simulator->setEcoId(u"pp-1"_s, u"E1"_s);
        const QSignalSpy handed(m_simulator.get(), &Simulator::invocationReceived);
        const QByteArray bob =
            "{handle:bob,displayName:bob,personalMessage:says \\hi\\\\n,status:Busy,statusMessage:in a meeting,"
            "ppId:pp-bob,applicationVersion:1.2,platformVersion:201,sdkVersion:201,zelVersion:77}";
        const std::pair<QByteArray, QByteArray> rows[] = {
            {"set-message '\"A\"\nשלום 🐱'", "{set-message UserProfile.personalMessageUpdated,value:\\A\\\\nשלום 🐱}"},
            {"set-status busy hi", "{set-status UserProfile.statusUpdated,status:Busy,statusMessage:hi}"},
            {"set-status available hi", "{set-status UserProfile.statusUpdated,status:Available,statusMessage:hi}"},
            {"set-status available hi", "{set-status,ok:true}"}, // nothing changes, so nothing is announced
            {"set-picture " + faceFile,
             "{set-picture UserProfile.displayPictureUpdated,displayPictureMimeType:Png," + pictureOf(face)},
            {"set-picture " + faceFile, "{set-picture,ok:true}"},
            {"profile",
             "{profile,displayName:Robin Vale,personalMessage:\\A\\\\nשלום 🐱,status:Available,statusMessage:hi,"
             "ppId:pp-robin,handle:robin,applicationVersion:1.0,zelVersion:700,sdkVersion:200,"
             "displayPictureMimeType:Png," +
                 pictureOf(face)},
            {"contacts", "{contacts,valid:true,complete:true,count:2,contacts:[" + bob + ',' +
                             QByteArray(bob).replace("bob", "zoe") + "]}"},
            {"contact bob", "{contact,contact:" + bob + '}'},
            {"picture bob -o " + faceFile + ".png",
             "{picture ContactService.displayPictureUpdated,handle:bob,imageType:Png," + pictureOf(face)},
            {"icon-register 257 " + iconFile, "{icon-register ProfileBox.iconRegistered,iconId:257}"},
            {"icon-get 257 -o " + iconFile + ".png", "{icon-get ProfileBox.iconRetrieved,iconId:257,iconType:Png," +
                                                         pictureOf(icon).replace("displayPicture", "iconData")},
            {"box-add 'level 3' --icon 257 --cookie c=1", "{box-add ProfileBox.itemAdded,itemId:item-1}"},
            {"box-add plain", "{box-add ProfileBox.itemAdded,itemId:item-2}"},
            {"box", "{box,count:2,icons:[257],items:[{id:item-1,text:level 3,cookie:c=1,iconId:257},"
                    "{id:item-2,text:plain,cookie:,iconId:-1}]}"},
            {"box-remove item-1", "{box-remove ProfileBox.itemRemoved,itemId:item-1}"},
            {"box-add other", "{box-add ProfileBox.itemAdded,itemId:item-3}"},
            {"box-clear", "{box-clear ProfileBox.itemRemoved,itemId:item-2} {ProfileBox.itemRemoved,itemId:item-3}"},
            {"box-clear", "{box-clear,ok:true}"},
            {"eco-id pp-1", "{eco-id Utils.ecoIdUpdated,ppId:pp-1,ecoId:E1}"},
            {"chat E1", "{chat,ok:true}"},
            {"eco-status E1", "{eco-status Utils.ecoIdStatusUpdated,ecoId:E1,status:Unknown}"},
            {"invite E1 'Ada \"L\"' 'join us'", "{invite,ok:true}"},
            {"eco-status E1", "{eco-status Utils.ecoIdStatusUpdated,ecoId:E1,status:PendingContactInviteExists}"}};
        for (const auto& [line, reply] : rows)
            QCOMPARE(readable(run(line)), reply);
        for (const QByteArray& line :
             {"icon-register 257 " + iconFile, QByteArray("box-remove no-such-item"), QByteArray("eco-status ''")})
            run(line, 1);
        run("picture bob -o /no/such/folder/x", 1, "/no/such/folder/x");
        QCOMPARE(QFile(QString::fromUtf8(iconFile) + u".png"_s).size(), icon.size());
        const QByteArray target = faceFile + ".png";
        QCOMPARE(runForPeople("picture bob -o " + target).join().remove(24, 40),
                 "Png, 32768 bytes, SHA-1 Wrote 32768 bytes to " + target + '.');
        // Somebody without a picture costs a file nothing.
        QCOMPARE(runForPeople("picture zoe -o " + target), QByteArrayList{"zoe has no picture."});
        QVERIFY(runForPeople("picture bob -o /dev/stdout").join('\n').contains(face));
        run("picture bob -o ''"); // to no file
        QCOMPARE(QFile(QString::fromUtf8(target)).size(), face.size());
        const QString mime = u"application/vnd.socialplatform.data"_s;
        QCOMPARE(handed.at(0).mid(0, 4), (QVariantList{u"sys.zel.chathandler"_s, u"vx.action.ZELCHAT"_s, mime,
                                                       QByteArray(R"({"contactChat":{"ecoid":"E1"}})")}));
        const QByteArray invitation = "{\"contactInvitation\":{\"ecoid\":\"E1\",\"display_name\":\"Ada \\\"L\\\"\","
                                      "\"invite_msg\":\"join us\"}}";
        QCOMPARE(handed.at(1).mid(0, 4),
                 (QVariantList{u"sys.socialplatform"_s, u"vx.action.INVITEZEL"_s, mime, invitation}));
    }

    void shellAnswersEachLineOfItsInput()
    {
        const QByteArray wrong = QByteArrayLiteral("dance\n\nset-message 'x\ninvite e1 Ada\nicon-get one\n"
                                                   "set-picture /no/such/file\nshell\n\xff\xfe\0x\n") +
                                 QByteArray(2'000'000, 'y') + '\n';
        const std::pair<QByteArray, QByteArray> inputs[] = {
            {"", ""},
            {wrong + "state\nquit\nprofile\n", "error error error error error error error error error state"},
            {"state\nbox", "state box"}, // the last line is open
            {"box\r\nquit\r\n", "box"}};
        const QSignalSpy requests(m_simulator.get(), &Simulator::registrationRequested);
        for (const auto& [input, kinds] : inputs) {
            Program shell(zelctl, m_simulator->root());
            QCOMPARE(shell.run({u"--json"_s, u"shell"_s}, input), 0);
            QByteArrayList answers;
            for (const QByteArray& line : shell.lines()) {
                if (line.startsWith("{\"answer\":") && !line.endsWith(":\"\"}"))
                    answers += line.split('"').value(3);
            }
            QCOMPARE(answers.join(' '), kinds);
        }
        QCOMPARE(requests.size(), 0);
        // What was asked for before the end is sent.
        Program shell(zelctl, m_simulator->root());
        QVERIFY(shell.start({u"--json"_s, u"shell"_s}) && shell.says("Unregistered"));
        shell.write("register\nquit");
        QCOMPARE(shell.finish(), 0);
        QTRY_COMPARE(requests.size(), 1);
    }

    void watchRegistersAndEndsWhenTold()
    {
        // A script has its background commands ignore interrupts; nohup has them ignore a hang-up.
        for (const auto& [ignored, told, states] : {std::tuple(SIGINT, SIGINT, "Unregistered} {Pending} {Allowed"),
                                                    {SIGHUP, SIGTERM, "Allowed"}, // known before
                                                    {SIGINT, SIGHUP, "Pending} {Allowed"},
                                                    {SIGINT, SIGTERM, "BlockedByUser} {Allowed"}}) {
            begin();
            const QByteArray first = QByteArray(states).split('}').first();
            m_simulator->setRegistrationState(first == "Allowed" ? u"Success"_s : QString::fromLatin1(first));
            std::signal(ignored, SIG_IGN);
            Program watch(zelctl, m_simulator->root());
            QVERIFY(watch.start({u"--json"_s, u"watch"_s}));
            std::signal(ignored, SIG_DFL);
            QVERIFY(watch.says('"' + first + "\"}"));
            if (ignored == SIGHUP)
                watch.end(SIGHUP);
            const bool isRefused = first == "BlockedByUser";
            QVERIFY(!isRefused || watch.says("zelctl: Not registered, the state is BlockedByUser: the user "));
            if (told != SIGINT)
                m_simulator->setRegistrationState(u"Success"_s);
            for (const char* const row :
                 {"state|contactListUpdated", "contact add bob|applicationEnabled",
                  "contact change bob displayName=Bo|contactUpdated", "contact remove bob|applicationDisabled",
                  "state Expired|Expired", "state Success|", "profile displayName=Robin|displayNameUpdated",
                  "box add hi|itemAdded", "box change item-1 text=ho|itemUpdated", "away|", "back|contactListResent"}) {
                const QByteArrayList words = QByteArray(row).split('|');
                QVERIFY(m_simulator->execute(QString::fromLatin1(words.first())));
                QVERIFY2(watch.says(words.last()), row);
            }
            watch.end(told);
            QCOMPARE(watch.finish(), 0);
            QCOMPARE(watch.diagnostics().contains("zelctl: "), isRefused);
            QCOMPARE(readable(watch.lines()).replace("Context.registrationStateUpdated,state:", ""),
                     QByteArray("{") + states +
                         "} {ContactService.contactListUpdated} {ContactService.applicationEnabled,handle:bob} "
                         "{ContactService.contactUpdated,handle:bob} {ContactService.applicationDisabled,handle:bob} "
                         "{Expired} {Allowed} {UserProfile.displayNameUpdated,value:Robin} "
                         "{ProfileBox.itemAdded,itemId:item-1} {ProfileBox.itemUpdated,itemId:item-1} "
                         "{ContactService.contactListResent}");
        }
    }

    void waitsUntilItIsInterrupted()
    {
        QVERIFY(play("$ drop listChunk\n$ registration manual"));
        Program watch(zelctl, m_simulator->root());
        QVERIFY(watch.start({u"--timeout"_s, u"0.1"_s, u"watch"_s}));
        QTRY_VERIFY_WITH_TIMEOUT(watch.diagnostics().contains("state within 0.1 s; still watching"), 20'000);
        Program command(zelctl, m_simulator->root());
        QVERIFY(command.start({u"--json"_s, u"register"_s}));
        QVERIFY(command.says("\"Pending\"}"));
        command.end(SIGINT);
        QCOMPARE(command.finish(), 1);
        QVERIFY(command.diagnostics().endsWith("zelctl: Interrupted.\n"));
    }

    void bringsItsOwnService()
    {
        m_simulator->stop();
        for (const char* words : {"--simulate profile", "--simulate= profile", "--simulate=first-steps profile"})
            QVERIFY(!run(words).value(0).contains("\"displayName\":\"\""));
        run("--simulate invite E1 Ada 'join us'", 0, "contactInvitation");
        // What the library warns of, and what its own service refuses, need not be waited for.
        run("--simulate box-add x --icon 9", 1, "was refused: no icon with this id");
        run("--simulate set-message " + QByteArray(62000, 'x'), 1, "The service refused: the record would");
        run("--simulate=no-such-scenario state", 1);
    }

    /// A device sleeps as long as its applications do.
    void sleepsWhileNothingHappens()
    {
        addContact("bob");
        QVERIFY(m_simulator->setContactPicture(u"bob"_s, png));
        Program shell(zelctl, m_simulator->root());
        QVERIFY(shell.start({u"shell"_s}));
        for (const auto& [line, said] : {std::pair<QByteArray, const char*>("", "Unregistered"),
                                         {"register", "  contactListUpdated\n"},
                                         {"picture bob -o " + file("bob.png", {}), "\nWrote 8 bytes to "},
                                         {"picture bob -o /no/such/folder/x", "cannot write /no/such/folder/x: "}}) {
            shell.write(line);
            QVERIFY2(shell.says(said), line);
        }
        int times = 0;
        QElapsedTimer quiet;
        const auto isAsleep = [&] {
            if (const int now = timesAsleep(shell.process.processId()); std::exchange(times, now) != now)
                quiet.start();
            return quiet.hasExpired(4'000);
        };
        QVERIFY(QTest::qWaitFor(isAsleep, 30'000));
        QVERIFY2(times > 1, "its threads are seen");
        QCOMPARE(shell.finish(), 0);
    }

    void printsTablesForPeople()
    {
        addContact("bob");
        const QByteArrayList lines = runForPeople("contacts");
        QVERIFY(lines.last().startsWith("bob     bob"));
        QVERIFY(!(lines.join() + m_diagnostics).contains('\033')); // which are for a terminal
        QVERIFY(runForPeople("help").value(0).startsWith("Usage: zelctl [OPTION ...] COMMAND"));
        QCOMPARE(runForPeople("state --version"), runForPeople("--version"));
        QVERIFY(runForPeople("--all contacts").join().contains("zel version"));
        for (const char* words : {"help set-message", "set-message --help"})
            QVERIFY(runForPeople(words).contains("  for example: zelctl set-message 'Back at five'"));
        QCOMPARE(runForPeople("set-message hello"), QByteArrayList{"The personal message is \"hello\"."});
    }

private:
    void addContact(const QByteArray& handle, const QByteArray& more = QByteArray())
    {
        QByteArray line = "contact add % ppId=pp-% appVersion=1.2 personalMessage=\"says \\\"hi\\\"\\n\" "
                          "statusMessage='in a meeting' platformVersion=201 showBusy=on clientVersion=77 ";
        QVERIFY(m_simulator->execute(QString::fromLatin1(line.replace('%', handle) + more)));
    }

    /// Runs to the end, where it has said \a why; standard output as lines.
    QByteArrayList runForPeople(const QByteArray& line, int expectedStatus = 0, const QByteArray& why = {})
    {
        Program process(zelctl, m_simulator->root());
        const int status = process.run(*Simulator::splitWords(QString::fromUtf8(line)));
        m_diagnostics = process.diagnostics();
        const auto said = m_diagnostics.count("zelctl: ");
        if (status != expectedStatus || said > 1 || (said == 0 && status != 0) || !m_diagnostics.contains(why)) {
            const QByteArray ran = line + ": status " + QByteArray::number(status) + '\n' + process.lines().join('\n');
            QTest::qFail((ran + m_diagnostics).constData(), __FILE__, __LINE__);
        }
        return process.lines();
    }
    QByteArrayList run(const QByteArray& line, int expectedStatus = 0, const QByteArray& why = {})
    {
        return runForPeople("--json " + line, expectedStatus, why);
    }

    /// One text that is easy to read: without quotes, a signal by the name of its class.
    static QByteArray readable(const QByteArrayList& lines)
    {
        QByteArray text = lines.join(' ').replace('"', "").replace(",signal:", ".").replace("{answer:", "{");
        return text.replace(",ok:true} {source:", " ").replace("{source:", "{");
    }

    QByteArray file(const char* name, const QByteArray& data)
    {
        QFile file(m_folder.filePath(QString::fromLatin1(name)));
        if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName().toUtf8();
    }

    QTemporaryDir m_folder;
    QByteArray m_diagnostics;
};

ZEL_TEST(TstZelctl)
#include "tst_zelctl.moc"
