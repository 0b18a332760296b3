// SPDX-License-Identifier: Apache-2.0
// As docs/testing.md and docs/simulator.md have it.
// clang-format off
#include <zelcore/TestService.h>

#include <zelcore/Simulator.h>

#include <QtTest/QTest>

using namespace Qt::StringLiterals;

class ContactBrowser
{
public:
    ContactBrowser();
    QStringList names() const;
};

class TstContactBrowser : public QObject
{
    void showsWhoIsThereComesAndLeaves();
};

void TstContactBrowser::showsWhoIsThereComesAndLeaves()
{
    zelcore::TestService service;                        // runs already, in a folder of its own
    QVERIFY2(service.isRunning(), qPrintable(service.problem()));
    service.addContact(u"Anna"_s);                       // the world, before the application

    ContactBrowser browser;                              // your class: it registers, as ever
    QTRY_COMPARE(browser.names(), QStringList(u"Anna"_s));

    service.addContact(u"Bert"_s);                       // what happens while it runs
    QTRY_COMPARE(browser.names(), (QStringList{u"Anna"_s, u"Bert"_s}));
    QVERIFY(service.uninstallApplication(u"anna"_s));    // the handle
    QTRY_COMPARE(browser.names(), QStringList(u"Bert"_s));
    QCOMPARE(service.refusals(), QStringList());         // nothing that it asked for was refused
}

void whatHappens(zelcore::TestService& service, const QByteArray& bytes)
{
    service.execute(u"contact change anna personalMessage=\"on holiday\" showBusy=true"_s);    // some of her fields
    service.setContactPicture(u"anna"_s, bytes);
    service.setRegistrationState(u"Expired"_s);      // access is lost ...
    service.setRegistrationState(u"Success"_s);      // ... and back: the service's word for Allowed
    service.goAway();                                // connections drop; the world goes on
    service.uninstallApplication(u"anna"_s);
    QVERIFY(service.comeBack());                     // whoever was connected is told anew
}

void stepping(zelcore::TestService& service)
{
    service.setTimelinePaused(true);                     // a Simulator; a TestService is paused
    QVERIFY(service.loadScenario(u"first-steps"_s));
    // ...
    QVERIFY(service.stepTimeline());                     // the next entry, now
    QCOMPARE(service.runTimelineUntil(2000), 2);         // all up to 2 s, now: how many they were
    service.setTimelinePaused(false);                    // on by the clock, from there
}

void aReport()
{
    zelcore::TestService service;
    QString problem;
    QVERIFY2(service.replay(QFINDTESTDATA("report.jsonl"), &problem), qPrintable(problem));
    ContactBrowser browser;
    QTRY_VERIFY2(service.isReplayFinished(), qPrintable(service.replayAwaits()));
    QCOMPARE(service.replayDifferences(), QStringList());    // it asked for what it asked for then
    QCOMPARE(browser.names(), QStringList(u"Person 3"_s));   // and made of the answers what it should
}

void refused()
{
    zelcore::Simulator service;
    service.setRegistrationPolicy(zelcore::Simulator::RegistrationPolicy::Fixed, u"Expired"_s);
    QVERIFY(service.start());
    QVERIFY(service.exportRoot());   // before the application's objects are made
}
