// SPDX-License-Identifier: Apache-2.0
#include "ZelctlProcess.h"

#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>
#include <QtCore/QTemporaryDir>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

QByteArray sha1(const QByteArray& data)
{
    return QCryptographicHash::hash(data, QCryptographicHash::Sha1).toHex();
}

/// PNG by its first bytes; the rest does not matter to anybody.
QByteArray png(int size)
{
    return QByteArray("\x89PNG\r\n\x1a\n") + QByteArray(size - 8, 'p');
}

zelcore::Person person(const QString& handle, const QString& name)
{
    zelcore::Person result;
    result.userId = u"id-"_s + handle;
    result.handle = handle;
    result.ppId = u"pp-"_s + handle;
    result.appVersion = u"1.2"_s;
    result.displayName = name;
    result.personalMessage = u"says \"hi\"\n"_s;
    result.statusMessage = u"in a meeting"_s;
    result.platformVersion = 201;
    result.showBusy = true;
    result.clientVersion = 77;
    return result;
}

} // namespace

/// zelctl as people and programs run it, against the simulated core service in this process.
class TstZelctl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_simulator = std::make_unique<zelcore::Simulator>();
        QString error;
        QVERIFY2(m_simulator->start(&error), qPrintable(error));
    }

    void registersAndShowsTheWay()
    {
        const QByteArray prefix = "{\"source\":\"Context\",\"signal\":\"registrationStateUpdated\",\"state\":";
        QCOMPARE(run({u"--json"_s, u"register"_s}),
                 (QList<QByteArray>{prefix + "\"Unregistered\"}", "{\"answer\":\"register\",\"ok\":true}",
                                    prefix + "\"Pending\"}", prefix + "\"Allowed\"}"}));
        // A service that knows the application already has nothing to do.
        m_simulator->setRegistrationState(u"Success"_s);
        QCOMPARE(run({u"--json"_s, u"register"_s}), QList<QByteArray>{prefix + "\"Allowed\"}"});
    }

    void saysWhyItCannotRegister()
    {
        m_simulator->setRegistrationState(u"BlockedByTov"_s);
        QVERIFY(run({u"--json"_s, u"profile"_s}, 1).isEmpty());
        QVERIFY2(m_diagnostics.contains("BlockedByTOV"), m_diagnostics.constData());
        m_simulator->setRegistrationState(u"Unregistered"_s);
        m_simulator->setRegistrationPolicy(zelcore::Simulator::RegistrationPolicy::Fixed, u"CancelledByUser"_s);
        QVERIFY(run({u"--json"_s, u"contacts"_s}, 1).isEmpty());
        QVERIFY2(m_diagnostics.contains("CancelledByUser"), m_diagnostics.constData());
    }

    void saysThatNothingCameInTime()
    {
        m_simulator->injectFault(zelcore::Simulator::Fault::Drop, 0, u"requestEcoIdResponse"_s); // no outcome
        run({u"--timeout"_s, u"1.5"_s, u"eco-id"_s, u"pp"_s}, 1);
        QVERIFY2(m_diagnostics.contains("within 1.5 s"), m_diagnostics.constData());
        m_simulator->injectFault(zelcore::Simulator::Fault::Drop, 0, u"listChunk"_s); // no state
        run({u"--timeout"_s, u"1.5"_s, u"profile"_s}, 1);
        QVERIFY2(m_diagnostics.contains("within 1.5 s"), m_diagnostics.constData());
    }

    void saysThatThereIsNoService()
    {
        m_simulator->stop();
        QVERIFY(run({u"--json"_s, u"contacts"_s}, 1).isEmpty());
        QVERIFY2(m_diagnostics.contains("zelcore-sim"), m_diagnostics.constData());
        const QList<QByteArray> lines = run({u"--json"_s, u"state"_s}, 1);
        QCOMPARE(lines.size(), 1);
        QVERIFY(lines.first().contains("\"BlockedByUser\""));
    }

    void refusesWrongUse()
    {
        const QList<QStringList> uses{{}, {u"dance"_s}, {u"--jason"_s, u"state"_s}, {u"set-status"_s, u"busy"_s}};
        for (const QStringList& words : uses) {
            QVERIFY(run(words, 2).isEmpty());
            QVERIFY(!m_diagnostics.isEmpty());
        }
    }

    void changesTheProfile()
    {
        const QString name = m_simulator->profile().displayName;
        QVERIFY(!name.isEmpty());
        const QString message = u"\"quoted\"\nשלום 🐱"_s;
        const QList<QByteArray> lines = run({u"--json"_s, u"set-message"_s, message});
        QCOMPARE(lines.size(), 2);
        QCOMPARE(lines.first(), "{\"answer\":\"set-message\",\"ok\":true}");
        QCOMPARE(ZelctlProcess::parsed(lines.last()).value("value"_L1).toString(), message);
        QCOMPARE(m_simulator->profile().personalMessage, message);

        QCOMPARE(run({u"--json"_s, u"set-status"_s, u"busy"_s, u"-1 day"_s}).value(1),
                 "{\"source\":\"UserProfile\",\"signal\":\"statusUpdated\",\"status\":\"Busy\","
                 "\"statusMessage\":\"-1 day\"}");
        QVERIFY(m_simulator->profile().showBusy);
        QCOMPARE(m_simulator->profile().displayName, name);
        QCOMPARE(m_simulator->profile().personalMessage, message);
        // Nothing changes, so nothing is announced, and nobody waits for it.
        QCOMPARE(run({u"--json"_s, u"set-status"_s, u"busy"_s, u"-1 day"_s}),
                 QList<QByteArray>{"{\"answer\":\"set-status\",\"ok\":true}"});
    }

    void changesThePicture()
    {
        const QByteArray data = png(32768);
        const QString name = file(u"me"_s, data);
        QCOMPARE(run({u"--json"_s, u"set-picture"_s, name}),
                 (QList<QByteArray>{"{\"answer\":\"set-picture\",\"ok\":true}",
                                    "{\"source\":\"UserProfile\",\"signal\":\"displayPictureUpdated\","
                                    "\"displayPictureMimeType\":\"Png\",\"displayPictureSize\":32768,"
                                    "\"displayPictureSha1\":\"" +
                                        sha1(data) + "\"}"}));
        QCOMPARE(m_simulator->picture(QString::fromLatin1(sha1(data))), data);
        QCOMPARE(m_simulator->profile().avatarMimeType, u"image/png"_s);
        const QJsonObject profile = ZelctlProcess::parsed(run({u"--json"_s, u"profile"_s}).value(0));
        QCOMPARE(profile.value("displayPictureSha1"_L1).toString().toLatin1(), sha1(data));
        QCOMPARE(profile.value("displayPictureMimeType"_L1).toString(), u"Png"_s);

        run({u"set-picture"_s, name}); // the same again
        QCOMPARE(run({u"--json"_s, u"set-picture"_s, file(u"big"_s, png(32769))}, 1),
                 QList<QByteArray>{"{\"answer\":\"set-picture\",\"ok\":false}"});
        QVERIFY(run({u"--json"_s, u"set-picture"_s, u"/no/such/file"_s}, 1).isEmpty());
    }

    void listsContactsMemberByMember()
    {
        m_simulator->addContact(person(u"zoe"_s, u"Zoë"_s));
        m_simulator->addContact(person(u"bob"_s, u"Bob"_s));
        m_simulator->addContact(person(u"not"_s, u"Without"_s), false);
        const QByteArray bob =
            "{\"handle\":\"bob\",\"displayName\":\"Bob\",\"personalMessage\":\"says "
            "\\\"hi\\\"\\n\",\"status\":\"Busy\","
            R"("statusMessage":"in a meeting","ppId":"pp-bob","applicationVersion":"1.2","platformVersion":201,)"
            R"("sdkVersion":201,"zelVersion":77})";
        const QByteArray zoe = QByteArray(bob).replace("bob", "zoe").replace("Bob", "Zoë");
        QCOMPARE(
            run({u"--json"_s, u"contacts"_s}),
            QList<QByteArray>{"{\"answer\":\"contacts\",\"valid\":true,\"complete\":true,\"count\":2,\"contacts\":[" +
                              bob + ',' + zoe + "]}"});
        QCOMPARE(run({u"--json"_s, u"contact"_s, u"bob"_s}),
                 QList<QByteArray>{"{\"answer\":\"contact\",\"contact\":" + bob + '}'});
        QVERIFY(run({u"--json"_s, u"contact"_s, u"not"_s}, 1).isEmpty());
        QVERIFY(m_diagnostics.contains("'not'"));
    }

    void fetchesAPicture()
    {
        m_simulator->addContact(person(u"bob"_s, u"Bob"_s));
        const QByteArray data = png(20000);
        QVERIFY(m_simulator->setContactPicture(u"bob"_s, data));
        const QString target = m_folder.filePath(u"bob.png"_s);
        QCOMPARE(
            run({u"--json"_s, u"picture"_s, u"bob"_s, u"-o"_s, target}),
            (QList<QByteArray>{"{\"answer\":\"picture\",\"ok\":true}",
                               "{\"source\":\"ContactService\",\"signal\":\"displayPictureUpdated\",\"handle\":"
                               "\"bob\",\"imageType\":\"Png\",\"displayPictureSize\":20000,\"displayPictureSha1\":\"" +
                                   sha1(data) + "\"}"}));
        QCOMPARE(run({u"picture"_s, u"bob"_s, u"-o"_s, target}).value(1),
                 "Wrote 20000 bytes to " + target.toUtf8() + '.');
        QFile written(target);
        QVERIFY(written.open(QIODevice::ReadOnly));
        QCOMPARE(written.readAll(), data);
        // Somebody without a picture costs a file nothing.
        m_simulator->addContact(u"Zoe"_s);
        QCOMPARE(run({u"picture"_s, u"zoe"_s, u"-o"_s, target}), QList<QByteArray>{"zoe has no picture."});
        QCOMPARE(QFileInfo(target).size(), data.size());
        run({u"picture"_s, u"bob"_s, u"-o"_s, u"/no/such/folder/x"_s}, 1);
        QVERIFY(m_diagnostics.contains("/no/such/folder/x"));
    }

    void keepsABox()
    {
        const QByteArray icon = png(100);
        QCOMPARE(run({u"--json"_s, u"icon-register"_s, u"257"_s, file(u"icon"_s, icon)}),
                 (QList<QByteArray>{"{\"answer\":\"icon-register\",\"ok\":true}",
                                    "{\"source\":\"ProfileBox\",\"signal\":\"iconRegistered\",\"iconId\":257}"}));
        run({u"icon-register"_s, u"257"_s, file(u"icon"_s, icon)}, 1); // only once
        run({u"icon-register"_s, u"-1"_s, file(u"icon"_s, icon)}, 1);
        QCOMPARE(run({u"--json"_s, u"icon-get"_s, u"257"_s}).value(1),
                 "{\"source\":\"ProfileBox\",\"signal\":\"iconRetrieved\",\"iconId\":257,\"iconType\":\"Png\","
                 "\"iconDataSize\":100,\"iconDataSha1\":\"" +
                     sha1(icon) + "\"}");

        const QList<QByteArray> added =
            run({u"--json"_s, u"box-add"_s, u"level 3"_s, u"--icon"_s, u"257"_s, u"--cookie"_s, u"c=1"_s});
        QCOMPARE(added.value(0), "{\"answer\":\"box-add\",\"ok\":true}");
        const QByteArray id = ZelctlProcess::parsed(added.value(1)).value("itemId"_L1).toString().toUtf8();
        QVERIFY(!id.isEmpty());
        run({u"box-add"_s, u"plain"_s});
        const QList<QByteArray> box = run({u"--json"_s, u"box"_s});
        QVERIFY2(box.value(0).startsWith("{\"answer\":\"box\",\"count\":2,\"items\":[{\"id\":\"" + id +
                                         "\",\"text\":\"level 3\",\"cookie\":\"c=1\",\"iconId\":257},"),
                 box.value(0).constData());
        QVERIFY2(box.value(0).contains("\"text\":\"plain\",\"cookie\":\"\",\"iconId\":-1}"), box.value(0).constData());

        run({u"--timeout"_s, u"1"_s, u"box-add"_s, QString()}, 1); // the library alone knows why
        QVERIFY2(m_diagnostics.contains("100 characters"), m_diagnostics.constData());
        run({u"box-remove"_s, u"no-such-item"_s}, 1);
        QCOMPARE(run({u"--json"_s, u"box-remove"_s, QString::fromUtf8(id)}).value(1),
                 "{\"source\":\"ProfileBox\",\"signal\":\"itemRemoved\",\"itemId\":\"" + id + "\"}");
        m_simulator->addBoxItem(u"another"_s);
        QCOMPARE(run({u"--json"_s, u"box-clear"_s}).size(), 3); // the answer, and two items
        QVERIFY(m_simulator->boxItems().isEmpty());
        QCOMPARE(run({u"--json"_s, u"box-clear"_s}), QList<QByteArray>{"{\"answer\":\"box-clear\",\"ok\":true}"});
    }

    void findsEcoIdentifiers()
    {
        m_simulator->setEcoId(u"pp-1"_s, u"E100"_s);
        m_simulator->setEcoIdStatus(u"E100"_s, u"PendingContactExists"_s);
        QCOMPARE(run({u"--json"_s, u"eco-id"_s, u"pp-1"_s}).value(1),
                 "{\"source\":\"Utils\",\"signal\":\"ecoIdUpdated\",\"ppId\":\"pp-1\",\"ecoId\":\"E100\"}");
        QCOMPARE(run({u"--json"_s, u"eco-status"_s, u"E100"_s}).value(1),
                 "{\"source\":\"Utils\",\"signal\":\"ecoIdStatusUpdated\",\"ecoId\":\"E100\","
                 "\"status\":\"PendingContactInviteExists\"}");
        QCOMPARE(run({u"--json"_s, u"eco-status"_s, QString()}, 1),
                 QList<QByteArray>{"{\"answer\":\"eco-status\",\"ok\":false}"});
    }

    void handsOverInvitationsAndChats()
    {
        QSignalSpy spy(m_simulator.get(), &zelcore::Simulator::invocationReceived);
        run({u"invite"_s, u"E1"_s, u"Ada \"L\""_s, u"join\nus"_s});
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.first().mid(0, 3), (QVariantList{u"sys.socialplatform"_s, u"vx.action.INVITEZEL"_s,
                                                      u"application/vnd.socialplatform.data"_s}));
        QCOMPARE(spy.takeFirst().at(3).toByteArray(), "{\"contactInvitation\":{\"ecoid\":\"E1\",\"display_name\":\"Ada "
                                                      "\\\"L\\\"\",\"invite_msg\":\"join\\nus\"}}");
        run({u"chat"_s, u"E1"_s});
        QTRY_COMPARE(spy.size(), 1);
        QCOMPARE(spy.first().mid(0, 3), (QVariantList{u"sys.zel.chathandler"_s, u"vx.action.ZELCHAT"_s,
                                                      u"application/vnd.socialplatform.data"_s}));
        QCOMPARE(spy.first().at(3).toByteArray(), R"({"contactChat":{"ecoid":"E1"}})");
    }

    void shellGoesOnAfterWhatIsNoCommand()
    {
        ZelctlProcess shell(m_simulator->root());
        shell.startShell();
        shell.takeUntil(u"Unregistered"_s);
        const QByteArray lines[] = {"dance",
                                    "",
                                    "set-message 'x",
                                    "invite e1 Ada",
                                    "icon-get one",
                                    "set-picture /no/such/file",
                                    "shell",
                                    QByteArray("\xff\xfe\0x", 4),
                                    QByteArray(2'000'000, 'y')};
        for (const QByteArray& line : lines) {
            const QJsonObject answer = shell.ask(line);
            QCOMPARE(answer.value("answer"_L1).toString(), u"error"_s);
            QVERIFY(!answer.value("message"_L1).toString().isEmpty());
        }
        QCOMPARE(shell.ask("state").value("answer"_L1).toString(), u"state"_s);
        QCOMPARE(shell.finish(), 0);
    }

    void shellEndsWithItsInput()
    {
        const std::pair<const char*, const char*> inputs[] = {
            {"", "{\"ready\":true"},
            {"state\nquit\nprofile\n", "{\"answer\":\"state\""},
            {"state\nbox", "{\"answer\":\"box\""}, // the last line is open
            {"box\r\nquit\r\n", "{\"answer\":\"box\""}};
        for (const auto& [input, lastAnswer] : inputs) {
            ZelctlProcess shell(m_simulator->root());
            QCOMPARE(shell.run({u"--json"_s, u"shell"_s}, input), 0);
            QList<QByteArray> answers = shell.lines();
            answers.removeIf([](const QByteArray& line) { return line.startsWith("{\"source\""); });
            QVERIFY2(answers.last().startsWith(lastAnswer), shell.output().constData());
        }
    }

    void watchRegistersAndEndsWhenTold()
    {
        ZelctlProcess watch(m_simulator->root());
        QVERIFY(watch.start({u"--json"_s, u"watch"_s}));
        watch.takeUntil(u"Allowed"_s);
        watch.terminate();
        QCOMPARE(watch.finish(), 0);
        // In a script too, which has its background commands ignore interrupts.
        std::signal(SIGINT, SIG_IGN);
        ZelctlProcess inScript(m_simulator->root());
        QVERIFY(inScript.start({u"--json"_s, u"watch"_s}));
        std::signal(SIGINT, SIG_DFL);
        inScript.takeUntil(u"Allowed"_s);
        inScript.interrupt();
        QCOMPARE(inScript.finish(), 0);
    }

    void bringsItsOwnService()
    {
        for (const QString& option : {u"--simulate"_s, u"--simulate=first-steps"_s}) {
            ZelctlProcess process;
            QCOMPARE(process.run({u"--json"_s, option, u"profile"_s}), 0);
            QCOMPARE(process.lines().size(), 1);
            QVERIFY(!ZelctlProcess::parsed(process.lines().first()).value("displayName"_L1).toString().isEmpty());
        }
        ZelctlProcess inviting;
        QCOMPARE(inviting.run({u"--simulate"_s, u"invite"_s, u"E1"_s, u"Ada"_s, u"join us"_s}), 0);
        QVERIFY2(inviting.diagnostics().contains("contactInvitation"), inviting.diagnostics().constData());
        // What the library warns of, and what its own service refuses, need not be waited for.
        for (const auto& [request, why] :
             {std::pair(QStringList{u"box-add"_s, u"x"_s, u"--icon"_s, u"9"_s}, "was refused: no icon with this id"),
              std::pair(QStringList{u"set-message"_s, QString(62000, u'x')},
                        "The service refused: the record would")}) {
            ZelctlProcess refused;
            QCOMPARE(refused.run(QStringList{u"--simulate"_s} + request), 1);
            QVERIFY2(refused.diagnostics().contains(why), refused.diagnostics().constData());
        }
        ZelctlProcess unknown;
        QCOMPARE(unknown.run({u"--simulate=no-such-scenario"_s, u"state"_s}), 1);
        QVERIFY(!unknown.diagnostics().isEmpty());
    }

    void printsTablesForPeople()
    {
        m_simulator->addContact(person(u"bob"_s, u"Bob"_s));
        const QList<QByteArray> lines = run({u"contacts"_s});
        QVERIFY(lines.contains("count     1"));
        QVERIFY(lines.at(lines.size() - 2).startsWith("handle  display name"));
        QVERIFY(lines.last().startsWith("bob     Bob"));
        QVERIFY(!lines.join().contains('\033'));
        QVERIFY(!lines.join().contains("zel version"));
        QVERIFY(run({u"--all"_s, u"contacts"_s}).join().contains("zel version"));
        for (const QStringList& words : {QStringList{u"help"_s, u"set-message"_s}, {u"set-message"_s, u"--help"_s}})
            QVERIFY(run(words).contains("  for example: zelctl set-message 'Back at five'"));
        QCOMPARE(run({u"set-message"_s, u"hello"_s}), QList<QByteArray>{"The personal message is \"hello\"."});
    }

private:
    /// Runs to the end; standard output as lines.
    QList<QByteArray> run(const QStringList& words, int expectedStatus = 0)
    {
        ZelctlProcess process(m_simulator->root());
        const int status = process.run(words);
        m_diagnostics = process.diagnostics();
        if (status != expectedStatus) {
            const QByteArray said = u"%1: status %2"_s.arg(words.join(u' ')).arg(status).toUtf8() + '\n';
            QTest::qFail((said + process.output() + m_diagnostics).constData(), __FILE__, __LINE__);
        }
        return process.lines();
    }

    QString file(const QString& name, const QByteArray& data)
    {
        QFile file(m_folder.filePath(name));
        if (!file.open(QIODevice::WriteOnly) || file.write(data) != data.size())
            qFatal("cannot write %s", qPrintable(file.fileName()));
        return file.fileName();
    }

    std::unique_ptr<zelcore::Simulator> m_simulator;
    QTemporaryDir m_folder;
    QByteArray m_diagnostics;
};

ZEL_TEST(TstZelctl)
#include "tst_zelctl.moc"
