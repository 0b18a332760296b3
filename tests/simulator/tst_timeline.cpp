// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <zelcore/Simulator.h>

#include <QtCore/QTemporaryDir>
#include <QtTest/QTest>

using namespace Qt::StringLiterals;

/// A scenario's timeline, taken step by step. The third entry comes first in its file, two are due at the same time,
/// and the last waits for a registration.
class TstTimeline : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QFile file(m_folder.filePath(u"scenario.json"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(R"({ "timeline": [ { "at": 90, "command": "eco c c" }, { "at": 10, "command": "eco a a" },
                                      { "at": 10, "command": "eco b b" },
                                      { "after": "registered", "at": 5, "command": "eco d d" } ] })");
    }

    void init()
    {
        m_done.clear();
        m_simulator = std::make_unique<zelcore::Simulator>();
        connect(m_simulator.get(), &zelcore::Simulator::commandExecuted, this,
                [this](const QString& line) { m_done.append(line.back()); });
        m_simulator->setTimelinePaused(true);
        QVERIFY(m_simulator->loadScenario(m_folder.filePath(u"scenario.json"_s)));
        QVERIFY(m_simulator->start());
    }

    void standsStillWhilePaused()
    {
        QVERIFY(m_simulator->stepTimeline());
        QCOMPARE(m_done, u"a"_s);
        QCOMPARE(m_simulator->timelineTime(), 10);
        QCOMPARE(m_simulator->runTimelineUntil(89), 1);
        QCOMPARE(m_simulator->runTimelineUntil(20), 0); // time goes one way
        QCOMPARE(m_simulator->timelineTime(), 89);
        QVERIFY(m_simulator->stepTimeline());
        QVERIFY(!m_simulator->stepTimeline());
        QCOMPARE(m_done, u"abc"_s);

        QCOMPARE(m_simulator->runTimelineUntil(1000), 0);
        m_simulator->setRegistrationState(u"Success"_s);
        QCOMPARE(m_simulator->runTimelineUntil(1004), 0);
        QCOMPARE(m_simulator->runTimelineUntil(1005), 1);

        m_simulator->stop();
        QVERIFY(!m_simulator->stepTimeline());
        QVERIFY(m_simulator->start());
        QCOMPARE(m_simulator->runTimelineUntil(1000), 3);
    }

    void goesOnByTheClock()
    {
        QVERIFY(m_simulator->stepTimeline());
        m_simulator->setTimelinePaused(false);
        QTRY_COMPARE(m_done, u"abc"_s);
        QVERIFY(m_simulator->timelineTime() >= 90);
    }

    void goesByCommands()
    {
        const auto say = [this](const QString& command) {
            QString reply;
            return (m_simulator->execute(command, &reply) ? u"+"_s : u"-"_s) + reply;
        };
        QCOMPARE(say(u"timeline step"_s), u"+"_s);
        QCOMPARE(say(u"timeline until 89"_s), u"+1 entries"_s);
        QCOMPARE(say(u"timeline"_s), u"+89 ms, paused"_s);
        QCOMPARE(say(u"timeline go"_s), u"+"_s);
        QTRY_COMPARE(m_done, u"abc"_s);
        QCOMPARE(say(u"timeline pause"_s), u"+"_s);
        QVERIFY(m_simulator->isTimelinePaused());
        QVERIFY(say(u"timeline step"_s).startsWith(u"-no entry follows"_s));
    }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<zelcore::Simulator> m_simulator;
    QString m_done;
};

ZEL_TEST(TstTimeline)
#include "tst_timeline.moc"
