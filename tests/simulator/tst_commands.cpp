// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QTemporaryFile>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using zelcore::Simulator;

/// The command language and the scenarios that speak it.
class TstCommands : public QObject
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
            QVERIFY2(!Simulator::splitWords(line, &error), qPrintable(line));
            QVERIFY(!error.isEmpty());
        }
        // Whatever a word holds, there is a way to write it.
        const QString word = u"it's \"a\" \\ $HOME `x`\t\nend"_s;
        QString quoted = word;
        quoted.replace(u"\\"_s, u"\\\\"_s).replace(u"\""_s, u"\\\""_s).replace(u"\n"_s, u"\\n"_s);
        QCOMPARE(Simulator::splitWords(u"\""_s + quoted + u"\""_s), QStringList{word});
        QVERIFY(Simulator().execute(u"  # only a comment"_s));
    }

    void doesWhatItIsTold()
    {
        Simulator simulator;
        const QStringList lines{
            u"contact add anna displayName=\"Anna B.\" showBusy=on clientVersion=7"_s,
            u"contact add boris installed=off"_s,
            u"contact install boris"_s,
            u"contact uninstall anna"_s,
            u"contact change boris personalMessage='x = \"y\"'"_s,
            u"contact picture boris 1000"_s,
            u"generate 5 2"_s,
            u"profile displayName \"Robin the 2nd\""_s,
            u"profile statusMessage=away showBusy=on"_s,
            u"picture none"_s,
            u"permission zelInvites off"_s,
            u"state BlockedByUser"_s,
            u"registration manual"_s,
            u"box icon 3 500"_s,
            u"box add \"two\\nlines\" c 3"_s,
            u"box change item-1 cookie=d icon="_s,
            u"box icon 3 none"_s,
            u"eco pp-x eco-y"_s,
            u"eco-status eco-y ContactExists"_s,
            u"rate 0"_s,
            u"drop"_s,
            u"delay 10 listAdd"_s,
            u"   "_s,
        };
        for (const QString& line : lines) {
            QString reply;
            QVERIFY2(simulator.execute(line, &reply), qPrintable(line + u": "_s + reply));
        }
        QCOMPARE(simulator.contacts().size(), 6);
        QCOMPARE(simulator.contactCount(), 7);
        QCOMPARE(simulator.contact(u"anna"_s).displayName, u"Anna B."_s);
        QCOMPARE(simulator.contact(u"anna"_s).clientVersion, 7);
        QVERIFY(simulator.contact(u"anna"_s).showBusy);
        const zelcore::Person boris = simulator.contact(u"boris"_s);
        QCOMPARE(boris.personalMessage, u"x = \"y\""_s);
        QCOMPARE(simulator.picture(boris.avatarId).size(), 1000);
        QCOMPARE(simulator.profile().displayName, u"Robin the 2nd"_s);
        QCOMPARE(simulator.profile().statusMessage, u"away"_s);
        QCOMPARE(simulator.profile().avatarId, QString());
        QCOMPARE(simulator.permissions(), (zelcore::Permissions{true, false, true}));
        QCOMPARE(simulator.registrationState(), u"BlockedByUser"_s);
        QCOMPARE(simulator.boxItems(), (QList<zelcore::BoxItem>{{u"item-1"_s, u"two\nlines"_s, u"d"_s, QString()}}));
        QVERIFY(simulator.boxIcons().isEmpty());
    }

    void saysWhyNotAndChangesNothing()
    {
        const QList<QPair<const char*, const char*>> cases{{"dance", "dance"},
                                                           {"profile displayName \"x", "not closed"},
                                                           {"contact remove nobody", "nobody"},
                                                           {"contact add anna age=3", "age"},
                                                           {"profile clientVersion many", "number"},
                                                           {"permission showAppBox perhaps", "usage: permission"},
                                                           {"send foo {", "JSON"},
                                                           {"picture 32769", "32768"},
                                                           {"quit now", "usage: quit"},
                                                           {"contact chnage anna x=y", "add, change"},
                                                           {"generate many", "COUNT"},
                                                           {"eco-status e Friend", "PendingContactExists"},
                                                           {"drop a b", "too many"},
                                                           {"back", "started"}};
        Simulator simulator;
        const zelcore::Person before = simulator.profile();
        for (const auto& [line, hint] : cases) {
            QString reply;
            QVERIFY2(!simulator.execute(QString::fromLatin1(line), &reply), line);
            QVERIFY2(reply.contains(QLatin1String(hint)), qPrintable(reply));
        }
        QCOMPARE(simulator.profile(), before);
        QCOMPARE(simulator.contactCount(), 0);
    }

    void shipsScenariosThatCanBePlayed()
    {
        const QStringList names = Simulator::scenarioNames();
        QVERIFY(!names.isEmpty());
        for (const QString& name : names) {
            Simulator simulator;
            QSignalSpy refused(&simulator, &Simulator::refused);
            QString problem;
            QVERIFY2(simulator.loadScenario(name, &problem), qPrintable(problem));
            QVERIFY(simulator.contactCount() > 0);
            QVERIFY(simulator.start(&problem));
            QCOMPARE(refused.size(), 0);
        }
    }

    void playsATimelineFromTheStartAndFromTheRegistration()
    {
        Simulator simulator;
        QString problem;
        QVERIFY2(load(simulator,
                      R"({"world":{"profile":{"displayName":"Before"},"contacts":[{"displayName":"Anna"}]},
                          "timeline":[{"after":"registered","at":5,"command":"profile displayName Third"},
                                      {"after":"registered","command":"profile displayName Second"},
                                      {"at":10,"command":"profile displayName First"}]})",
                      &problem),
                 qPrintable(problem));
        QCOMPARE(simulator.profile().displayName, u"Before"_s);
        QCOMPARE(simulator.contacts().first().handle, u"anna"_s);
        QSignalSpy executed(&simulator, &Simulator::commandExecuted);
        QVERIFY(simulator.start());
        QTRY_COMPARE(executed.size(), 1);
        QCOMPARE(simulator.profile().displayName, u"First"_s);
        simulator.setRegistrationState(u"Success"_s);
        QTRY_COMPARE(executed.size(), 3);
        QCOMPARE(executed.at(1).first().toString(), u"profile displayName Second"_s);
        QCOMPARE(simulator.profile().displayName, u"Third"_s);
        // Only the first registration counts.
        simulator.setRegistrationState(u"Success"_s);
        QTRY_COMPARE(executed.size(), 3);
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
            Simulator simulator;
            QString problem;
            QVERIFY2(!load(simulator, text, &problem), text);
            QVERIFY2(problem.contains(QLatin1String(hint)), qPrintable(problem));
            QVERIFY2(problem.startsWith(m_fileName), qPrintable(problem));
            QCOMPARE(simulator.contactCount(), 0);
        }
        Simulator simulator;
        QString problem;
        QVERIFY(!simulator.loadScenario(u"no such scenario"_s, &problem));
        QVERIFY(problem.contains("first-steps"_L1));
        // What applications make need not be there, and times count.
        QVERIFY2(load(simulator,
                      R"({"timeline":[{"at":9,"command":"contact remove a"},{"at":1,"command":"contact add a"},
                                      {"command":"box remove item-7"},{"command":"box change item-1 text=b"},
                                      {"command":"box icon 3 none"},{"command":"away 5"},{"command":"back"}]})",
                      &problem),
                 qPrintable(problem));
        QCOMPARE(simulator.contactCount(), 0);
    }

private:
    bool load(Simulator& simulator, const char* text, QString* problem)
    {
        QTemporaryFile file;
        if (!file.open() || file.write(text) < 0)
            return false;
        file.close();
        m_fileName = file.fileName();
        return simulator.loadScenario(m_fileName, problem);
    }

    QString m_fileName;
};

ZEL_TEST(TstCommands)
#include "tst_commands.moc"
