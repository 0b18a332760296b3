// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <common/FailingAllocations.h>

#include <iface/QApplicationRealm.h>
#include <iface/RunUntilTrue.h>

#include <optional>
#include <stdexcept>

namespace {

// Knows who observes it, in a way of its own.
struct ForeignObservable : Observable
{
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
        for (const int count : {2, 200}) {
            std::vector<NumberPointer> values(count);
            std::generate(values.begin(), values.end(), [] { return NumberPointer(new Number(0)); });
            iface::ObservableSet set;
            for (int times = 0; times < 2; ++times) {
                set.clear();
                QVERIFY(ObservableTracker::runInto(&set, [&] {
                    for (int i = 0; i < 3 * count; ++i)
                        values[i % count]->getValue();
                }));
                QVERIFY(!set.contains(NumberPointer(new Number(0)).data()));
                QVERIFY(std::equal(set.begin(), set.end(), values.begin(), values.end(),
                                   [](const auto& read, const auto& value) { return read.data() == value.data(); }));
            }
        }
        using Held = iface::ObservableValueImpl<std::shared_ptr<void>>;
        const auto readAtEnd = [number = NumberPointer(new Number(0))](void*) { number->getValue(); };
        iface::ObservableSet set;
        ObservableTracker::runInto(&set, [&] {
            iface::ObservableValue<std::shared_ptr<void>>(new Held({nullptr, readAtEnd})).getValue();
            set.clear();
        });
        QCOMPARE(set.size(), 1);
    }

    void keepsComputationsApartWhateverIsThrown()
    {
        const NumberPointer outer(new Number(0));
        const NumberPointer inner(new Number(0));
        QSharedPointer<iface::ObservableSet> innerReads;
        const auto reads = ObservableTracker::runAndMonitor([&] {
            innerReads = ObservableTracker::runAndMonitor([&] { inner->getValue(); });
            QCOMPARE(ObservableTracker::runUntracked([&] { return inner->getValue(); }), 0);
            QVERIFY_THROWS_EXCEPTION(int, ObservableTracker::runAndMonitor([] { throw 5; }));
            outer->getValue();
        });
        QVERIFY(innerReads->size() == 1 && innerReads->contains(inner.data()));
        QVERIFY(reads->size() == 1 && reads->contains(outer.data()));
        QVERIFY(!ObservableTracker::currentGetterCalledSet());

        const auto takeAway = [] { ObservableTracker::setCurrentGetterCalledSet(nullptr); };
        for (const char* line : {"82", "88", "94", "88", "94", "88", "94"})
            QTest::ignoreMessage(
                QtDebugMsg, QByteArray("ObservableTracker.h [ ").append(line).append(" ]:  ObservableSet is null!"));
        QVERIFY(!ObservableTracker::runInto(nullptr, [] {}));
        QVERIFY(!ObservableTracker::runAndMonitor(takeAway));
        QTest::ignoreMessage(QtDebugMsg,
                             "ObservableMonitor.h [ 116 ]:  m_observedList is null! This shouldn't happen.");
        const CountedMonitor monitor(takeAway);
    }

    void leavesTheEventLoopAliveWhenItNeverSettles()
    {
        const NumberPointer value(new Number(0));
        std::optional<CountedMonitor> monitor(std::in_place, [&] { value->setValue(value->getValue() + 1); });
        QCOMPARE(value->getValue(), 16);
        QTRY_VERIFY(value->getValue() > 80);
        monitor.reset();
        const int last = value->getValue();
        turn();
        QCOMPARE(value->getValue(), last);
    }

    // And lets go of everything that it has read, then or later, in whatever way that was observed.
    void mayBeDestroyedInsideItsRunOrAfter()
    {
        for (const bool isInside : {true, false}) {
            const NumberPointer value(new Number(0));
            const QExplicitlySharedDataPointer<ForeignObservable> foreign(new ForeignObservable);
            std::unique_ptr<ObservableMonitor> monitor;
            int runs = 0;
            const auto run = [&] {
                ++runs;
                ObservableTracker::getterCalled(foreign.data());
                if (value->getValue() == 1 && isInside) {
                    monitor.reset();
                    value->setValue(2);
                    ObservableTracker::getterCalled(foreign.data());
                }
            };
            monitor = std::make_unique<ObservableMonitor>(run, nullptr, QString(), true);
            if (!isInside)
                monitor->handleObservableChanged(); // and in its turn no more
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
                ObservableTracker::getterCalled(elsewhere.data());
                return QThread::currentThread() == qApp->thread() && ++judgements > 0;
            };
            CountedMonitor monitor(read);
            monitor.monitor.moveToThread(&thread); // which changes nothing
            const auto filtered =
                iface::FilteredObservableList<int>::create(EditableListPointer<int>({1}), [&](int) { return read(); });
            QMetaObject::invokeMethod(
                elsewhere.data(), [&] { elsewhere->notifyObservers(); }, Qt::BlockingQueuedConnection);
            QCOMPARE(judgements, 2);
            QTRY_COMPARE(judgements, 4);
            QCOMPARE(monitor.runs, 2);
        }
        thread.quit();
        QVERIFY(thread.wait());
    }

    // Each run reads another random selection, changes some, in an event loop or not, or throws in the middle of it.
    // The monitor must run exactly when one of those changes that it read, and once more after a run in which one did:
    // ours, to which it comes by itself, also when they override addObserver(), and others through addObserver(), where
    // it must be just as long as it reads them.
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
        const auto change = [&](int i) {
            i % 2 ? others[i]->change() : void(ours[i]->setValue(ours[i]->getValue() + 1));
        };
        QList<int> toRead;
        QList<int> read;
        int changesLeft = 0;
        int expected = 1;
        bool isOutOfDate = false;
        bool isRunning = false;
        bool mayThrow = false;
        CountedMonitor monitor([&] {
            QVERIFY(!isRunning);
            const QScopedValueRollback running(isRunning, true);
            expected += std::exchange(isOutOfDate, false);
            read.clear();
            for (const int i : std::as_const(toRead)) {
                QEventLoop loop;
                const auto readIt = [&] {
                    read.append(i);
                    i % 2 ? ObservableTracker::getterCalled(others[i].data()) : void(ours[i]->getValue());
                    loop.quit();
                };
                if (random.bounded(20) == 0) { // as the handler of a timer, whose reads are this one's
                    QTimer::singleShot(0, readIt);
                    loop.exec();
                } else {
                    readIt();
                }
                if (changesLeft > 0 && random.bounded(4) == 0) {
                    --changesLeft;
                    const int changed = anyValue();
                    isOutOfDate = isOutOfDate || read.contains(changed);
                    if (random.bounded(2)) {
                        ObservableTracker::runUntracked([&] { change(changed); });
                    } else { // whose own reads are no reads of this, nor what ends with it
                        const auto readFirst = [&](void*) { ours[0]->getValue(); };
                        iface::Realm::threadDefault()->asyncExec(
                            [&, end = std::shared_ptr<void>(nullptr, readFirst)] { change(changed); });
                        turn();
                    }
                }
                if (random.bounded(100) == 0 && std::exchange(mayThrow, false))
                    throw std::runtime_error("no");
            }
        });
        for (int round = 0; round < 5000; ++round) {
            if (random.bounded(24) == 0)
                toRead.clear();
            for (int i = random.bounded(12); i > 0; --i) {
                if (!toRead.isEmpty() && random.bounded(2) == 0)
                    toRead.removeAt(random.bounded(int(toRead.size())));
                toRead.insert(random.bounded(int(toRead.size()) + 1), anyValue());
            }
            changesLeft = random.bounded(3);
            mayThrow = true;
            const int changed = anyValue();
            const bool isTold = read.isEmpty() || random.bounded(8) == 0;
            expected += isTold || read.contains(changed);
            const auto changeIt = [&] {
                change(changed);
                if (isTold)
                    monitor.monitor.handleObservableChanged();
            };
            try {
                isTold ? iface::Round::together(changeIt) : changeIt();
            } catch (const std::runtime_error&) {
            }
            turn(); // where it runs again what threw
            QCOMPARE(monitor.runs, expected);
            for (int i = 0; i < Count; i += 2) {
                QCOMPARE(ours[i]->ref.loadRelaxed(), read.contains(i) ? 2 : 1); // is kept alive until the next run
                QCOMPARE(others[i + 1]->observers.size(), read.contains(i + 1) ? 1 : 0);
            }
        }
    }

    // What it had read before stays observed until it has read everything.
    void runsAMonitorAgainThatFoundNoMemory()
    {
        struct Watched
        {
            const NumberPointer early{new Number(0)}, late{new Number(0)}, isBoth{new Number(0)};
            int sum() const { return (isBoth->getValue() ? late->getValue() : 0) + early->getValue(); }
            int seen = -1;
            ObservableMonitor monitor{[this] { seen = sum(); }, nullptr, QString(), false};
        };
        const auto act = [](Watched& watched) {
            watched.monitor.handleObservableChanged();
            watched.isBoth->setValue(1);
        };
        const auto check = [](Watched& watched) {
            if (watched.isBoth->getValue() == 0)
                turn();
            for (const auto& number : {watched.early, watched.late}) {
                number->setValue(3);
                QCOMPARE(watched.seen, watched.sum());
                turn();
            }
        };
        failing::withArrays = false;
        failing::eachInTurn([] { return std::make_unique<Watched>(); }, act, check);
    }

    // There is no memory for taking note of a read, which is made again at once.
    void dependsOnWhatIsReadAtTheSecondTry()
    {
        const NumberPointer value(new Number(0));
        failing::withMalloc = failing::withArrays = false;
        int seen = -1;
        const auto read = [&] {
            try {
                seen = value->getValue();
            } catch (const std::bad_alloc&) {
                seen = value->getValue();
            }
        };
        failing::eachInTurn([&] { return std::make_unique<ObservableMonitor>(read, nullptr, QString(), false); },
                            [](ObservableMonitor& monitor) { monitor.handleObservableChanged(); },
                            [&](ObservableMonitor&) {
                                turn();
                                value->setValue(value->getValue() + 1);
                                QCOMPARE(seen, value->getValue());
                            });
        failing::withMalloc = failing::withArrays = true;
    }

    void waitsUntilTrueAndThenStaysIdle()
    {
        const ObservableMonitor never([&] { QFAIL("nobody asked"); }, nullptr, u"never"_s, false);
        std::make_unique<ObservableMonitor>([&] { QFAIL("it is gone"); }, nullptr, QString(), true).reset();
        const NumberPointer value(new Number(0));
        int runs = 0;
        iface::RunUntilTrue waiter(
            [&] {
                ++runs;
                return value->getValue() >= 2;
            },
            nullptr, u"two"_s);
        QVERIFY(runs == 0 && waiter.objectName() == u"two"_s && never.objectName() == u"never"_s);
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
