// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/QApplicationRealm.h>
#include <iface/RunUntilTrue.h>

#include <QtCore/QThread>

#include <optional>
#include <stdexcept>

using iface::ObservableMonitor;
using iface::ObservableTracker;

namespace {

NumberPointer makeNumber(int initial = 0)
{
    return NumberPointer(new Number(initial));
}

void turn()
{
    QCoreApplication::sendPostedEvents();
}

// Knows who observes it, in a way of its own.
class ForeignObservable : public iface::Observable
{
public:
    bool addObserver(const iface::ObserverImpl* observer) const override
    {
        observers.append(const_cast<iface::ObserverImpl*>(observer));
        return true;
    }
    bool removeObserver(const iface::ObserverImpl* observer) const override
    {
        return observers.removeAll(const_cast<iface::ObserverImpl*>(observer)) > 0;
    }
    void change() const
    {
        const auto copy = observers;
        for (iface::ObserverImpl* observer : copy)
            observer->handleObservableChanged();
    }

    mutable QList<iface::ObserverImpl*> observers;
};

} // namespace

class TstObservableTracker : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void collectsWhatIsReadOnceInOrder()
    {
        for (const int count : {2, 200}) { // few are searched through, many are hashed
            std::vector<NumberPointer> values(count);
            std::generate(values.begin(), values.end(), [] { return makeNumber(); });
            iface::ObservableSet set;
            for (int times = 0; times < 2; ++times) {
                set.clear();
                QVERIFY(ObservableTracker::runInto(&set, [&] {
                    for (int i = 0; i < 3 * count; ++i)
                        values[i % count]->getValue();
                }));
                QVERIFY(!set.contains(makeNumber().data()));
                QVERIFY(std::equal(set.begin(), set.end(), values.begin(), values.end(),
                                   [](const auto& read, const auto& value) { return read.data() == value.data(); }));
            }
        }
    }

    void keepsComputationsApartWhateverIsThrown()
    {
        const NumberPointer outer = makeNumber();
        const NumberPointer inner = makeNumber();
        const NumberPointer untracked = makeNumber(7);
        QSharedPointer<iface::ObservableSet> innerReads;
        const auto reads = ObservableTracker::runAndMonitor([&] {
            innerReads = ObservableTracker::runAndMonitor([&] { inner->getValue(); });
            QCOMPARE(ObservableTracker::runUntracked([&] { return untracked->getValue(); }), 7);
            QVERIFY_THROWS_EXCEPTION(int, ObservableTracker::runAndMonitor([] { throw 5; }));
            outer->getValue();
        });
        QVERIFY(innerReads->size() == 1 && innerReads->contains(inner.data()));
        QVERIFY(reads->size() == 1 && reads->contains(outer.data()));
        QVERIFY(!ObservableTracker::currentGetterCalledSet());
    }

    void reportsASetThatWasTakenAway()
    {
        for (const char* line : {"88", "94", "82", "88", "94", "88", "94"})
            QTest::ignoreMessage(
                QtDebugMsg, QByteArray("ObservableTracker.h [ ").append(line).append(" ]:  ObservableSet is null!"));
        QTest::ignoreMessage(QtDebugMsg,
                             "ObservableMonitor.h [ 116 ]:  m_observedList is null! This shouldn't happen.");
        const auto takeAway = [] { ObservableTracker::setCurrentGetterCalledSet(nullptr); };
        const auto outer = ObservableTracker::runAndMonitor([&] {
            QVERIFY(!ObservableTracker::runAndMonitor(takeAway));
            QVERIFY(ObservableTracker::currentGetterCalledSet());
        });
        QVERIFY(outer);
        QVERIFY(!ObservableTracker::runInto(nullptr, [] {}));
        const CountedMonitor monitor(takeAway);
    }

    void runsFirstInALaterTurnIfAsked()
    {
        int runs = 0;
        const ObservableMonitor asked([&] { ++runs; }, nullptr, u"asked"_s, true);
        const ObservableMonitor waits([&] { runs += 100; }, nullptr, u"waits"_s, false);
        std::make_unique<ObservableMonitor>([&] { runs += 1000; }, nullptr, QString(), true).reset();
        QCOMPARE(runs, 0);
        QCOMPARE(asked.name(), u"asked"_s);
        turn();
        QCOMPARE(runs, 1);
    }

    void runsOnceMoreAfterAChangeWhileItRuns()
    {
        // What changes may have been read by the run before, and may change in an event loop of the run.
        for (int variant = 0; variant < 4; ++variant) {
            const bool reads = variant & 1;
            const bool nests = variant & 2;
            const NumberPointer trigger = makeNumber();
            const NumberPointer value = makeNumber();
            QList<int> seen;
            int depth = 0;
            int changes = 0;
            const auto change = [&] {
                value->setValue(++changes);
                value->setValue(++changes);
            };
            const CountedMonitor monitor([&] {
                QCOMPARE(++depth, 1);
                const bool second = trigger->getValue() == 1;
                if (second || reads)
                    seen << value->getValue();
                if (second && changes == 0) {
                    if (nests)
                        iface::Realm::threadDefault()->asyncExec(change);
                    nests ? turn() : change();
                }
                --depth;
            });
            seen.clear();
            trigger->setValue(1);
            QCOMPARE(seen, (QList<int>{0, 2}));
            value->setValue(3);
            QCOMPARE(seen, (QList<int>{0, 2, 3}));
        }
    }

    void settlesWhenItChangesWhatItReads()
    {
        const NumberPointer trigger = makeNumber();
        const NumberPointer early = makeNumber();
        const NumberPointer counter = makeNumber();
        const CountedMonitor monitor([&] {
            early->setValue(trigger->getValue()); // before its read, so no reason to run again
            early->getValue();
            if (counter->getValue() % 5 != 0)
                counter->setValue(counter->getValue() + 1);
        });
        trigger->setValue(5);
        QCOMPARE(monitor.runs, 2);
        counter->setValue(2);
        QCOMPARE(counter->getValue(), 5);
        QCOMPARE(monitor.runs, 6);
    }

    void leavesTheEventLoopAliveWhenItNeverSettles()
    {
        const NumberPointer value = makeNumber();
        std::optional<CountedMonitor> monitor(std::in_place, [&] { value->setValue(value->getValue() + 1); });
        const int first = value->getValue();
        QTRY_VERIFY(value->getValue() > 5 * first);
        monitor.reset();
        const int last = value->getValue();
        turn();
        QCOMPARE(value->getValue(), last);
    }

    // And lets go of everything that it has read, then or later, in whatever way that was observed.
    void mayBeDestroyedInsideItsRunOrAfter()
    {
        for (const bool isInside : {true, false}) {
            const NumberPointer value = makeNumber();
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
            QCOMPARE(runs, 2);
        }
    }

    // Through the event loop of the thread that reads: so do filters.
    void watchesObservablesOfAnotherThread()
    {
        const QExplicitlySharedDataPointer<iface::ObservableImpl> elsewhere(new iface::ObservableImpl);
        QThread thread;
        elsewhere->moveToThread(&thread);
        thread.start();
        {
            int judgements = 0;
            const auto read = [&] {
                QCOMPARE(QThread::currentThread(), qApp->thread());
                ObservableTracker::getterCalled(elsewhere.data());
            };
            const CountedMonitor monitor(read);
            const iface::ObservableList<int> list(new EditableList<int>({1}));
            const auto filtered = iface::FilteredObservableList<int>::create(list, [&](int) {
                read();
                return ++judgements > 0;
            });
            QMetaObject::invokeMethod(
                elsewhere.data(), [&] { elsewhere->notifyObservers(); }, Qt::BlockingQueuedConnection);
            QCOMPARE(judgements, 1);
            QTRY_COMPARE(monitor.runs, 2);
            QTRY_COMPARE(judgements, 2);
        }
        thread.quit();
        QVERIFY(thread.wait());
    }

    void keepsWhatItReadAliveUntilTheNextRun()
    {
        using Cached = iface::CachedObservableList<int>;
        const NumberPointer trigger = makeNumber();
        iface::ObservableList<int> list(new Cached(iface::ObservableList<int>(new EditableList<int>)));
        const QPointer<QObject> alive(list.impl());
        const CountedMonitor monitor([&] {
            trigger->getValue();
            list.size();
        });
        list = {};
        QVERIFY(alive);
        trigger->setValue(1);
        QVERIFY(!alive);
        trigger->setValue(2);
        QCOMPARE(monitor.runs, 3);
    }

    // Each run reads another random selection, or throws in the middle of it. The monitor must run exactly when one of
    // those changes that it read: ours, to which it comes by itself, also when they override addObserver(), and others
    // through addObserver(), where it must be just as long as it reads them.
    void agreesWithAModelOfRandomReads()
    {
        struct Overriding : Number
        {
            bool addObserver(const iface::ObserverImpl*) const override { return false; }
        };
        QRandomGenerator random = seededRandom();
        constexpr int Count = 60;
        const auto anyValue = [&] { return random.bounded(Count); };
        std::vector<QExplicitlySharedDataPointer<Overriding>> ours(Count);
        std::vector<QExplicitlySharedDataPointer<ForeignObservable>> others(Count);
        for (int i = 0; i < Count; i += 2) {
            ours[i].reset(new Overriding);
            others[i + 1].reset(new ForeignObservable);
        }
        QList<int> toRead;
        QList<int> read;
        CountedMonitor monitor([&] {
            read.clear();
            for (const int i : std::as_const(toRead)) {
                read.append(i);
                i % 2 ? ObservableTracker::getterCalled(others[i].data()) : void(ours[i]->getValue());
                if (random.bounded(100) == 0)
                    throw std::runtime_error("no");
            }
        });
        int expected = 1;
        for (int round = 0; round < 5000; ++round) {
            if (random.bounded(24) == 0)
                toRead.clear();
            for (int i = random.bounded(12); i > 0; --i) {
                if (!toRead.isEmpty() && random.bounded(2) == 0)
                    toRead.removeAt(random.bounded(int(toRead.size())));
                toRead.insert(random.bounded(int(toRead.size()) + 1), anyValue());
            }
            const int changed = anyValue();
            expected += read.contains(changed) + read.isEmpty();
            try {
                if (read.isEmpty())
                    monitor.monitor.handleObservableChanged();
                else if (changed % 2)
                    others[changed]->change();
                else
                    ours[changed]->setValue(ours[changed]->getValue() + 1);
            } catch (const std::runtime_error&) {
            }
            QCOMPARE(monitor.runs, expected);
            for (int i = 1; i < Count; i += 2)
                QCOMPARE(others[i]->observers.size(), read.contains(i) ? 1 : 0);
        }
    }

    void waitsUntilTrueAndThenStaysIdle()
    {
        const NumberPointer value = makeNumber();
        int runs = 0;
        iface::RunUntilTrue waiter(
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
};

ZEL_TEST(TstObservableTracker)
#include "tst_observabletracker.moc"
