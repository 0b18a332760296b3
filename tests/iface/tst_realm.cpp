// SPDX-License-Identifier: Apache-2.0
#include <common/FakeClock.h>
#include <common/TestMain.h>

#include <iface/QApplicationRealm.h>
#include <iface/RetryTimer.h>

#include <QtCore/QAbstractEventDispatcher>

#include <functional>
#include <memory>

using namespace iface;

class TstRealm : public QObject
{
    Q_OBJECT

    // For a function to hold: calls another when that goes.
    static std::shared_ptr<void> atEnd(std::function<void()> call)
    {
        return {nullptr, [=](void*) { call(); }};
    }

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void runsOneFunctionPerTurnInOrder()
    {
        QApplicationRealm realm;
        QApplicationRealm other;
        QStringList log;
        const int first = realm.asyncExec([&] {
            log << u"first"_s;
            realm.asyncExec([&] { log << u"later"_s; });
            log << u"end of first"_s;
        });
        QVERIFY(first > 0);
        QCOMPARE(other.asyncExec({}), first + 1);
        const auto queueOther = [&] { realm.asyncExec([&] { log << u"other"_s; }); };
        const int removed = realm.asyncExec([&, end = atEnd(queueOther)] { log << u"removed"_s; });
        QCOMPARE(realm.asyncExec([&] { log << u"second"_s; }), first + 3);
        for (const int id : {removed, removed, -1})
            realm.remove(id);
        QCOMPARE(log, QStringList());
        realm.execute();
        QCOMPARE(log.join(u' '), u"first end of first"_s);
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, other.execute());
        turn(); // one call more than there are functions
        QTRY_COMPARE(log.join(u' '), u"first end of first second other later"_s);
    }

    void mayBeDestroyedInAFunction()
    {
        auto realm = std::make_unique<QApplicationRealm>();
        int calls = 0;
        realm->asyncExec([&] {
            realm.reset();
            ++calls;
        });
        const auto goOn = [&, it = realm.get()] {
            turn();
            it->asyncExec([&] { calls += 100; });
        };
        realm->asyncExec([end = atEnd(goOn)] {});
        realm->asyncExec([&] { calls += 100; });
        // Nor is what is posted for somebody called when that one has gone.
        auto goes = std::make_unique<QObject>();
        Realm::postGuarded(goes.get(), [&] { calls += 100; });
        Realm::postGuarded(this, [&] { ++calls; });
        goes.reset();
        turn();
        QCOMPARE(calls, 2);
    }

    void makesOneDefaultRealmPerThread()
    {
        const auto mine = Realm::threadDefault();
        QVERIFY(qSharedPointerDynamicCast<QApplicationRealm>(mine));
        QWeakPointer<Realm> theirs;
        const std::unique_ptr<QThread> thread(QThread::create([&] { theirs = Realm::threadDefault(); }));
        thread->start();
        QVERIFY(thread->wait());
        QVERIFY2(theirs.isNull(), "the realm goes with its thread");
        QCOMPARE(Realm::threadDefault(), mine);
    }

    void remindsWithDoublingDelaysUntilItGoes()
    {
        const auto clock = FakeClock::install();
        int reminders = 0;
        std::unique_ptr<RetryTimer> timer;
        timer = std::make_unique<RetryTimer>([&] {
            if (reminders == 7)
                timer.reset();
            ++reminders; // what it captured is still there
        });
        QVERIFY(!timer->isActive());
        timer->start();
        int expected = 0;
        for (const int seconds : {30, 60, 120, 240, 300, 300, 0, 30, 60}) {
            if (seconds == 0) {
                timer->start(); // anew
                QCOMPARE(clock->waiting(), 1);
                continue;
            }
            clock->advance(seconds * 1000 - 1);
            QCOMPARE(reminders, expected);
            clock->advance(1);
            QCOMPARE(reminders, ++expected);
        }
        QCOMPARE(clock->waiting(), 0);
    }

    void callsAfterATimeOnTheEventLoop()
    {
        auto clock = Clock::threadDefault();
        QEventLoop loop;
        int calls = 0;
        const auto callOthers = [&] {
            for (int i = 0; i < 99; ++i)
                clock->callLater(1, [&] { ++calls; });
        };
        const auto timers = [object = dynamic_cast<QObject*>(clock.data())] {
            return QAbstractEventDispatcher::instance()->registeredTimers(object).size();
        };
        const int id = clock->callLater(1, [&, end = atEnd(callOthers)] { calls += 1000; });
        QVERIFY(id > 0);
        clock->cancel(id);
        clock->cancel(-1);
        QCOMPARE(timers(), 99);
        clock->callLater(1, [&] { ++calls; });
        clock->callLater(20, [&] { loop.quit(); });
        loop.exec();
        QVERIFY(calls == 100 && timers() == 0);
        // The thread's clock may be asked for, and the one that goes used, where that goes.
        Clock* other = nullptr;
        const auto askBoth = [&other, goes = clock.data()] {
            goes->callLater(1000, [] {});
            other = Clock::threadDefault().data();
        };
        std::exchange(clock, {})->callLater(1000, [end = atEnd(askBoth)] {});
        Clock::setThreadDefault({});
        QCOMPARE(Clock::threadDefault().data(), other);
    }
};

ZEL_TEST(TstRealm)
#include "tst_realm.moc"
