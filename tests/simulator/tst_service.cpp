// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <csignal>

#include <sys/wait.h>

namespace {

const std::pair<const char*, const char*> dialogues[] = {
    {"takes no records but those in its form", R"(
        A= msg::zel\ndat:json:{"requestEcoIdStatus":{"ecoId":"e"}}\n
        A= \nid:n:3\nmsg::zel\nmsgs::no\ndat:json:{"requestEcoIdStatus":{"ecoId":"e"}}
        A. requestEcoIdStatusResponse requestEcoIdStatusResponse
        A= dat:json:{"requestEcoIdStatus":{"ecoId":"e"}}\n
        A= msg::bel\ndat:json:{"requestEcoIdStatus":{"ecoId":"e"}}\n
        A= msg:n:zel\ndat:json:{"requestEcoIdStatus":{"ecoId":"e"}}\n
        A= msg::zel\ndat::{"requestEcoIdStatus":{"ecoId":"e"}}\n
        A= msg::zel\ndat:json:[]\n
        A= msg::zel\ndat:json:{"requestEcoIdStatus":{"ecoId":"e"},"z":{}}\n
        A= msg::zel\ndat:json:{"requestEcoIdStatus":1}\n
        A.
        ! 7)"},
    {"refuses what cannot be asked for", R"(
        A> x[1000] {}
        A> requestEcoId {"ppid":7}
        A> requestListAll {"type":"x[1000]"}
        A> requestListAll {"type":"global","id":"x"}
        A> requestListElements {"type":"platformUser"}
        A> requestListElements {"type":"platformUser","elements":[1,[],"x",{}]}
        A> requestListRemove {"type":"platformContact","elements":[]}
        A> requestListRemove {"type":"profileBoxItem","elements":[{"itemId":"x"}]}
        A> requestListChange {"type":"platformContact","elements":[]}
        A> requestListChange {"type":"global","elements":[{"name":"permission","value":{}},{"name":"platformProfile"}]}
        A> requestListChange {"type":"global","elements":[{"name":"platformProfile"}]} -> profileChangeResponse "Failure"
        A> requestUserAvatar {"userId":"nobody","streamId":"s"}
        A> requestProfileBoxImage {"imageId":"3","streamId":"s"}
        A.
        ! 13
        A> requestListElements {"type":"global","elements":[{"name":"x"},{"name":"permission"}]}
        A< listElements; listChunk [{"name":"permission",
        ! 14)"},
    {"concludes nothing that was decided meanwhile, and waits for word in manual mode", R"(
        $ registration auto 20
        A> register loud -> listChange "Pending"
        $ state CancelledByUser
        B> tpaApi {}
        B> register loud -> listChange "Pending"; listChange "Success"
        A. listChange
        $ registration manual
        $ registration => ^manual
        A> register loud -> listChange "Pending"
        A> register silent
        A.
        $ state BlockedByTov
        A< listChange "BlockedByTov")"},
    {"takes no malformed UUID", R"(
        A> registrationRequest {"uuid":"{6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b}","silent":false}
        A> registrationRequest {"uuid":"00000000-0000-0000-0000-000000000000","silent":false}
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5g","silent":true} -> listChange "InvalidUuid"
        A. listChange listChange
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"}
        A.
        ! 4)"},
    {"refuses a change of the profile as a whole", R"(
        $ profile displayName=Old
        A> change {"displayName":"New","showBusy":"yes"} -> profileChangeResponse "Failure" "error":
        A> change {"displayName":"New","clientVersion":"7"} -> profileChangeResponse "Failure"
        A> change {"displayName":"New","userId":"someone"} -> profileChangeResponse "Failure"
        A> change {"displayName":"New","handle":"someone"} -> profileChangeResponse "Failure"
        A> change {"displayName":"New","ppid":"someone"} -> profileChangeResponse "Failure"
        A> change {"displayName":"New","avatarId":"no hash"} -> profileChangeResponse "Failure"
        A> change {"displayName":"x[62000]"} -> profileChangeResponse "Failure"
        A. listChange
        ! 7
        $ profile => displayName Old)"},
    {"keeps a picture that is on its way apart from other changes", R"(
        $ picture 15360
        A> requestUserAvatar {"userId":"user-robin","streamId":"s"} -> listChange; stream "last":true
        A> change {"avatarId":"hash[500]","avatarMimeType":"image/gif"} -> requestNewAvatarImage hash[500]
        A> change {"personalMessage":"new"} -> profileChangeResponse "Success"; listChange "new" -hash[500]
        A> stream {"id":"hash[500]","value":"data[500]","last":true} -> profileChangeResponse "Success"
        A< listChange "new" hash[500]
        A> change {"avatarId":"hash[501]"} -> requestNewAvatarImage hash[501]
        A> stream {"id":"hash[501]","value":"***","last":true} -> profileChangeResponse "Failure"
        A> change {"avatarId":"","avatarMimeType":"image/gif"} -> profileChangeResponse "Success"
        A< listChange "avatarId":"" -gif
        A> change {"avatarId":"hash[500]","avatarMimeType":"image/gif"} -> profileChangeResponse "Success"
        A. listChange)"}, // known by now, it is not asked for again
    {"lets an item wait for an icon that is on its way", R"(
        A> createProfileBoxImage {"imageId":"7","imageHash":"hash[700]"}
        A> createProfileBoxItem {"text":"a","cookie":"","imageId":"7"}
        A> stream {"id":"newProfileBoxImage-7","value":"data[701]","last":true}
        A. requestNewProfileBoxImage
        ! 1
        A> createProfileBoxImage {"imageId":"7","imageHash":"hash[700]"}
        A> createProfileBoxItem {"text":"a","cookie":"","imageId":"7"}
        A. requestNewProfileBoxImage
        A> stream {"id":"newProfileBoxImage-7","value":"data[700]","last":true}
        A. listAdd listAdd
        $ box => item-1 icon 7
        A> requestListRemove {"type":"profileBoxImage","elements":[{"imageId":"7"}]} -> listRemove "imageId":"7"
        ! 1)"},
    {"refuses what the box does not take", R"(
        A> createProfileBoxItem {"text":"","cookie":""}
        A> createProfileBoxItem {"text":"x[101]","cookie":""}
        A> createProfileBoxItem {"text":"a\r\nb\nc","cookie":""}
        A> createProfileBoxItem {"text":"a","cookie":"x[129]"}
        A> createProfileBoxItem {"text":"a","cookie":"","imageId":"3"}
        A> createProfileBoxImage {"imageId":"-1","imageHash":"hash[9]"}
        A> createProfileBoxImage {"imageId":"1","imageHash":"abc"}
        A.
        ! 7
        A> createProfileBoxItem {"text":"x[98]\n\n","cookie":"x[128]"} -> listAdd "item-1"
        $ permission showAppBox off
        A> createProfileBoxItem {"text":"a","cookie":""}
        A> createProfileBoxImage {"imageId":"1","imageHash":"hash[9]"}
        A. listChange
        ! 9)"},
    {"answers unknown keys and none with one last chunk", R"(
        A> requestListElements {"cookie":"1","elements":[{"userId":"nobody"}],"type":"platformUser"}
        A< listElements "platformUser" "cookie":"1"; listChunk "elements":[] "last":true
        A> requestListElements {"cookie":"2ä","elements":[],"type":"platformUser"} -> listElements "cookie":"2ä"
        A< listChunk "elements":[] "last":true
        A.)"},
    {"announces only the members that differ", R"(
        $ contact add anna personalMessage=before
        A. listAdd
        $ contact change anna personalMessage="„Grüße“\n'\\'🙂"
        $ contact change anna personalMessage="„Grüße“\n'\\'🙂"
        A< listChange [{"personalMessage":"„Grüße“\n'\\'🙂","userId":"user-anna"}] -"last"
        A.
        $ contact remove anna
        $ contact add anna displayName=Anew
        $ contacts => contacts: 1, with the application: 1
        A< listRemove user-anna; listChange "Anew"; listAdd user-anna)"},
    {"drops, duplicates and delays one message each, of the type that was ordered", R"(
        $ drop
        $ duplicate
        $ delay 20
        $ drop requestEcoIdStatusResponse
        A> requestEcoId {"ppid":"1"}
        A> requestEcoId {"ppid":"2"} -> requestEcoIdResponse "ppid":"2"; requestEcoIdResponse "ppid":"2"
        A> requestEcoId {"ppid":"3"}
        A> requestEcoId {"ppid":"4"} -> requestEcoIdResponse "ppid":"4"; requestEcoIdResponse "ppid":"3"
        A> requestEcoIdStatus {"ecoId":"1"}
        A> requestEcoIdStatus {"ecoId":"2"} -> requestEcoIdStatusResponse "ecoId":"2")"},
    {"keeps the order when a latency ends, and knows whose it was", R"(
        B> tpaApi {}
        B.
        $ app 1 latency 20
        $ app 1 send one {}
        $ app 1 latency 60
        $ app 1 send two {}
        $ app 1 latency 0
        $ send three {}
        B. three
        A. one two three)"},
    {"has states, faults and a box for one of several applications", R"(
        A> register silent -> listChange "Success"
        B> tpaApi {}
        $ latency 2
        $ app 6A0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b latency 1
        $ app 1 latency => ^1 ms$
        $ latency => ^2 ms$
        $ app 1 request truncate 20 requestEcoIdStatus
        A.
        A> requestEcoIdStatus {"ecoId":"1"}
        ! 1
        $ app 1 state Expired
        $ registered => ^$
        A< listChange "Expired"
        $ app 6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b drop
        $ send lost-by-a {}
        $ app 1 box add mine => item-1
        A< listAdd "mine"
        $ app 1 box change item-1 text=other
        A< listChange "other"
        A> createProfileBoxItem {"text":"mine, too","cookie":""} -> listAdd "item-2"
        $ app 1 box => other => items: 2
        $ app 1 box clear
        A< listRemove item-1; listRemove item-2
        $ box => items: 0
        $ box add common
        B< listAdd "common"
        B. lost-by-a
        A.
        $! app 2 box add x => UUID
        $! app 0 state Expired => neither
        $! app 1 contacts => concerns all)"},
    {"refuses what is right when it is told to, and when the box is full", R"(
        $ refuse requestListChange "not today"
        $ app 2 refuse createProfileBoxItem
        $ box limit 1
        A> change {"displayName":"New"} -> profileChangeResponse "Failure" today
        A> createProfileBoxItem {"text":"a","cookie":""} -> listAdd "a"
        A> createProfileBoxItem {"text":"b","cookie":""}
        ! 2
        A> change {"displayName":"New"} -> profileChangeResponse "Success"; listChange "New"
        A.)"},
    {"tells an application that comes back everything but the lists it asks for, and one that starts nothing", R"(
        $ contact add anna
        A> register silent -> listChange "Success"
        A> register loud -> listChange "Success"
        B> tpaApi {}
        B.
        $ away
        $ app 1 state Expired
        $ app 2 state Pending
        $ registered => ^$
        $ back
        C> tpaApi {}
        D> requestListElements {"type":"global","elements":[{"name":"permission"}]} -> listElements; listChunk "Expired"
        D> requestListAll {"type":"platformContact"} -> listAll; listAdd "Expired"; listAdd "anna"; listAll BoxItem
        E< listAdd "Pending"
        C.)"},
    {"takes an invitation where invitations go, until its owner becomes a contact", R"(
        @ sys.zel.chathandler vx.action.INVITEZEL {"contactInvitation":{"ecoid":"e"}}
        @ sys.socialplatform vx.action.OTHER {"contactInvitation":{"ecoid":"e"}}
        $ eco-status e => Unknown
        @ sys.socialplatform vx.action.INVITEZEL {"contactInvitation":{"ecoid":"e"}}
        $ eco-status e => PendingContactExists
        $ eco-status eco-pp-zoe PendingContactExists
        $ contact add zoe
        $ eco-status eco-pp-zoe => ^ContactExists
        $ eco-status eco-pp-new PendingContactExists
        $ contact change zoe handle=zo ppId=pp-new
        $ eco-status eco-pp-new => ^ContactExists
        $ eco-status eco-pp-zoe => ^Unknown
        $ contact add zoe userId=another
        $ eco pp-zoe e
        $ eco-status e => ^ContactExists)"},
};

} // namespace

/// What applications are told, in fair weather and in foul.
class TstService : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void itAnswers_data()
    {
        QTest::addColumn<QByteArray>("dialogue");
        for (const auto& [name, dialogue] : dialogues)
            QTest::newRow(name) << QByteArray(dialogue);
    }

    void itAnswers()
    {
        QFETCH(QByteArray, dialogue);
        QVERIFY(play(dialogue.constData()));
    }

    void tellsEveryRecordAsItPassesWhateverBecomesOfIt()
    {
        QList<zelcore::WireRecord> passed;
        connect(m_simulator.get(), &Simulator::recordPassed, this, [&](const auto& record) { passed.append(record); });
        QStringList sent; // before faults
        connect(m_simulator.get(), &Simulator::messageSent, this, [&](int, const QString& type) { sent.append(type); });
        QVERIFY(play(R"(
            A> register silent -> listChange "Success"
            $ drop
            $ truncate 30
            $ garble
            $ truncate 0
            $ send lost {}
            $ send first '{"key":"value"}'
            $ send second '{"key":"value"}'
            $ send third {}
            $ raw "@platform\n")"));
        RawApplication& a = application('A');
        QTRY_COMPARE(a.unreadable, 4);
        QCOMPARE(sent.join(u' '), u"listChange lost first second third"_s);
        QCOMPARE(a.records.mid(1),
                 QByteArrayList({"@platform\ndat:json:{\"first\":{\"",
                                 "@platform\ndat:json:{\"se#######################", "@", "@platform\n"}));
        QByteArrayList toA;
        for (const zelcore::WireRecord& record : std::as_const(passed)) {
            QVERIFY(record.client == 1 && record.time >= passed.first().time && record.target.isEmpty());
            QCOMPARE(record.uuid.isEmpty(), &record == &passed.first()); // known once it has been read
            if (record.direction == zelcore::WireRecord::Direction::ToApplication)
                toA.append(record.bytes);
        }
        QCOMPARE(toA, a.records);
        QVERIFY(qAbs(passed.first().time - QDateTime::currentMSecsSinceEpoch()) < 60000);
        QVERIFY(passed.first().bytes.startsWith("msg::zel\ndat:json:{\"registrationRequest\":"));

        QVERIFY(application('I').connectTo(m_simulator->root(), "/services/invocation/sys.zel.chathandler"));
        application('I').send("nonsense");
        QTRY_COMPARE(passed.last().target, u"sys.zel.chathandler"_s);
        QVERIFY(passed.last().client > 0 && passed.last().bytes == "nonsense"); // an application of this process
    }

    void packsListsInOrderIntoRecordsThatFitOneRead()
    {
        QVERIFY(play(R"(
            $ contact add a personalMessage=x[30000]
            $ contact add b personalMessage=x[30000]
            $ contact add c personalMessage=x[61000]
            $ generate 1000
            $ contact add d personalMessage=x[61000])"));
        RawApplication& a = application('A');
        a.drain();
        a.records.clear();
        a.send("requestListAll", "{\"type\":\"platformUser\"}");
        a.synchronize();
        QStringList told;
        for (const QJsonObject& message : std::as_const(a.messages)) {
            for (const QJsonValue record : message["listChunk"_L1]["elements"_L1].toArray())
                told.append(record["userId"_L1].toString());
        }
        QVERIFY(a.messages.last()["listChunk"_L1]["last"_L1].toBool());
        QCOMPARE(told, m_simulator->contactIds());
        QCOMPARE(a.unreadable, 0);
        // Records that are mostly empty would cost an application a wake-up each.
        QVERIFY(a.records.size() <= 1 + 1 + 2 * a.records.join().size() / 65536);
    }

    void keepsSoMuchOfWhatIsAnnouncedAndNeverComes()
    {
        const auto announced = [](int icon) {
            return "A> createProfileBoxImage {\"imageId\":\"" + QByteArray::number(icon) +
                   "\",\"imageHash\":\"hash[9]\"}\n"
                   "A> createProfileBoxItem {\"text\":\"a\",\"cookie\":\"\",\"imageId\":\"0\"}\n";
        };
        QByteArray dialogue;
        for (int icon = 0; icon < 32; ++icon)
            dialogue += announced(icon);
        dialogue +=
            "! 0\n" + announced(32) + "A> change {\"avatarId\":\"hash[500]\"} -> profileChangeResponse \"Failure\"";
        QVERIFY(play(dialogue + "\n! 3"));
    }

    void livesAtTheRateAskedFor()
    {
        QVERIFY(play("$ rate 1000 installs")); // where there is nobody, somebody comes
        QTRY_VERIFY(m_simulator->contacts().size() > 40);
        m_simulator->setActivity(Simulator::Activity::Mixed, 1000, 9);
        QVERIFY(play("A< connectionInvitationReceived\nA< listRemove"));
        for (int i = 0; i < 200; ++i)
            QCOMPARE(application('A').take("listChange").value("type"_L1).toString(), u"platformUser"_s);
        QVERIFY(play("$ rate 1000 uninstalls"));
        QTRY_VERIFY(m_simulator->contacts().isEmpty());
        QVERIFY(play("$ rate 1000 installs"));
        QTRY_COMPARE(m_simulator->contacts().size(), m_simulator->contactCount());
        QVERIFY(play("$ rate 0"));
        Simulator lively, stopped, slow;
        for (Simulator* const simulator : {&lively, &stopped, &slow}) {
            simulator->setActivity(Simulator::Activity::Installs, simulator == &slow ? 1e-9 : 1000);
            QVERIFY(simulator->start());
        }
        stopped.stop();
        QTRY_VERIFY(lively.contactCount() > 20);
        QCOMPARE(stopped.contactCount() + slow.contactCount(), 0);
    }

    void givesARegistrationBackToNobodyElse()
    {
        const pid_t other = ::fork();
        if (other == 0) {
            play("B> tpaApi {}\nB> register silent");
            for (;;)
                ::pause();
        }
        QTRY_COMPARE(m_simulator->registrationState(u""_s), u"Success"_s);
        m_simulator->goAway();
        ::kill(other, SIGKILL);
        ::waitpid(other, nullptr, 0);
        // One for the connection of this process that was there before, one that is new: neither was registered.
        QVERIFY(play("$ back\nB< listAdd \"Unregistered\"\nC< listAdd \"Unregistered\"\n$ away"));
        QVERIFY(play("$! app 6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b state Expired => no such")); // it has ended
    }

    void endsAndStartsAgain()
    {
        const QString root = m_simulator->root();
        const QString socket = root + u"/services/zelcore/platform"_s;
        const QSignalSpy away(m_simulator.get(), &Simulator::awayChanged);
        m_simulator->goAway();
        QTRY_VERIFY(application('A').closed);
        QVERIFY(m_simulator->isRunning() && !QFileInfo::exists(socket));
        // Another one cannot take its place, not even then.
        Simulator second;
        second.setRoot(root);
        QVERIFY(second.setTargetState(u"sys.zel.chathandler"_s, Simulator::TargetState::Refusing));
        QString error;
        QVERIFY(!second.start(&error) && !error.isEmpty());
        QVERIFY(application('I').connectTo(root, "/services/invocation/sys.zel.chathandler"));
        QVERIFY(play("$ target sys.zel.chathandler refuses\n$ target sys.zel.chathandler missing"));
        QVERIFY(!QFileInfo::exists(root + u"/services/invocation/sys.zel.chathandler"_s));
        QVERIFY(m_simulator->comeBack() && m_simulator->comeBack() && QFileInfo::exists(socket));
        m_simulator->stop();
        QVERIFY(play("$ away") && !m_simulator->isRunning() && !m_simulator->isAway() && !m_simulator->comeBack());
        QVERIFY(m_simulator->start() && m_simulator->start());
        QVERIFY(play("B> tpaApi {}\nB.") && !second.start(&error) && play("B."));
        const QTemporaryDir folder;
        const QString inTheWay = folder.filePath(u"services/invocation/sys.zel.chathandler"_s);
        QVERIFY(QDir().mkpath(inTheWay)); // nor does one stay that is half started
        second.setRoot(folder.path());
        QVERIFY(!second.start(&error) && QDir().rmdir(inTheWay) && second.start(&error));
        QVERIFY(play("$ away 1"));
        QTRY_VERIFY(!m_simulator->isAway() && m_refused->isEmpty());
        QCOMPARE(away.size(), 4);
        // Its own folder goes with it, and nobody hears any more.
        const QSignalSpy running(m_simulator.get(), &Simulator::runningChanged);
        m_simulator.reset();
        QVERIFY(!QFileInfo::exists(root) && running.isEmpty());
    }

    void remembersRegistrationsInAFile()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        const QTemporaryDir folder;
        const QString path = folder.filePath(u"registered"_s);
        QVERIFY(m_simulator->rememberRegistrations(path));
        QVERIFY(play("A> register silent -> listChange \"Success\""));
        Simulator next;
        QVERIFY(next.rememberRegistrations(path));
        QCOMPARE(next.registeredUuids(), QStringList(u"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s));
        next.setRegistrationState(u"Expired"_s); // forgets them, in the file as well
        QVERIFY(
            play("$ reset\n$ registered 6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b on\n$ registered => ^6a0f")); // no file
        QFile file(path);
        QCOMPARE(file.size(), 0);
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b\nme\n") > 0);
        file.close();
        QString error;
        QVERIFY(!next.rememberRegistrations(path, &error) && error.startsWith(path + u": line 2: "_s));
        QVERIFY(next.registeredUuids().isEmpty());
    }

    void beginsAnewForTheNextCase()
    {
        const zelcore::Person before = m_simulator->profile();
        QVERIFY(play(R"(
            A> register silent -> listChange "Success"
            $ contact add anna
            $ profile displayName Other
            $ box limit 0
            $ app 1 box icon 0 100
            $ target sys.socialplatform missing
            $ drop
            $ latency 10000
            $ send late {}
            ~
            $ refuse requestEcoId
            $ request delay 10000 tpaApi
            $ registration manual 20
            $ rate 1000
            $ reading off
            $ reset)"));
        QTRY_VERIFY(application('A').closed);
        QVERIFY(play(R"(
            B> tpaApi {}
            B> register loud -> listChange "Pending"; listChange "Success"
            $ registration => ^auto 0$
            $ target => ^sys.socialplatform takes sys.zel.chathandler takes$
            $ box add item => item-1
            B< listAdd "item"
            B.
            C< listAdd "Unregistered"
            $ contacts => ^contacts: 0,)"));
        const zelcore::Client client = m_simulator->clients().first();
        QVERIFY(m_simulator->profile() == before && client.state == u"Success"_s && client.process == ::getpid());
    }

    void standsApplicationsThatComeAndGoWhileASlotSpinsTheLoop()
    {
        connect(m_simulator.get(), &Simulator::messageReceived, this, [this](int, const QString& type) {
            if (type == "stream"_L1) {
                application('A').disconnect();
                QTRY_COMPARE(m_simulator->clientCount(), 0);
            }
        });
        application('A').send("stream", "{}");
        QTRY_COMPARE(m_simulator->clientCount(), 0);
        QVERIFY(play("$! app 1 send x {} => no such\nB> tpaApi {}\nB."));
    }
};

ZEL_TEST(TstService)
#include "tst_service.moc"
