// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/FakeClock.h>

#include <iface/ObservableTracker.h>
#include <iface/ObservableValue.h>
#include <iface/QApplicationRealm.h>
#include <iface/RetryTimer.h>

#include <QEventLoop>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <memory>

using namespace Qt::StringLiterals;

using iface::QApplicationRealm;
using iface::Realm;
using iface::RetryTimer;

class TstRealm : public QObject
{
    Q_OBJECT

private:
    // Runs posted calls up to and including those that are posted already, one turn.
    static void turn() { QCoreApplication::sendPostedEvents(); }

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }
    void runsOneFunctionPerTurnInOrder();
    void leavesOutWhatWasRemoved();
    void survivesItsOwnDestructionInAFunction();
    void keepsReadsOfAFunctionFromATrackedComputation();
    void makesOneDefaultRealmPerThread();
    void postsOnlyToThoseWhoAreStillThere();
    void remindsWithDoublingDelays();
    void mayBeStoppedOrDestroyedByItsReminder();
    void callsAfterATimeOnTheEventLoop();
};

void TstRealm::runsOneFunctionPerTurnInOrder()
{
    QApplicationRealm realm;
    QApplicationRealm other;
    QStringList log;
    QSignalSpy queued(&realm, &QApplicationRealm::itemQueued);
    const int first = realm.asyncExec([&] {
        log << u"first"_s;
        realm.asyncExec([&] { log << u"later"_s; });
        log << u"end of first"_s;
    });
    QVERIFY(first > 0);
    QCOMPARE(other.asyncExec({}), first + 1);
    QCOMPARE(realm.asyncExec([&] { log << u"second"_s; }), first + 2);
    QCOMPARE(log, QStringList());
    QCOMPARE(queued.count(), 2);
    realm.execute();
    QCOMPARE(log, (QStringList{u"first"_s, u"end of first"_s}));
    QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, other.execute());
    QTRY_COMPARE(log, (QStringList{u"first"_s, u"end of first"_s, u"second"_s, u"later"_s}));
}

void TstRealm::leavesOutWhatWasRemoved()
{
    QApplicationRealm realm;
    QStringList log;
    const int removed = realm.asyncExec([&] { log << u"removed"_s; });
    realm.asyncExec([&] { log << u"kept"_s; });
    realm.remove(removed);
    realm.remove(removed);
    realm.remove(-1);
    turn(); // one call more than there are functions
    QCOMPARE(log, QStringList{u"kept"_s});
}

void TstRealm::survivesItsOwnDestructionInAFunction()
{
    auto realm = std::make_unique<QApplicationRealm>();
    int calls = 0;
    realm->asyncExec([&] {
        realm.reset();
        ++calls;
    });
    realm->asyncExec([&] { calls += 100; });
    turn();
    QCOMPARE(calls, 1);
}

void TstRealm::keepsReadsOfAFunctionFromATrackedComputation()
{
    const iface::ObservableValue<int> value(new iface::ObservableValueImpl<int>(1));
    bool ran = false;
    const auto read = iface::ObservableTracker::runAndMonitor([&] {
        Realm::threadDefault()->asyncExec([&] {
            ran = true;
            value.getValue();
        });
        turn();
    });
    QVERIFY(ran);
    QVERIFY(read->isEmpty());
}

void TstRealm::makesOneDefaultRealmPerThread()
{
    const auto mine = Realm::threadDefault();
    QVERIFY(qSharedPointerDynamicCast<QApplicationRealm>(mine));
    QCOMPARE(Realm::threadDefault(), mine);
    QWeakPointer<Realm> theirs;
    const std::unique_ptr<QThread> thread(QThread::create([&] { theirs = Realm::threadDefault(); }));
    thread->start();
    QVERIFY(thread->wait());
    QVERIFY2(theirs.isNull(), "the realm goes with its thread");
    QCOMPARE(Realm::threadDefault(), mine);
}

void TstRealm::postsOnlyToThoseWhoAreStillThere()
{
    QObject stays;
    auto goes = std::make_unique<QObject>();
    QStringList log;
    Realm::postGuarded(goes.get(), [&] { log << u"gone"_s; });
    Realm::postGuarded(&stays, [&] { log << u"there"_s; });
    goes.reset();
    turn();
    QCOMPARE(log, QStringList{u"there"_s});
}

void TstRealm::remindsWithDoublingDelays()
{
    const auto clock = FakeClock::install();
    int reminders = 0;
    RetryTimer timer([&] { ++reminders; });
    QVERIFY(!timer.isActive());
    timer.start();
    int expected = 0;
    for (const int seconds : {30, 60, 120, 240, 300, 300}) {
        clock->advance(seconds * 1000 - 1);
        QCOMPARE(reminders, expected);
        clock->advance(1);
        QCOMPARE(reminders, ++expected);
    }
    timer.start();
    QCOMPARE(clock->waiting(), 1);
    clock->advance(RetryTimer::FirstDelay);
    QCOMPARE(reminders, ++expected);
    timer.stop();
    QCOMPARE(clock->waiting(), 0);
}

void TstRealm::mayBeStoppedOrDestroyedByItsReminder()
{
    const auto clock = FakeClock::install();
    std::unique_ptr<RetryTimer> timer;
    int reminders = 0;
    timer = std::make_unique<RetryTimer>([&] {
        ++reminders;
        timer->stop();
    });
    timer->start();
    clock->advance(RetryTimer::FirstDelay);
    QVERIFY(!timer->isActive());
    timer = std::make_unique<RetryTimer>([&] {
        ++reminders;
        timer.reset();
    });
    timer->start();
    clock->advance(1000 * 1000);
    QCOMPARE(reminders, 2);
    QCOMPARE(clock->waiting(), 0);
}

void TstRealm::callsAfterATimeOnTheEventLoop()
{
    const auto clock = iface::Clock::threadDefault();
    QEventLoop loop;
    bool cancelled = true;
    const int id = clock->callLater(1, [&] { cancelled = false; });
    QVERIFY(id > 0);
    clock->cancel(id);
    clock->cancel(id);
    int calls = 0;
    clock->callLater(1, [&] { ++calls; });
    clock->callLater(20, [&] { loop.quit(); });
    loop.exec();
    QCOMPARE(calls, 1);
    QVERIFY(cancelled);
}

ZEL_TEST(TstRealm)
#include "tst_realm.moc"
