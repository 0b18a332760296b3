// SPDX-License-Identifier: Apache-2.0
#include "ServiceTest.h"

#include <QtCore/QTemporaryFile>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

/// The command language and the scenarios that speak it.
class TstCommands : public ServiceTest
{
    Q_OBJECT

private Q_SLOTS:
    void cutsLinesAsAShellDoes()
    {
        const QList<QPair<QString, QStringList>> cases{
            {u"  a  b\t c "_s, {u"a"_s, u"b"_s, u"c"_s}},
            {u"a \"b c\" d\"e f\"g"_s, {u"a"_s, u"b c"_s, u"de fg"_s}},
            {u"'a \"b\\n' c"_s, {u"a \"b\\n"_s, u"c"_s}}, // single quotes are literal, double ones escape
            {u"a\\ b \"c\\\"d\\\\\" \"e\\nf\\z\" \\n"_s, {u"a b"_s, u"c\"d\\"_s, u"e\nf\\z"_s, u"n"_s}},
            {u"'' a \"\""_s, {QString(), u"a"_s, QString()}},
            {u"chat 'Ξένια 🐱'"_s, {u"chat"_s, u"Ξένια 🐱"_s}},
            {u"a#b # c"_s, {u"a#b"_s, u"#"_s, u"c"_s}}};
        for (const auto& [line, words] : cases)
            QCOMPARE(Simulator::splitWords(line).value_or(QStringList()), words);
        for (const QString& line : {u"a 'b"_s, u"a \"b"_s, u"a \"b\\\""_s, u"a \\"_s}) {
            QString error;
            QVERIFY2(!Simulator::splitWords(line, &error) && !error.isEmpty(), qPrintable(line));
        }
    }

    void doesWhatItIsTold()
    {
        const char* const story = R"(
            $ # only a comment
            $ contact add anna displayName="Anna B." showBusy=on clientVersion=7
            $ contact add boris installed=off
            $ contact install boris
            $ contact uninstall anna
            $ contact change boris personalMessage='x = "y"'
            $ contact picture boris 32768
            $ generate 5 2
            $ profile displayName "Robin the 2nd"
            $ profile statusMessage=away showBusy=on
            $ picture none
            $ permission zelInvites off
            $ state BlockedByUser
            $ registration manual
            $ box icon 3 500
            $ box add "two\nlines" c 3
            $ box change item-1 cookie=d icon=
            $ box icon 3 none
            $ eco pp-x eco-y
            $ eco pp-x => eco-y
            $ eco-status eco-y ContactExists
            $ eco-status eco-y => ContactExists
            $ rate 0
            $ drop
            $ delay 10 listAdd)";
        QVERIFY(play(story));
        QCOMPARE(m_simulator->contactCount(), 7);
        QCOMPARE(m_simulator->contacts().size(), 6);
        const zelcore::Person anna = m_simulator->contact(u"anna"_s);
        QVERIFY(anna.displayName == u"Anna B."_s && anna.clientVersion == 7 && anna.showBusy);
        const zelcore::Person boris = m_simulator->contact(u"boris"_s);
        QCOMPARE(boris.personalMessage, u"x = \"y\""_s);
        QCOMPARE(m_simulator->picture(boris.avatarId).size(), 32768);
        const zelcore::Person own = m_simulator->profile();
        QCOMPARE(QStringList({own.displayName, own.statusMessage, own.avatarId}),
                 QStringList({u"Robin the 2nd"_s, u"away"_s, QString()}));
        QCOMPARE(m_simulator->permissions(), (zelcore::Permissions{true, false, true}));
        QCOMPARE(m_simulator->registrationState(), u"BlockedByUser"_s);
        QCOMPARE(m_simulator->boxItems(), (QList<zelcore::BoxItem>{{u"item-1"_s, u"two\nlines"_s, u"d"_s, QString()}}));
        QVERIFY(m_simulator->boxIcons().isEmpty());
    }

    void saysWhyNotAndChangesNothing()
    {
        const zelcore::Person before = m_simulator->profile();
        const char* const mistakes = R"(
            $! dance => dance
            $! profile displayName 'x => not closed
            $! contact remove nobody => nobody
            $! contact add anna age=3 => age
            $! profile clientVersion many => number
            $! permission showAppBox perhaps => usage: permission
            $! send foo { => JSON
            $! picture 32769 => 32768
            $! quit now => usage: quit
            $! contact chnage anna x=y => add, change
            $! generate many => COUNT
            $! rate many => PER-SECOND
            $! rate 100001 => PER-SECOND
            $! eco-status e Friend => PendingContactExists
            $! drop a b => too many)";
        QVERIFY(play(mistakes));
        QString reply;
        QVERIFY(!Simulator().execute(u"back"_s, &reply) && reply.contains("started"_L1));
        QCOMPARE(m_simulator->profile(), before);
        QCOMPARE(m_simulator->contactCount(), 0);
    }

    void shipsScenariosThatCanBePlayed()
    {
        QVERIFY(!Simulator::scenarioNames().isEmpty());
        for (const QString& name : Simulator::scenarioNames()) {
            Simulator simulator;
            const QSignalSpy refused(&simulator, &Simulator::refused);
            QString problem;
            QVERIFY2(simulator.loadScenario(name, &problem) && simulator.start(&problem), qPrintable(problem));
            QVERIFY(simulator.contactCount() > 0 && refused.isEmpty());
        }
    }

    void refusesAFaultyScenarioAsAWhole()
    {
        const QList<QPair<const char*, const char*>> cases{
            {"{\n\"world\":", "line 2"},
            {"[]", "array"},
            {R"({"world":{"registration":"lunch"}})", "world.registration: \"lunch\""},
            {R"({"wrld":{}})", "wrld"},
            {R"({"world":{"profile":{"age":3}}})", "world.profile: no field \"age\""},
            {R"({"world":{"permissions":{"zelSetup":3}}})", "world.permissions.zelSetup"},
            {R"({"world":{"contacts":[{"picture":3}]}})", "world.contacts[0]: "},
            {R"({"world":{"contacts":[{"handle":"a"},{"handle":"a"}]}})", "world.contacts[1]: "},
            {R"({"world":{"contacts":[{"handle":"a","picture":40000}]}})", "32768"},
            {R"({"world":{"box":{"items":[{"text":"a","icon":1}]}}})", "world.box.items[0]: "},
            {R"({"world":{"box":{"icons":[{"id":1}]}}})", "world.box.icons[0]: "},
            {R"({"world":{"ecoIdStatus":{"e":"Friend"}}})", "world.ecoIdStatus.e: "},
            {R"({"world":{"contacts":[{"handle":"a"}]},"timeline":[{"at":0,"command":"dance"}]})", "timeline[0]: "},
            {R"({"timeline":[{"command":"away"},{"command":"contact remove nobody"}]})", "timeline[1]: "},
            {R"({"timeline":[{"command":"invite nobody"}]})", "nobody"},
            {R"({"timeline":[{"command":"delay soon"}]})", "MS"},
            {R"({"timeline":[{"command":"registration lunch"}]})", "timeline[0]: "},
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
        QCOMPARE(load(R"({"timeline":[{"at":9,"command":"contact remove a"},{"at":1,"command":"contact add a"},
                                      {"command":"box remove item-7"},{"command":"box change item-1 text=b"},
                                      {"command":"box icon 3 none"},{"command":"away 5"},{"command":"back"}]})"),
                 QString());
    }

    void playsATimelineStepByStepAndByTheClock()
    {
        QString done;
        connect(m_simulator.get(), &Simulator::commandExecuted, this,
                [&done](const QString& line) { done.append(line.back()); });
        m_simulator->stop();
        m_simulator->setTimelinePaused(true);
        // The third comes first in its file, two are due at the same time, and the last waits for a registration.
        QCOMPARE(load(R"({"world":{"profile":{"displayName":"Before"},"contacts":[{"displayName":"Anna"}]},
                          "timeline":[{"at":90,"command":"eco c c"},{"at":10,"command":"eco a a"},
                                      {"at":10,"command":"eco b b"},
                                      {"after":"registered","at":5,"command":"eco d d"}]})"),
                 QString());
        QCOMPARE(m_simulator->profile().displayName, u"Before"_s);
        QCOMPARE(m_simulator->contacts().first().handle, u"anna"_s);
        QVERIFY(m_simulator->start() && m_simulator->stepTimeline());
        QCOMPARE(done, u"a"_s);
        QCOMPARE(m_simulator->timelineTime(), 10);
        QCOMPARE(m_simulator->runTimelineUntil(89), 1);
        QCOMPARE(m_simulator->runTimelineUntil(20), 0); // time goes one way
        QCOMPARE(m_simulator->timelineTime(), 89);
        QVERIFY(m_simulator->stepTimeline() && !m_simulator->stepTimeline());
        QCOMPARE(m_simulator->runTimelineUntil(1000), 0);
        m_simulator->setRegistrationState(u"Success"_s);
        QCOMPARE(m_simulator->runTimelineUntil(1004), 0);
        m_simulator->setRegistrationState(u"Success"_s); // only the first counts
        QCOMPARE(m_simulator->runTimelineUntil(1005), 1);
        QCOMPARE(done, u"abcd"_s);

        m_simulator->stop();
        QVERIFY(!m_simulator->stepTimeline() && m_simulator->start());
        QVERIFY(play("$ timeline step\n$ timeline until 89 => 1 entries\n$ timeline => 89 ms, paused\n$ timeline go"));
        QTRY_COMPARE(done, u"abcdabc"_s);
        QVERIFY(m_simulator->timelineTime() >= 90);
        QVERIFY(play("$ timeline pause\n$! timeline step => no entry follows"));
        QVERIFY(m_simulator->isTimelinePaused());
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
