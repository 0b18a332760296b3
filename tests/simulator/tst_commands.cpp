// SPDX-License-Identifier: Apache-2.0
#include <simulator/Commands.h>
#include <simulator/Scenario.h>

#include <zelcore/Simulator.h>

#include <QtCore/QTemporaryFile>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;
using zelcore::Commands;
using zelcore::Scenario;
using zelcore::Simulator;

namespace {

QStringList list(std::initializer_list<const char*> words)
{
    QStringList list;
    for (const char* word : words)
        list.append(QString::fromLatin1(word));
    return list;
}

} // namespace

/// The command language and the scenarios that speak it.
class TstCommands : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cutsLinesAsAShellDoes()
    {
        const QList<QPair<const char*, QStringList>> cases{
            {"  a  b\t c ", list({"a", "b", "c"})},
            {"a \"b c\" d\"e f\"g", list({"a", "b c", "de fg"})},
            {"'a \"b\\n' c", list({"a \"b\\n", "c"})},
            {"a\\ b \"c\\\"d\" \"e\\nf\" \\n", list({"a b", "c\"d", "e\nf", "n"})},
            {"'' a \"\"", list({"", "a", ""})},
            {"a#b # c", list({"a#b"})}};
        for (const auto& [line, words] : cases) {
            QStringList found;
            QVERIFY2(Commands::split(QString::fromLatin1(line), &found), line);
            QCOMPARE(found, words);
        }
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
                                                           {"profile displayName \"x", "quote"},
                                                           {"contact remove nobody", "nobody"},
                                                           {"contact add anna age=3", "age"},
                                                           {"profile clientVersion many", "number"},
                                                           {"permission showAppBox perhaps", "usage: permission"},
                                                           {"send foo {", "JSON"},
                                                           {"picture 32769", "32768"},
                                                           {"quit now", "usage: quit"},
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

    void shipsScenariosThatLoadAndWhoseCommandsAllRun()
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
            const auto scenario = Scenario::load(name, &problem);
            QVERIFY(scenario && !scenario->timeline.isEmpty());
            for (const Scenario::Entry& entry : scenario->timeline) {
                QString reply;
                QVERIFY2(simulator.execute(entry.command, &reply),
                         qPrintable(entry.command + QLatin1Char(' ') + reply));
            }
            QCOMPARE(refused.size(), 0);
        }
    }

    void playsATimelineFromTheStartAndFromTheRegistration()
    {
        Simulator simulator;
        QTemporaryFile file;
        QVERIFY(file.open());
        file.write(R"({"world":{"profile":{"displayName":"Before"},"contacts":[{"displayName":"Anna"}]},
                       "timeline":[{"after":"registered","at":5,"command":"profile displayName Third"},
                                   {"after":"registered","command":"profile displayName Second"},
                                   {"at":10,"command":"profile displayName First"}]})");
        file.close();
        QString problem;
        QVERIFY2(simulator.loadScenario(file.fileName(), &problem), qPrintable(problem));
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
            {"{", "byte"},
            {"[]", "array"},
            {R"({"world":{"registration":"lunch"}})", "registration"},
            {R"({"wrld":{}})", "wrld"},
            {R"({"world":{"profile":{"age":3}}})", "age"},
            {R"({"world":{"permissions":{"zelSetup":"on"}}})", "zelSetup"},
            {R"({"world":{"contacts":[{"picture":3}]}})", "contacts[0]"},
            {R"({"world":{"contacts":[{"handle":"a"}]},"timeline":[{"at":0,"command":"dance"}]})", "timeline[0]"},
            {R"({"timeline":[{"after":"lunch","command":"away"}]})", "after"},
            {R"({"timeline":[{"at":-1,"command":"away"}]})", "at"}};
        QString problem;
        for (const auto& [text, hint] : cases) {
            QVERIFY2(!Scenario::parse(text, &problem), text);
            QVERIFY2(problem.contains(QLatin1String(hint)), qPrintable(problem));
        }
        Simulator simulator;
        QVERIFY(!simulator.loadScenario(u"no such scenario"_s, &problem));
        QVERIFY(problem.contains("first-steps"_L1));
    }
};

QTEST_GUILESS_MAIN(TstCommands)
#include "tst_commands.moc"
