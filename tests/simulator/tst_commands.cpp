// SPDX-License-Identifier: Apache-2.0
#include <simulator/Commands.h>
#include <simulator/Scenario.h>

#include <zelcore/Simulator.h>

#include <QtCore/QTemporaryFile>
#include <QtTest/QSignalSpy>
#include <QtTest/QTest>

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
    void cutsLinesAsAShellDoes_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QStringList>("words");
        QTest::newRow("blanks") << "  a  b\t c " << list({"a", "b", "c"});
        QTest::newRow("double quotes") << "a \"b c\" d\"e f\"g" << list({"a", "b c", "de fg"});
        QTest::newRow("single quotes") << "'a \"b\\n' c" << list({"a \"b\\n", "c"});
        QTest::newRow("backslashes") << "a\\ b \"c\\\"d\" \"e\\nf\" \\n" << list({"a b", "c\"d", "e\nf", "n"});
        QTest::newRow("empty words") << "'' a \"\"" << list({"", "a", ""});
        QTest::newRow("comment") << "a#b # c" << list({"a#b"});
        QTest::newRow("nothing") << "   # c" << list({});
    }

    void cutsLinesAsAShellDoes()
    {
        QFETCH(QString, line);
        QFETCH(QStringList, words);
        QStringList found;
        QVERIFY(Commands::split(line, &found));
        QCOMPARE(found, words);
    }

    void doesWhatItIsTold()
    {
        Simulator simulator;
        const QStringList lines{
            QStringLiteral("contact add anna displayName=\"Anna B.\" showBusy=on clientVersion=7"),
            QStringLiteral("contact add boris installed=off"),
            QStringLiteral("contact install boris"),
            QStringLiteral("contact uninstall anna"),
            QStringLiteral("contact change boris personalMessage='x = \"y\"'"),
            QStringLiteral("contact picture boris 1000"),
            QStringLiteral("generate 5 2"),
            QStringLiteral("profile displayName \"Robin the 2nd\""),
            QStringLiteral("picture none"),
            QStringLiteral("permission zelInvites off"),
            QStringLiteral("state BlockedByUser"),
            QStringLiteral("registration manual"),
            QStringLiteral("box icon 3 500"),
            QStringLiteral("box add \"two\\nlines\" c 3"),
            QStringLiteral("box change item-1 cookie=d icon="),
            QStringLiteral("box icon 3 none"),
            QStringLiteral("eco pp-x eco-y"),
            QStringLiteral("eco-status eco-y ContactExists"),
            QStringLiteral("rate 0"),
            QStringLiteral("drop"),
            QStringLiteral("delay 10 listAdd"),
            QStringLiteral("   "),
        };
        for (const QString& line : lines) {
            QString reply;
            QVERIFY2(simulator.execute(line, &reply), qPrintable(line + QStringLiteral(": ") + reply));
        }
        QCOMPARE(simulator.contacts().size(), 6);
        QCOMPARE(simulator.contactCount(), 7);
        QCOMPARE(simulator.contact(QStringLiteral("anna")).displayName, QStringLiteral("Anna B."));
        QCOMPARE(simulator.contact(QStringLiteral("anna")).clientVersion, 7);
        QVERIFY(simulator.contact(QStringLiteral("anna")).showBusy);
        const zelcore::Person boris = simulator.contact(QStringLiteral("boris"));
        QCOMPARE(boris.personalMessage, QStringLiteral("x = \"y\""));
        QCOMPARE(simulator.picture(boris.avatarId).size(), 1000);
        QCOMPARE(simulator.profile().displayName, QStringLiteral("Robin the 2nd"));
        QCOMPARE(simulator.profile().avatarId, QString());
        QCOMPARE(simulator.permissions(), (zelcore::Permissions{true, false, true}));
        QCOMPARE(simulator.registrationState(), QStringLiteral("BlockedByUser"));
        QCOMPARE(simulator.boxItems(), (QList<zelcore::BoxItem>{{QStringLiteral("item-1"), QStringLiteral("two\nlines"),
                                                                 QStringLiteral("d"), QString()}}));
        QVERIFY(simulator.boxIcons().isEmpty());
    }

    void saysWhyNotAndChangesNothing_data()
    {
        QTest::addColumn<QString>("line");
        QTest::addColumn<QString>("hint");
        QTest::newRow("unknown") << "dance"
                                 << "dance";
        QTest::newRow("open quote") << "profile displayName \"x"
                                    << "quote";
        QTest::newRow("no such person") << "contact remove nobody"
                                        << "nobody";
        QTest::newRow("no such field") << "contact add anna age=3"
                                       << "age";
        QTest::newRow("no number") << "profile clientVersion many"
                                   << "number";
        QTest::newRow("no switch") << "permission showAppBox perhaps"
                                   << "usage: permission";
        QTest::newRow("no policy") << "registration perhaps"
                                   << "perhaps";
        QTest::newRow("no JSON") << "send foo {"
                                 << "JSON";
        QTest::newRow("no file") << "picture /no/such/file"
                                 << "/no/such/file";
        QTest::newRow("too large") << "picture 32769"
                                   << "32768";
        QTest::newRow("no rate") << "rate often"
                                 << "usage: rate";
        QTest::newRow("missing word") << "truncate"
                                      << "usage: truncate";
        QTest::newRow("too many words") << "quit now"
                                        << "usage: quit";
        QTest::newRow("back without start") << "back"
                                            << "started";
    }

    void saysWhyNotAndChangesNothing()
    {
        QFETCH(QString, line);
        QFETCH(QString, hint);
        Simulator simulator;
        const zelcore::Person before = simulator.profile();
        QString reply;
        QVERIFY(!simulator.execute(line, &reply));
        QVERIFY2(reply.contains(hint), qPrintable(reply));
        QCOMPARE(simulator.profile(), before);
        QCOMPARE(simulator.contactCount(), 0);
    }

    void helpDescribesEveryCommand()
    {
        const QString help = Simulator::commandHelp();
        for (const char* command :
             {"state",    "registration", "permission", "profile", "picture",    "contact", "contacts", "generate",
              "rate",     "invite",       "box",        "eco",     "eco-status", "drop",    "delay",    "duplicate",
              "truncate", "garble",       "send",       "raw",     "away",       "back",    "quit",     "clients"})
            QVERIFY2(help.contains(QStringLiteral("\n  %1 ").arg(QLatin1String(command))), command);
    }

    void shipsScenariosThatLoadAndWhoseCommandsAllRun_data()
    {
        QTest::addColumn<QString>("name");
        const QStringList names = Simulator::scenarioNames();
        QCOMPARE(names, (QStringList{QStringLiteral("busy-day"), QStringLiteral("first-steps"),
                                     QStringLiteral("rough-weather")}));
        for (const QString& name : names)
            QTest::newRow(qPrintable(name)) << name;
    }

    void shipsScenariosThatLoadAndWhoseCommandsAllRun()
    {
        QFETCH(QString, name);
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
            QVERIFY2(simulator.execute(entry.command, &reply), qPrintable(entry.command + QLatin1Char(' ') + reply));
        }
        QCOMPARE(refused.size(), 0);
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
        QCOMPARE(simulator.profile().displayName, QStringLiteral("Before"));
        QCOMPARE(simulator.contacts().first().handle, QStringLiteral("anna"));
        QSignalSpy executed(&simulator, &Simulator::commandExecuted);
        QVERIFY(simulator.start());
        QTRY_COMPARE(executed.size(), 1);
        QCOMPARE(simulator.profile().displayName, QStringLiteral("First"));
        simulator.setRegistrationState(QStringLiteral("Success"));
        QTRY_COMPARE(executed.size(), 3);
        QCOMPARE(executed.at(1).first().toString(), QStringLiteral("profile displayName Second"));
        QCOMPARE(simulator.profile().displayName, QStringLiteral("Third"));
        // Only the first registration counts.
        simulator.setRegistrationState(QStringLiteral("Success"));
        QTRY_COMPARE(executed.size(), 3);
    }

    void refusesAFaultyScenarioAsAWhole_data()
    {
        QTest::addColumn<QByteArray>("text");
        QTest::addColumn<QString>("hint");
        QTest::newRow("no JSON") << QByteArray("{") << "byte";
        QTest::newRow("misspelt") << QByteArray(R"({"wrld":{}})") << "wrld";
        QTest::newRow("unknown field") << QByteArray(R"({"world":{"profile":{"age":3}}})") << "age";
        QTest::newRow("wrong type") << QByteArray(R"({"world":{"permissions":{"zelSetup":"on"}}})") << "zelSetup";
        QTest::newRow("no name") << QByteArray(R"({"world":{"contacts":[{"picture":3}]}})") << "contacts[0]";
        QTest::newRow("no command") << QByteArray(R"({"world":{"contacts":[{"handle":"a"}]},
                                                     "timeline":[{"at":0,"command":"dance"}]})")
                                    << "timeline[0]";
        QTest::newRow("no event") << QByteArray(R"({"timeline":[{"after":"lunch","command":"away"}]})") << "after";
        QTest::newRow("before the start") << QByteArray(R"({"timeline":[{"at":-1,"command":"away"}]})") << "at";
    }

    void refusesAFaultyScenarioAsAWhole()
    {
        QFETCH(QByteArray, text);
        QFETCH(QString, hint);
        QString problem;
        QVERIFY(!Scenario::parse(text, &problem));
        QVERIFY2(problem.contains(hint), qPrintable(problem));
        Simulator simulator;
        QVERIFY(!simulator.loadScenario(QStringLiteral("no such scenario"), &problem));
        QVERIFY(problem.contains(QLatin1String("first-steps")));
    }
};

QTEST_GUILESS_MAIN(TstCommands)
#include "tst_commands.moc"
