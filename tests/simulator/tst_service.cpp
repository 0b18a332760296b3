// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <common/SeededRandom.h>

#include <QtCore/QFileInfo>

#include <csignal>

#include <sys/wait.h>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

namespace {

const struct
{
    const char* name;
    const char* dialogue;
} dialogues[] = {
    {"concludes nothing that was decided meanwhile", R"(
        $ registration auto 20
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        A< listChange "Pending"
        $ state CancelledByUser
        A< listChange "CancelledByUser"
        B> tpaApi {}
        B> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        B< listChange "Pending"
        B< listChange "Success"
        A.)"}, // who asked later is done later
    {"waits for word in manual mode", R"(
        $ registration manual
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        A< listChange "Pending"
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true}
        A.
        $ state BlockedByTov
        A< listChange "BlockedByTov")"},
    {"asks nobody twice about the same UUID until the registration is set anew", R"(
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        A< listChange "Pending"
        A< listChange "Success"
        B> tpaApi {}
        B> registrationRequest {"uuid":"6A0FD1E9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        B< listChange "Success"
        $ state Expired
        B< listChange "Expired"
        B> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        B< listChange "Pending")"},
    {"takes no malformed UUID", R"(
        A> registrationRequest {"uuid":"","silent":false}
        A> registrationRequest {"uuid":"{6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b}","silent":false}
        A> registrationRequest {"uuid":"6a0fd1e93a4a4c4e8b6f0c1d2e3f4a5b","silent":false}
        A> registrationRequest {"uuid":"00000000-0000-0000-0000-000000000000","silent":false}
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5g","silent":true}
        A< listChange "InvalidUuid"
        A. listChange listChange listChange listChange
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"}
        A.
        ! 6)"},
    {"keeps the registration of each application apart", R"(
        B> tpaApi {}
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true}
        A< listChange "Success"
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":false}
        A< listChange "Success"
        A.
        B.
        $ permission showAppBox off
        A< listChange "Success" "showAppBox":false
        B< listChange "Unregistered" "showAppBox":false)"},
    {"refuses a change of the profile as a whole", R"(
        $ profile displayName=Old
        A< listChange "Old"
        A> change {"displayName":"New","showBusy":"yes"}
        A< profileChangeResponse "Failure" "error":
        A> change {"displayName":"New","userId":"someone"}
        A< profileChangeResponse "Failure"
        A> change {"displayName":"New","avatarId":"no hash"}
        A< profileChangeResponse "Failure"
        A> change {"displayName":"x[62000]"}
        A< profileChangeResponse "Failure"
        A.
        ! 4
        A> requestListElements {"elements":[{"name":"platformProfile"}],"type":"global"}
        A< listChunk "displayName":"Old")"},
    {"keeps a picture that is on its way apart from other changes", R"(
        A> change {"avatarId":"hash[500]","avatarMimeType":"image/gif"}
        A< requestNewAvatarImage hash[500]
        A> change {"personalMessage":"meanwhile"}
        A< profileChangeResponse "Success"
        A< listChange "meanwhile" -hash[500]
        A> stream {"id":"hash[500]","value":"data[500]","last":true}
        A< profileChangeResponse "Success"
        A< listChange "meanwhile" hash[500]
        A> change {"avatarId":"hash[500]","avatarMimeType":"image/gif"}
        A< profileChangeResponse "Success"
        A.)"}, // known by now, it is not asked for again
    {"refuses bytes that are not the announced picture", R"(
        A> change {"avatarId":"hash[500]"}
        A> stream {"id":"hash[500]","value":"data[501]","last":true}
        A< profileChangeResponse "Failure"
        A> change {"avatarId":"hash[32769]"}
        A> stream {"id":"hash[32769]","value":"data[15000]"}
        A> stream {"id":"hash[32769]","value":"data[15000]"}
        A> stream {"id":"hash[32769]","value":"data[2769]"}
        A< profileChangeResponse "Failure"
        A> change {"avatarId":"hash[16000]"}
        A> stream {"id":"hash[16000]","value":"data[16000]","last":true}
        A< profileChangeResponse "Failure"
        A> change {"avatarId":"hash[501]"}
        A> stream {"id":"hash[501]","value":"***","last":true}
        A< profileChangeResponse "Failure"
        A> stream {"id":"who asked","value":"QUJD","last":true}
        ! 5
        A. requestNewAvatarImage requestNewAvatarImage requestNewAvatarImage requestNewAvatarImage)"},
    {"lets an item wait for an icon that is on its way", R"(
        A> createProfileBoxImage {"imageId":"7","imageHash":"hash[700]"}
        A> createProfileBoxItem {"text":"a","cookie":"","imageId":"7"}
        A< requestNewProfileBoxImage "newProfileBoxImage-7"
        A> stream {"id":"newProfileBoxImage-7","value":"data[701]","last":true}
        A.
        ! 1
        A> createProfileBoxImage {"imageId":"7","imageHash":"hash[700]"}
        A> createProfileBoxItem {"text":"a","cookie":"","imageId":"7"}
        A. requestNewProfileBoxImage
        A> stream {"id":"newProfileBoxImage-7","value":"data[700]","last":true}
        A< listAdd "profileBoxImage"
        A< listAdd "profileBoxItem" "imageId":"7"
        A.
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
        A> createProfileBoxItem {"text":"x[98]\n\n","cookie":"x[128]"}
        A. listAdd
        $ permission showAppBox off
        A> createProfileBoxItem {"text":"a","cookie":""}
        A> createProfileBoxImage {"imageId":"1","imageHash":"hash[9]"}
        A. listChange
        ! 9)"},
    {"answers empty lists and unknown keys with one last chunk", R"(
        A> requestListAll {"type":"platformContact"}
        A< listAll "platformContact"
        A< listChunk "elements":[] "last":true
        A> requestListElements {"cookie":"1","elements":[{"userId":"nobody"}],"type":"platformUser"}
        A< listElements "platformUser" "cookie":"1"
        A< listChunk "elements":[] "last":true
        A> requestListElements {"cookie":"2","elements":[],"type":"platformUser"}
        A< listElements "cookie":"2"
        A< listChunk "elements":[] "last":true
        A.)"},
    {"announces only the members that differ", R"(
        $ contact add anna personalMessage=before
        A. listAdd
        $ contact change anna personalMessage='„Grüße“\"zitiert\"🙂'
        $ contact change anna personalMessage='„Grüße“\"zitiert\"🙂'
        A< listChange [{"personalMessage":"„Grüße“\\\"zitiert\\\"🙂","userId":"user-anna"}]
        A.)"},
    {"drops, duplicates and delays one message each, of the type that was ordered", R"(
        $ drop
        $ duplicate
        $ delay 20
        $ drop requestEcoIdStatusResponse
        A> requestEcoId {"ppid":"1"}
        A> requestEcoId {"ppid":"2"}
        A> requestEcoId {"ppid":"3"}
        A> requestEcoId {"ppid":"4"}
        A< requestEcoIdResponse "ppid":"2"
        A< requestEcoIdResponse "ppid":"2"
        A< requestEcoIdResponse "ppid":"4"
        A< requestEcoIdResponse "ppid":"3"
        A> requestEcoIdStatus {"ecoId":"1"}
        A> requestEcoIdStatus {"ecoId":"2"}
        A< requestEcoIdStatusResponse "ecoId":"2")"},
    {"tells nothing unasked to an application that starts", R"(
        $ away
        $ back
        B> tpaApi {}
        C< listAdd
        B.)"}, // once the silent one has been told, the other would have been, too
    {"leaves out the lists that a returning application asks for", R"(
        B> requestListAll {"type":"platformContact"}
        B< listAll "platformContact"
        B< listAll "profileBoxItem"
        B< listAll "profileBoxImage")"},
    {"tells an application that comes back everything anew", R"(
        $ contact add anna
        $ contact add bob
        A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true}
        A< listChange "Success"
        $ away
        $ contact uninstall anna
        $ contact change bob displayName=Meanwhile
        $ back
        B< listAdd "permission" "Success" "platformProfile"
        B< listAdd "platformUser" "Meanwhile" -user-anna
        B< listAll "platformContact"
        B< listChunk "user-bob" "last":true -user-anna)"},
    {"ends an invitation when its owner becomes a contact", R"(
        $ eco-status eco-pp-zoe => Unknown
        $ eco-status eco-pp-zoe PendingContactExists
        $ contact add zoe
        $ eco-status eco-pp-zoe => ContactExists)"},
};

/// What an application makes of list messages, in the plainest way.
struct Mirror
{
    QStringList ids;
    QMap<QString, QJsonObject> records;

    void replay(RawApplication& application)
    {
        application.synchronize();
        for (const QJsonObject& message : std::exchange(application.messages, {})) {
            const QString what = message.keys().value(0);
            const QJsonObject body = message.value(what).toObject();
            for (const QJsonValue element : body.value("elements"_L1).toArray())
                take(what, body.value("type"_L1).toString(), element.toObject());
        }
    }

    void take(const QString& what, const QString& list, const QJsonObject& element)
    {
        const QString id = element.value("userId"_L1).toString();
        if (list == "platformContact"_L1 && what == "listAdd"_L1)
            ids.append(id);
        else if (list == "platformContact"_L1 && what == "listRemove"_L1)
            ids.removeOne(id);
        for (auto member = element.begin(); list == "platformUser"_L1 && member != element.end(); ++member)
            records[id].insert(member.key(), member.value());
    }
};

/// Something between a good request and nothing at all.
QByteArray nonsense(QRandomGenerator& random)
{
    static const auto types =
        QByteArray("registrationRequest requestListAll requestListElements requestListRemove requestListChange stream "
                   "requestUserAvatar createProfileBoxItem createProfileBoxImage requestProfileBoxImage requestEcoId "
                   "requestEcoIdStatus tpaApi unheardOf")
            .split(' ');
    static const auto keys = QByteArray("uuid silent type id cookie elements userId streamId text imageId imageHash "
                                        "name value last ppid ecoId")
                                 .split(' ');
    static const auto values =
        QByteArray("\"\" \"global\" \"platformUser\" \"profileBoxItem\" true -1 1e400 null [] [{}] [1,[],\"x\"] {} "
                   "[{\"name\":\"platformProfile\",\"value\":{\"displayName\":3}}] \"\\ud800\" [{\"userId\":7}] "
                   "[{\"name\":\"permission\",\"value\":{}}]")
            .split(' ');
    const auto any = [&random](const QByteArrayList& words) { return words.at(random.bounded(int(words.size()))); };
    QByteArrayList members;
    for (int i = random.bounded(5); i > 0; --i)
        members.append('"' + any(keys) + "\":" + any(values));
    QByteArray record = "msg::zel\ndat:json:{\"" + any(types) + "\":{" + members.join(',') + "}}\n";
    const int spoil = random.bounded(8);
    if (spoil == 0)
        record.truncate(1 + random.bounded(int(record.size())));
    else if (spoil == 1)
        record[random.bounded(int(record.size()))] = char(random.bounded(256));
    return record;
}

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

    void takesAnInvitationWhereInvitationsGo()
    {
        const std::tuple<QString, QString, QString> rows[] = {
            {u"sys.zel.chathandler"_s, u"vx.action.INVITEZEL"_s, u"Unknown"_s},
            {u"sys.socialplatform"_s, u"vx.action.OTHER"_s, u"Unknown"_s},
            {u"sys.socialplatform"_s, u"vx.action.INVITEZEL"_s, u"PendingContactExists"_s}};
        for (const auto& [target, action, status] : rows) {
            QVERIFY(application('I').connectTo(m_simulator->root(), qPrintable(u"/services/invocation/"_s + target)));
            const QString data = u"{\"contactInvitation\":{\"ecoid\":\"e\"}}"_s;
            const QJsonObject request{{u"target"_s, target}, {u"action"_s, action}, {u"data"_s, data}};
            const QSignalSpy received(m_simulator.get(), &Simulator::invocationReceived);
            application('I').sendRecord(QJsonDocument(request).toJson());
            QTRY_COMPARE(received.size(), 1);
            QVERIFY(play(qPrintable(u"$ eco-status e => "_s + status)));
        }
    }

    void tellsEveryRecordAsItPasses()
    {
        QList<zelcore::WireRecord> passed;
        connect(m_simulator.get(), &Simulator::recordPassed, this, [&](const auto& record) { passed.append(record); });
        QVERIFY(play(R"(
            A> registrationRequest {"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true}
            A< listChange "Success"
            $ drop
            $ truncate 5
            $ send lost {}
            $ send cut {}
            $ raw any)"));
        RawApplication& a = application('A');
        QTRY_COMPARE(a.records.size(), 3);
        QByteArrayList toA;
        for (const zelcore::WireRecord& record : std::as_const(passed)) {
            QVERIFY(record.client == 1 && record.time >= passed.first().time && record.target.isEmpty());
            QCOMPARE(record.uuid.isEmpty(), &record == &passed.first()); // known once it has been read
            if (record.direction == zelcore::WireRecord::Direction::ToApplication)
                toA.append(record.bytes);
        }
        QCOMPARE(toA, a.records);
        QVERIFY(passed.first().bytes.startsWith("msg::zel\ndat:json:{\"registrationRequest\":"));

        QVERIFY(application('I').connectTo(m_simulator->root(), "/services/invocation/sys.zel.chathandler"));
        application('I').sendRecord("nonsense");
        QTRY_COMPARE(passed.last().target, u"sys.zel.chathandler"_s);
        QVERIFY(passed.last().client > 0 && passed.last().bytes == "nonsense"); // an application of this process
    }

    void announcesEveryChangeSoThatAMirrorStaysEqual()
    {
        QRandomGenerator random = seededRandom();
        Mirror mirror;
        const QStringList commands{u"contact add %1 displayName=%2 installed=on"_s,
                                   u"contact add %1 displayName=%2 installed=off"_s,
                                   u"contact change %1 displayName=%2 showBusy=on"_s,
                                   u"contact change %1 displayName=%2 showBusy=off"_s,
                                   u"contact remove %1"_s,
                                   u"contact install %1"_s,
                                   u"contact uninstall %1"_s};
        for (int step = 1; step <= 800; ++step) {
            const QString handle = u"h%1"_s.arg(random.bounded(60));
            QString command = commands.at(random.bounded(int(commands.size())));
            command.replace(u"%1"_s, handle).replace(u"%2"_s, QString::number(step));
            m_simulator->execute(command); // what cannot be changes nothing
            // The records are not announced; an application asks for those that it has not.
            const QString id = m_simulator->contact(handle).userId;
            if (!id.isEmpty() && !mirror.records.contains(id)) {
                mirror.records.insert(id, {});
                const QJsonArray keys{QJsonObject{{u"userId"_s, id}}};
                application('A').send(u"requestListElements"_s,
                                      {{u"elements"_s, keys}, {u"type"_s, u"platformUser"_s}});
            }
            // Records that are asked for later than they change must be the newest, whatever overtakes them.
            if (random.bounded(4) == 0 || step == 800)
                mirror.replay(application('A'));
        }
        QVERIFY(mirror.ids.size() > 5);
        QStringList ids;
        for (const zelcore::Person& person : m_simulator->contacts()) {
            ids.append(person.userId);
            const QJsonObject record = mirror.records.value(person.userId);
            QCOMPARE(record.value("displayName"_L1).toString(), person.displayName);
            QCOMPARE(record.value("showBusy"_L1).toBool(), person.showBusy);
        }
        QCOMPARE(mirror.ids, ids);
    }

    void livesAtTheRateAskedFor()
    {
        QVERIFY(play("$ generate 50 1"));
        m_simulator->setActivity(Simulator::Activity::Changes, 1000, 9);
        for (int i = 0; i < 200; ++i)
            QCOMPARE(application('A').take("listChange").value("type"_L1).toString(), u"platformUser"_s);
        QVERIFY(play("$ rate 1000 uninstalls"));
        QTRY_VERIFY(m_simulator->contacts().isEmpty());
        QVERIFY(play("$ rate 1000 installs"));
        QTRY_VERIFY(m_simulator->contacts().size() > 40);
        QVERIFY(play("$ rate 0"));
        application('A').drain();
        QVERIFY(play("A."));
    }

    void refusesContactsThatCannotBe()
    {
        QVERIFY(!m_simulator->addContact(u"Anna"_s).isEmpty());
        zelcore::Person twin = m_simulator->contact(u"anna"_s);
        QVERIFY(m_simulator->addContact(twin).isEmpty());
        twin.userId = u"another"_s;
        QVERIFY(m_simulator->addContact(twin).isEmpty());
        QVERIFY(m_simulator->addContact(zelcore::Person()).isEmpty());
        zelcore::Person giant;
        giant.handle = u"giant"_s;
        giant.personalMessage = QString(70000, u'x');
        QVERIFY(m_simulator->addContact(giant).isEmpty());
        QVERIFY(!m_simulator->removeContact(u"nobody"_s));
        QCOMPARE(m_refused->size(), 5);
        QCOMPARE(m_simulator->contactCount(), 1);
    }

    void makesUpTheSamePeopleForTheSameSeed()
    {
        Simulator first, second, third;
        first.generateContacts(200, 3);
        second.generateContacts(200, 3);
        third.generateContacts(200, 4);
        QCOMPARE(first.contacts(), second.contacts());
        QVERIFY(first.contacts() != third.contacts());
    }

    void cutsAndGarblesRecords()
    {
        m_simulator->injectFault(Simulator::Fault::Truncate, 30);
        m_simulator->injectFault(Simulator::Fault::Garble);
        m_simulator->injectFault(Simulator::Fault::Truncate, 0);
        m_simulator->sendMessage(u"first"_s, {});
        m_simulator->sendMessage(u"second"_s, {{u"key"_s, u"value"_s}});
        m_simulator->sendMessage(u"third"_s, {});
        m_simulator->sendRecord("@platform\n");
        RawApplication& a = application('A');
        QTRY_COMPARE(a.unreadable, 4);
        QCOMPARE(a.records.at(0).size(), 30);
        QCOMPARE(a.records.at(1).size(), qsizetype(strlen("@platform\ndat:json:{\"second\":{\"key\":\"value\"}}\n")));
        QCOMPARE(a.records.at(3), QByteArray("@platform\n"));
        QVERIFY(a.messages.isEmpty());
    }

    void givesARegistrationBackToNobodyElse()
    {
        const pid_t other = ::fork();
        if (other == 0) {
            RawApplication application(m_simulator->root());
            application.begin();
            application.send("registrationRequest", R"({"uuid":"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b","silent":true})");
            for (;;)
                ::pause();
        }
        QTRY_COMPARE(m_simulator->registrationState(), u"Success"_s);
        m_simulator->goAway();
        ::kill(other, SIGKILL);
        ::waitpid(other, nullptr, 0);
        // One for the connection of this process that was there before, one that is new: neither was registered.
        QVERIFY(play("$ back\nB< listAdd \"Unregistered\"\nC< listAdd \"Unregistered\""));
    }

    void endsAndStartsAgainWithTheSameWorld()
    {
        const QString root = m_simulator->root();
        const QString socket = root + u"/services/zelcore/platform"_s;
        m_simulator->addContact(u"Anna"_s);
        m_simulator->goAway();
        QTRY_VERIFY(application('A').closed);
        QVERIFY(m_simulator->isRunning() && !QFileInfo::exists(socket));
        QVERIFY(m_simulator->comeBack() && QFileInfo::exists(socket));
        m_simulator->stop();
        QVERIFY(!m_simulator->isRunning() && !m_simulator->comeBack());
        QVERIFY(m_simulator->start());
        QCOMPARE(m_simulator->contacts().size(), 1);
        QVERIFY(play("B> tpaApi {}\nB."));
        // Another one cannot take its place.
        Simulator second;
        second.setRoot(root);
        QString error;
        QVERIFY(!second.start(&error) && !error.isEmpty());
        QVERIFY(play("B."));
        // Its own folder goes with it.
        m_simulator.reset();
        QVERIFY(!QFileInfo::exists(root));
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
        QVERIFY(play("B> tpaApi {}\nB."));
    }

    void refusesNonsenseWithOneLineAndGoesOn()
    {
        QRandomGenerator random = seededRandom();
        RawApplication& a = application('A');
        for (int i = 0; i < 3000; ++i) {
            QVERIFY(a.sendRecord(nonsense(random)));
            if (i % 50 == 0)
                a.drain();
        }
        a.drain();
        QVERIFY(m_refused->size() > 1000 && m_refused->size() <= 3000);
        for (const auto& line : *m_refused) {
            const QString text = line.first().toString();
            QVERIFY2(!text.contains(u'\n') && text.size() < 400, qPrintable(text));
        }
        QCOMPARE(a.unreadable, 0);
        QVERIFY(play("A> requestListElements {\"elements\":[{\"name\":\"permission\"}],\"type\":\"global\"}\n"
                     "A< listChunk \"permission\""));
    }
};

ZEL_TEST(TstService)
#include "tst_service.moc"
