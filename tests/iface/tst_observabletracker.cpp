// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/BaseListImpl.h>
#include <iface/FilteredObservableList.h>
#include <iface/ObservableMonitor.h>
#include <iface/ObservableTracker.h>
#include <iface/ObservableValue.h>
#include <iface/QApplicationRealm.h>
#include <iface/RunUntilTrue.h>
#include <iface/WritableObservableValue.h>

#include <QPointer>
#include <QTest>
#include <QThread>

#include <memory>
#include <stdexcept>
#include <vector>

using namespace Qt::StringLiterals;

using namespace iface;
using Writable = WritableObservableValue<int>;
using Value = QExplicitlySharedDataPointer<Writable>;

namespace {

Value makeValue(int initial = 0)
{
    return Value(new Writable(initial));
}

// Counts how often it is observed, in a way of its own.
class ForeignObservable : public Observable
{
public:
    bool addObserver(const ObserverImpl* observer) const override
    {
        observers.append(const_cast<ObserverImpl*>(observer));
        return true;
    }
    bool removeObserver(const ObserverImpl* observer) const override
    {
        return observers.removeAll(const_cast<ObserverImpl*>(observer)) > 0;
    }
    void change() const
    {
        const auto copy = observers;
        for (ObserverImpl* observer : copy)
            observer->handleObservableChanged();
    }

    mutable QList<ObserverImpl*> observers;
};

struct OneNumber : BaseListImpl<int>
{
    OneNumber() { m_list = {1}; }
};

} // namespace

class TstObservableTracker : public QObject
{
    Q_OBJECT

private:
    static void turn() { QCoreApplication::sendPostedEvents(); }

private Q_SLOTS:
    void collectsWhatIsReadOnceInOrder();
    void keepsComputationsApartWhateverIsThrown();
    void reportsASetThatWasTakenAway();

    void runsFirstInALaterTurnIfAsked();
    void runsOnceMoreAfterAChangeWhileItRuns();
    void settlesWhenItChangesWhatItReads();
    void leavesTheEventLoopAliveWhenItNeverSettles();
    void mayBeDestroyedInsideItsRunOrAfter();
    void watchesWhatItHadReadWhenItThrew();
    void hooksOnlyWhatChangedBetweenTwoRuns();
    void watchesObservablesOfAnotherThread();
    void comesToOursByItselfAndToOthersThroughAddObserver();
    void keepsWhatItReadAliveUntilTheNextRun();
    void agreesWithAModelOfRandomReads();

    void waitsUntilTrueAndThenStaysIdle();
};

void TstObservableTracker::collectsWhatIsReadOnceInOrder()
{
    // Few reads are searched through, many are hashed.
    for (const int count : {2, 200}) {
        std::vector<Value> values(count);
        for (Value& value : values)
            value = makeValue();
        ObservableSet set;
        for (int times = 0; times < 2; ++times) {
            set.clear();
            QVERIFY(ObservableTracker::runInto(&set, [&] {
                for (int i = 0; i < 3 * count; ++i)
                    values[i % count]->getValue();
            }));
            QVERIFY(!set.contains(makeValue().data()));
            QVERIFY(std::equal(set.begin(), set.end(), values.begin(), values.end(),
                               [](const auto& read, const Value& value) { return read.data() == value.data(); }));
        }
    }
}

void TstObservableTracker::keepsComputationsApartWhateverIsThrown()
{
    const Value outer = makeValue();
    const Value inner = makeValue();
    const Value untracked = makeValue(7);
    QSharedPointer<ObservableSet> innerReads;
    const auto reads = ObservableTracker::runAndMonitor([&] {
        innerReads = ObservableTracker::runAndMonitor([&] { inner->getValue(); });
        QCOMPARE(ObservableTracker::runUntracked([&] { return untracked->getValue(); }), 7);
        QVERIFY_THROWS_EXCEPTION(int, ObservableTracker::runAndMonitor([] { throw 5; }));
        outer->getValue();
    });
    QVERIFY(innerReads->size() == 1 && innerReads->contains(inner.data()));
    QVERIFY(reads->size() == 1 && reads->contains(outer.data()));
    QVERIFY_THROWS_EXCEPTION(int, ObservableTracker::runAndMonitor([] { throw 5; }));
    QVERIFY(!ObservableTracker::currentGetterCalledSet());
}

void TstObservableTracker::reportsASetThatWasTakenAway()
{
    for (const char* line : {"88", "94", "82", "88", "94"})
        QTest::ignoreMessage(QtDebugMsg,
                             QByteArray("ObservableTracker.h [ ").append(line).append(" ]:  ObservableSet is null!"));
    const auto outer = ObservableTracker::runAndMonitor([] {
        QVERIFY(!ObservableTracker::runAndMonitor([] { ObservableTracker::setCurrentGetterCalledSet(nullptr); }));
        QVERIFY(ObservableTracker::currentGetterCalledSet());
    });
    QVERIFY(outer);
    QVERIFY(!ObservableTracker::runInto(nullptr, [] {}));

    for (const char* line :
         {"ObservableTracker.h [ 88 ]:  ObservableSet is null!", "ObservableTracker.h [ 94 ]:  ObservableSet is null!",
          "ObservableMonitor.h [ 116 ]:  m_observedList is null! This shouldn't happen."})
        QTest::ignoreMessage(QtDebugMsg, line);
    ObservableMonitor monitor([] { ObservableTracker::setCurrentGetterCalledSet(nullptr); }, nullptr, {}, false);
    monitor.handleObservableChanged();
}

void TstObservableTracker::runsFirstInALaterTurnIfAsked()
{
    int runs = 0;
    const ObservableMonitor asked([&] { ++runs; }, nullptr, u"asked"_s, true);
    ObservableMonitor waits([&] { runs += 100; }, nullptr, u"waits"_s, false);
    QCOMPARE(runs, 0);
    QCOMPARE(asked.name(), u"asked"_s);
    turn();
    QCOMPARE(runs, 1);
    waits.handleObservableChanged();
    QCOMPARE(runs, 101);
    {
        const ObservableMonitor destroyed([&] { runs += 1000; }, nullptr, QString(), true);
    }
    turn();
    QCOMPARE(runs, 101);
}

void TstObservableTracker::runsOnceMoreAfterAChangeWhileItRuns()
{
    // What changes may have been read by the run before, and may change in an event loop of the run.
    for (int variant = 0; variant < 4; ++variant) {
        const bool reads = variant & 1;
        const bool nests = variant & 2;
        const Value trigger = makeValue();
        const Value value = makeValue();
        QList<int> seen;
        int depth = 0;
        int changes = 0;
        const auto change = [&] {
            value->setValue(++changes);
            value->setValue(++changes);
        };
        ObservableMonitor monitor(
            [&] {
                QCOMPARE(++depth, 1);
                const bool second = trigger->getValue() == 1;
                if (second || reads)
                    seen << value->getValue();
                if (second && changes == 0) {
                    if (nests) {
                        Realm::threadDefault()->asyncExec(change);
                        turn();
                    } else {
                        change();
                    }
                }
                --depth;
            },
            nullptr, QString(), true);
        turn();
        seen.clear();
        trigger->setValue(1);
        QCOMPARE(seen, (QList<int>{0, 2}));
        value->setValue(3);
        QCOMPARE(seen, (QList<int>{0, 2, 3}));
    }
}

void TstObservableTracker::settlesWhenItChangesWhatItReads()
{
    const Value trigger = makeValue();
    const Value early = makeValue();
    const Value counter = makeValue();
    int runs = 0;
    ObservableMonitor monitor(
        [&] {
            ++runs;
            early->setValue(trigger->getValue()); // before its read, so no reason to run again
            early->getValue();
            if (counter->getValue() % 5 != 0)
                counter->setValue(counter->getValue() + 1);
        },
        nullptr, QString(), true);
    turn();
    trigger->setValue(5);
    QCOMPARE(runs, 2);
    counter->setValue(2);
    QCOMPARE(counter->getValue(), 5);
    QCOMPARE(runs, 6);
}

void TstObservableTracker::leavesTheEventLoopAliveWhenItNeverSettles()
{
    const Value value = makeValue(0);
    auto monitor =
        std::make_unique<ObservableMonitor>([&] { value->setValue(value->getValue() + 1); }, nullptr, QString(), true);
    QTRY_VERIFY(value->getValue() > 100);
    monitor.reset();
    const int last = value->getValue();
    turn();
    QCOMPARE(value->getValue(), last);
}

// And lets go of everything that it has read, then or later, in whatever way that was observed.
void TstObservableTracker::mayBeDestroyedInsideItsRunOrAfter()
{
    for (const bool isInside : {true, false}) {
        const Value value = makeValue();
        const QExplicitlySharedDataPointer<ForeignObservable> foreign(new ForeignObservable);
        std::unique_ptr<ObservableMonitor> monitor;
        int runs = 0;
        monitor = std::make_unique<ObservableMonitor>(
            [&] {
                ++runs;
                ObservableTracker::getterCalled(foreign.data());
                if (value->getValue() == 1 && isInside) {
                    monitor.reset();
                    value->setValue(2);
                    ObservableTracker::getterCalled(foreign.data());
                }
            },
            nullptr, QString(), true);
        turn();
        value->setValue(1);
        monitor.reset();
        QVERIFY(foreign->observers.isEmpty());
        QCOMPARE(foreign->ref.loadRelaxed(), 1);
        QCOMPARE(value->ref.loadRelaxed(), 1);
        value->setValue(3);
        foreign->change();
        QCOMPARE(runs, 2);
    }
}

void TstObservableTracker::watchesWhatItHadReadWhenItThrew()
{
    const Value a = makeValue();
    const Value b = makeValue();
    int runs = 0;
    ObservableMonitor monitor(
        [&] {
            ++runs;
            if (a->getValue() < 0)
                throw std::runtime_error("no");
            b->getValue();
        },
        nullptr, QString(), true);
    turn();
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, a->setValue(-1));
    QCOMPARE(runs, 2);
    b->setValue(1);
    QCOMPARE(runs, 2);
    a->setValue(1);
    QCOMPARE(runs, 3);
    b->setValue(2);
    QCOMPARE(runs, 4);
}

void TstObservableTracker::hooksOnlyWhatChangedBetweenTwoRuns()
{
    // What the monitor has of its own for an observable of another kind shows what it does for all.
    const QExplicitlySharedDataPointer<ForeignObservable> stays(new ForeignObservable);
    const QExplicitlySharedDataPointer<ForeignObservable> goes(new ForeignObservable);
    const Value which = makeValue();
    int runs = 0;
    ObservableMonitor monitor(
        [&] {
            ++runs;
            ObservableTracker::getterCalled(stays.data());
            if (which->getValue() == 0)
                ObservableTracker::getterCalled(goes.data());
            ObservableTracker::getterCalled(stays.data());
        },
        nullptr, QString(), true);
    turn();
    stays->change();
    QCOMPARE(runs, 2);
    QCOMPARE(stays->observers.size(), 1);
    QCOMPARE(goes->observers.size(), 1);
    which->setValue(1);
    QCOMPARE(stays->observers.size(), 1);
    QCOMPARE(goes->observers.size(), 0);
    QCOMPARE(runs, 3);
}

// Through the event loop of the thread that reads: so do filters.
void TstObservableTracker::watchesObservablesOfAnotherThread()
{
    QExplicitlySharedDataPointer<ObservableImpl> elsewhere(new ObservableImpl);
    QThread thread;
    elsewhere->moveToThread(&thread);
    thread.start();
    int runs = 0;
    int judgements = 0;
    const auto read = [&](int& count) {
        QCOMPARE(QThread::currentThread(), qApp->thread());
        ++count;
        ObservableTracker::getterCalled(elsewhere.data());
    };
    {
        ObservableMonitor monitor([&] { read(runs); }, nullptr, QString(), true);
        const ObservableList<int> list(new OneNumber);
        const auto filtered = FilteredObservableList<int>::create(list, [&](int) {
            read(judgements);
            return true;
        });
        turn();
        QMetaObject::invokeMethod(
            elsewhere.data(), [&] { elsewhere->notifyObservers(); }, Qt::BlockingQueuedConnection);
        QCOMPARE(judgements, 1);
        QTRY_COMPARE(runs, 2);
        QTRY_COMPARE(judgements, 2);
    }
    thread.quit();
    QVERIFY(thread.wait());
}

// What has to know who observes it is an Observable of its own kind, and not one of ours that overrides something.
void TstObservableTracker::comesToOursByItselfAndToOthersThroughAddObserver()
{
    struct Overriding : Writable
    {
        bool addObserver(const ObserverImpl*) const override { return false; }
    };
    const QExplicitlySharedDataPointer<Overriding> ours(new Overriding);
    int runs = 0;
    ObservableMonitor monitor(
        [&] {
            ++runs;
            ours->getValue();
        },
        nullptr, QString(), true);
    turn();
    ours->setValue(1);
    QCOMPARE(runs, 2);
}

void TstObservableTracker::keepsWhatItReadAliveUntilTheNextRun()
{
    const Value trigger = makeValue();
    Value value = makeValue();
    QPointer<QObject> alive(value.data());
    ObservableMonitor monitor(
        [&] {
            trigger->getValue();
            if (value)
                value->getValue();
        },
        nullptr, QString(), true);
    turn();
    value.reset();
    QVERIFY(alive);
    trigger->setValue(1);
    QVERIFY(!alive);
}

// Each run reads another random selection of many values; the monitor must run exactly when one of those changes.
void TstObservableTracker::agreesWithAModelOfRandomReads()
{
    QRandomGenerator random = seededRandom();
    std::vector<Value> values(60);
    for (Value& value : values)
        value = makeValue();
    QList<int> toRead;
    QList<int> read;
    int runs = 0;
    ObservableMonitor monitor(
        [&] {
            ++runs;
            read = toRead;
            for (const int i : std::as_const(toRead))
                values[i]->getValue();
        },
        nullptr, QString(), true);
    turn();
    monitor.handleObservableChanged();
    int expected = 2;
    for (int round = 0; round < 5000; ++round) {
        if (random.bounded(3) > 0) {
            if (random.bounded(8) == 0)
                toRead.clear();
            for (int i = random.bounded(12); i > 0; --i) {
                if (!toRead.isEmpty() && random.bounded(2) == 0)
                    toRead.removeAt(random.bounded(static_cast<int>(toRead.size())));
                toRead.insert(random.bounded(static_cast<int>(toRead.size()) + 1),
                              random.bounded(static_cast<int>(values.size())));
            }
        }
        const int changed = random.bounded(static_cast<int>(values.size()));
        if (read.contains(changed))
            ++expected;
        values[changed]->setValue(values[changed]->getValue() + 1);
        QCOMPARE(runs, expected);
        if (read.isEmpty()) {
            monitor.handleObservableChanged();
            ++expected;
        }
    }
}

void TstObservableTracker::waitsUntilTrueAndThenStaysIdle()
{
    const Value value = makeValue();
    int runs = 0;
    RunUntilTrue waiter(
        [&] {
            ++runs;
            return value->getValue() >= 2;
        },
        nullptr, u"two"_s);
    QCOMPARE(runs, 0);
    turn();
    value->setValue(1);
    QCOMPARE(runs, 2);
    value->setValue(2);
    value->setValue(0);
    waiter.handleObservableChanged();
    turn();
    QCOMPARE(runs, 3);
    QCOMPARE(value->ref.loadRelaxed(), 1);
}

ZEL_TEST(TstObservableTracker)
#include "tst_observabletracker.moc"
