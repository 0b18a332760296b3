// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <QtCore/QTemporaryFile>

/// The command language and the scenarios that speak it.
class TstCommands : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void cutsLinesAsAShellDoes()
    {
        const std::pair<const char*, const char*> rows[] = {
            {"  a  b\t c ", "a|b|c"},
            {"a \"b c\" d\"e f\"g", "a|b c|de fg"},
            {"'a \"b\\n' c", "a \"b\\n|c"}, // single quotes are literal, double ones escape
            {"a\\ b \"c\\\"d\\\\\" \"e\\nf\\z\" \\n", "a b|c\"d\\|e\nf\\z|n"},
            {"'' a \"\"", "|a|"},
            {"chat 'Ξένια 🐱'", "chat|Ξένια 🐱"},
            {"a#b # c", "a#b|#|c"},
            {"a 'b", nullptr},
            {"a \"b\\\"", nullptr},
            {"a \\", nullptr}};
        for (const auto& [line, words] : rows) {
            QString error;
            const auto split = Simulator::splitWords(QString::fromUtf8(line), &error);
            QVERIFY2(split ? words && split->join(u'|') == QString::fromUtf8(words) : !words && !error.isEmpty(), line);
        }
    }

    void doesWhatItIsTold()
    {
        QVERIFY(play(R"(
            $ contact add anna displayName="Anna B." showBusy=on clientVersion=7
            $ contact anna => ^userId user-anna handle anna ppId pp-anna displayName Anna B. => 200 showBusy true clientVersion 7$
            $ contact add boris displayName= installed=off
            $ contacts => ^anna installed Anna B. boris not installed boris contacts: 2, with the application: 1$
            $ contact picture boris 32768
            $ contact boris => avatarMimeType image/png
            $ profile displayName "Robin the 2nd"
            $ picture none
            $ profile => displayName Robin the 2nd => statusMessage Available timeZone
            $ permission zelInvites off
            $ permission => ^showAppBox on zelInvites off zelSetup on$
            $ state BlockedByUser
            $ clients => ^application 1 BlockedByUser (no UUID yet) applications: 1$
            $ box add "two\nlines" c
            $! box change item-1 icon=5 => no icon
            $ box change item-1 cookie=d icon=
            $ box icon 0 99
            $ box => ^item-1 icon none text="two lines" cookie="d" icon 0 99 bytes => items: 1, icons: 1$
            $ eco pp-x eco-y
            $ eco pp-x => ^eco-y$
            $ eco pp-robin => ^eco-pp-robin$
            $ help => A person has userId, handle, => clientVersion, picture.
            $ generate 5 8
            $ contact friend00006 => appVersion 1.8 displayName Jürgen => DE platformVersion 200 showBusy true clientVersion 795)"));
        for (const auto& [data, type] : {std::pair("GIF8", "gif"), std::pair("BM", "bmp"), std::pair("\xff", "jpeg")}) {
            m_simulator->setProfilePicture(data);
            QCOMPARE(m_simulator->profile().avatarMimeType, u"image/"_s + QLatin1String(type));
        }
    }

    void saysWhyNotAndChangesNothing()
    {
        const zelcore::Person before = m_simulator->profile();
        QVERIFY(play(R"(
            $ contact add anna
            $! dance => dance
            $! profile displayName 'x => not closed
            $! contact remove nobody => nobody
            $! contact add anna => user-anna
            $! contact add anna userId=another => "anna" is taken
            $! contact change anna userId=another => never changes
            $! contact add '' => needs
            $! contact add giant personalMessage=x[61183] => has room for
            $ contact change anna personalMessage=x[61186]
            $! contact add bert age=3 => ^no field "age"; there are: userId, handle, ppId, appVersion, => showBusy, clientVersion$
            $! contact add => ^HANDLE is missing; usage: contact add HANDLE [FIELD=VALUE]... [installed=off]$
            $! contact chnage anna x=y => ^contact has no action "chnage"; there are: add, change, => picture$
            $! app 1 => no command
            $! profile showBusy perhaps => ^showBusy takes on or off, not "perhaps"$
            $! profile clientVersion many => number
            $! permission showAppBox perhaps => usage: permission
            $! send foo { => JSON
            $! picture 32769 => 32768
            $! generate 1 many => SEED
            $! generate 1000000 => room for 1000000
            $! rate 100001 => PER-SECOND
            $! eco-status e Friend => PendingContactExists
            $! drop a b => too many)"));
        QString reply;
        QVERIFY(!Simulator().execute(u"back"_s, &reply) && reply.contains("started"_L1));
        QVERIFY(m_simulator->profile() == before && m_simulator->contactCount() == 1);
        QVERIFY(m_simulator->addContact(u"Anna"_s).isEmpty() && !m_simulator->clearBox(u"x"_s) &&
                m_refused->size() == 2 && m_simulator->execute(u"#"_s, &reply) && reply.isEmpty());
        for (int i = 0; i < 2; ++i)
            QTest::ignoreMessage(QtWarningMsg,
                                 QRegularExpression(u"\"Lost\".* Unknown.*\"Success\" is their Allowed"_s));
        m_simulator->setRegistrationPolicy(Simulator::RegistrationPolicy::Fixed, u"Lost"_s);
        m_simulator->setRegistrationState(u"Lost"_s);
    }

    void shipsScenariosThatCanBePlayed()
    {
        QTest::failOnWarning(QRegularExpression(u".*"_s));
        QVERIFY(!Simulator::scenarioNames().isEmpty() && Simulator::commandNames().count(u"profile"_s) == 1);
        for (const QString& name : Simulator::scenarioNames()) {
            Simulator simulator;
            QVERIFY(simulator.loadScenario(name) && simulator.start() && simulator.contactCount() > 0);
        }
    }

    void refusesAFaultyScenarioAsAWhole()
    {
        const QList<QPair<const char*, const char*>> cases{
            {"{\n\"world\":", "line 2"},
            {"[]", "array"},
            {"{\"world\":{\n\"contacts\":[{\"handle\":\"b\",\n\"x\\\"\":1}]}}", "line 2: world.contacts[0]: "},
            {"{\"timeline\":[\n{\"command\":\"drop\"},{\n\"at\":\"soon\"}]}", "line 3: timeline[1].at is"},
            {"{\"world\":{\"latency\":1,\n\"contacts\":[],\n\"latency\":2}}", "line 3: world.latency stands there"},
            {R"({"world":{"box":{"icons":[{"id":"1"}]}}})", "world.box.icons[0]: a picture is"},
            {R"({"world":{"profile":{"picture":"none.png"}}})", "world.profile: /"}, // beside the scenario
            {R"({"world":[]})", "world is no object"},
            {R"({"world":{"box":{"limit":0,"items":[{"text":"a"}]}}})", "world.box.items[0]: the box is full"},
            {R"({"world":{"applications":{"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b":{"box":{"items":[{"text":""}]}}}}})",
             "world.applications.6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b.box.items[0]: "},
            {R"({"wrld":{}})", "wrld"},
            {R"({"description":[]})", "line 1: description is no text, no number"},
            {R"({"timeline":{}})", "line 1: timeline is no array"},
            {R"({"world":{"generate":{"count":1,"mood":1}}})", "world.generate.mood means nothing"},
            {R"({"timeline":[{"command":"invite nobody"}]})", "timeline[0]: no contact"},
            {R"({"timeline":[{"command":"app 1 box icon 3 none.png"}]})", "timeline[0]: /"},
            {R"({"timeline":[{"command":"away"},{"command":"contact remove nobody"}]})", "timeline[1]: "},
            {R"({"timeline":[{"command":"profile x \\"}]})", "timeline[0].command"},
            {R"({"timeline":[{"after":"lunch","command":"away"}]})", "after"},
            {R"({"timeline":[{"at":-1,"command":"away"}]})", "timeline[0].at"}};
        for (const auto& [text, hint] : cases) {
            const QString problem = load(text);
            QVERIFY2(problem.startsWith(m_fileName) && problem.contains(QLatin1String(hint)), qPrintable(problem));
            QCOMPARE(m_simulator->contactCount(), 0);
        }
        QString problem;
        QVERIFY(!m_simulator->loadScenario(u"no such scenario"_s, &problem) && problem.contains("first-steps"_L1));
        // What applications make need not be there, and times count.
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"timeline.7.: .*state \"Lost\""_s));
        QCOMPARE(load(R"({"timeline":[{"at":99999,"command":"contact remove a"},{"at":99999,"command":"contact add a"},
                                {"at":1,"command":"contact add a"},{"command":"box remove item-7"},
                                {"command":"box change item-1 text=b"},{"command":"box icon 3 none"},
                                {"command":"away 5"},{"command":"app 2 state Lost"},{"command":"app 2 box add x"},
                                {"at":99999,"command":"rate 100000"}],
                          "world":{"permissions":{"zelSetup":false},"state":"Pending","latency":5,"requestLatency":"5","reading":true,
                                   "targets":{"sys.socialplatform":"refuses"},"box":{"limit":"none"},
                                   "registered":{"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b":true},
                                   "applications":{"6a0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b":
                                                   {"latency":1,"box":{"items":[{"text":"text"}]}}},
                                   "ecoIds":{"pp":"eco"}}})"),
                 QString());
        QVERIFY(m_simulator->boxItems().isEmpty() && play("~") && !m_refused->isEmpty());
        QCOMPARE(m_simulator->targetState(u"sys.socialplatform"_s), Simulator::TargetState::Refusing);
        QCOMPARE(m_simulator->boxItems(u"6A0fd1e9-3a4a-4c4e-8b6f-0c1d2e3f4a5b"_s).size(), 1);
    }

    void playsATimelineStepByStepAndByTheClock()
    {
        QString done;
        connect(m_simulator.get(), &Simulator::commandExecuted, this,
                [&done](const QString& line) { done.append(line.back()); });
        m_simulator->stop();
        m_simulator->setTimelinePaused(true);
        // The third comes first in its file, two are due at the same time, and the last waits for a registration, of
        // which only the first counts.
        QCOMPARE(load(R"({"world":{"profile":{"displayName":"Before"},"contacts":[{"handle":"","displayName":"Anna"}]},
                          "timeline":[{"at":90,"command":"eco c c"},{"at":10,"command":"eco a a"},
                                      {"at":10,"command":"eco b b"},
                                      {"after":"registered","at":5,"command":"eco d d"}]})"),
                 QString());
        QVERIFY(m_simulator->start() && play(R"(
            $ profile => displayName Before
            $ contact anna => displayName Anna
            $ timeline step
            $ timeline => 10 ms, paused
            $ timeline until 89 => ^1 entries$
            $ timeline until 20 => ^0 entries$
            $ timeline => 89 ms
            $ timeline step
            $! timeline step => no entry follows
            $ timeline until 1000 => 0 entries
            $ state Success
            $ timeline until 1004 => 0 entries
            $ state Success
            $ timeline until 1005 => 1 entries)"));
        QCOMPARE(done, u"abcd"_s);
        m_simulator->stop();
        QVERIFY(m_simulator->start() && m_simulator->timelineTime() == 0);
        QVERIFY(play("$ timeline step\n$ timeline => paused\n$ timeline go"));
        QTRY_COMPARE(done, u"abcdabc"_s);
        QVERIFY(play("$! timeline step\n$ timeline => paused\n$ timeline go\n$ state Success"));
        QTRY_COMPARE(done, u"abcdabcd"_s);
        QVERIFY(play("$ timeline => ms$\n$ timeline pause") && m_simulator->timelineTime() >= 95);
        m_simulator->stop();
        QVERIFY(m_simulator->start());
        m_simulator->stop();
        QVERIFY(!m_simulator->stepTimeline() && m_simulator->start());
        QVERIFY(play("$ reset\n$! timeline step") && m_refused->isEmpty());
    }

private:
    /// The problem with a scenario; none when it has been loaded.
    QString load(const char* text)
    {
        QTemporaryFile file;
        if (!file.open() || file.write(text) < 0)
            return file.errorString();
        file.close();
        m_fileName = file.fileName();
        QString problem;
        return m_simulator->loadScenario(m_fileName, &problem) ? QString() : problem;
    }

    QString m_fileName;
};

ZEL_TEST(TstCommands)
#include "tst_commands.moc"
