// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <common/FailingAllocations.h>
#include <iface/Change.h>

#include <deque>
#include <thread>

using Observables = QExplicitlySharedDataPointer<ObservableImpl>;

namespace {

/// Calls a function in the first step of a round.
struct FunctionFollower : Follower
{
    explicit FunctionFollower(std::function<void()> function)
        : m_function(std::move(function))
    {
    }
    void mark(const Change&) override { m_function(); }

    const std::function<void()> m_function;
};

/// Two observables, of which the second follows the first, and what was heard of them, in order.
struct Pair
{
    Pair()
    {
        follower.follow(*first);
        first->addObserver(&firstObserver);
        second->addObserver(&secondObserver);
    }
    QStringList take() { return std::exchange(log, {}); }
    void hear(const QString& which)
    {
        log << which;
        const auto react = whenHeard; // which may put another in its place
        react();
    }

    Observables first{new ObservableImpl};
    Observables second{new ObservableImpl};
    QStringList log;
    std::function<void()> whenHeard = [] {};
    ObserverFunctorAdapter firstObserver{[this] { hear(u"first"_s); }};
    ObserverFunctorAdapter secondObserver{[this] { hear(u"second"_s); }};
    FunctionFollower follower{[this] {
        log << u"mark"_s;
        second->notifyObservers();
    }};
};

} // namespace

class TstObservableImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsAnObserverOncePerRegistration()
    {
        QObject parent;
        const Observables observable(new ObservableImpl);
        observable->setParent(&parent); // which would delete what handles hold
        QVERIFY(!observable->parent());
        int calls = 0;
        ObserverFunctorAdapter observer([&] { ++calls; });
        QVERIFY(observable->addObserver(&observer));
        QVERIFY(observable->addObserver(&observer));
        observable->notifyObservers();
        QCOMPARE(calls, 2);
        QVERIFY(observable->removeObserver(&observer));
        QVERIFY(!observable->removeObserver(&observer));
        QVERIFY(!observable->addObserver(nullptr) && !observable->removeObserver(nullptr));
        observable->notifyObservers();
        QCOMPARE(calls, 2);
        // A follower follows one thing at a time.
        Observables other(new ObservableImpl);
        FunctionFollower follower([&] { ++calls; });
        follower.follow(*observable);
        follower.follow(*other);
        observable->notifyObservers();
        other->notifyObservers();
        QCOMPARE(calls, 3);
        other.reset();
        QVERIFY(!follower.observable());
    }

    // What is yet to be announced takes memory, on a thread that has announced less at once. Followers hear all the
    // same, whoever makes the changes is told, monitors run in the end, and nothing is left behind.
    void tellsWhoeverChangesThatAnAnnouncementFoundNoMemory()
    {
        constexpr int count = 5;
        int runs = 0;
        for (long left = -1; left < 0; ++runs) {
            std::thread([&] {
                int followed = 0;
                int heard = 0;
                bool isTold = false;
                ObserverFunctorAdapter observer([&] { ++heard; });
                std::deque<FunctionFollower> followers;
                std::vector<Observables> all;
                for (int i = 0; i < count; ++i) {
                    all.emplace_back(new ObservableImpl)->addObserver(&observer);
                    followers.emplace_back([&] { ++followed; }).follow(*all.back());
                }
                const auto changeAll = [&] {
                    std::for_each(all.begin(), all.end(), [](auto& one) { one->notifyObservers(); });
                };
                all.front()->notifyObservers(); // what a thread makes once
                const CountedMonitor monitor([&] { ObservableTracker::getterCalled(all.front().data()); });
                followed = heard = 0;
                failing::left = runs;
                try {
                    Round::together(changeAll);
                } catch (const std::bad_alloc&) {
                    isTold = true;
                }
                left = std::exchange(failing::left, -1);
                QCoreApplication::sendPostedEvents();
                QCOMPARE(monitor.runs, 2);
                QVERIFY(isTold || heard == count);
                heard = 0;
                Round::together(changeAll);
                QCOMPARE(followed, 2 * count);
                QCOMPARE(heard, count);
            }).join();
        }
        QVERIFY(runs > count);
    }

    void keepsReactionsFromTheTrackedComputation()
    {
        const Observables observable(new ObservableImpl);
        const NumberPointer number(new Number(0));
        ObserverFunctorAdapter observer([&] {
            number->getValue();
            throw 1;
        });
        observable->addObserver(&observer);
        FunctionFollower follower([] {});
        for (const bool isFollowed : {false, true}) { // then by way of a round
            if (isFollowed)
                follower.follow(*observable);
            const auto read = ObservableTracker::runAndMonitor([&] {
                QVERIFY_THROWS_EXCEPTION(int, observable->notifyObservers());
                QVERIFY(ObservableTracker::currentGetterCalledSet());
            });
            QVERIFY(read->isEmpty());
        }
    }

    void announcesWhenAllHaveTakenTheChangeIn()
    {
        Pair pair;
        pair.whenHeard = [] { QVERIFY(Round::number() != 0); };
        pair.first->notifyObservers();
        QCOMPARE(pair.take(), (QStringList{u"mark"_s, u"first"_s, u"second"_s}));
        QCOMPARE(Round::number(), 0U);
        // Several changes made together are announced once each, whatever is thrown meanwhile.
        const auto several = [&] {
            pair.second->notifyObservers();
            pair.first->notifyObservers();
            Round::together([&] { pair.first->notifyObservers(); });
            QCOMPARE(pair.take().join(u' '), u"mark mark"_s);
            throw 1;
        };
        QVERIFY_THROWS_EXCEPTION(int, Round::together(several));
        QCOMPARE(pair.take().join(u' '), u"second first"_s);
    }

    // What the outer change has not announced by then is announced with the inner one.
    void announcesAChangeMadeMeanwhileInFull()
    {
        Pair pair;
        for (const auto& changed : {pair.first, pair.second}) {
            pair.whenHeard = [&] {
                pair.whenHeard = [] {};
                changed->notifyObservers();
                pair.log << u"done"_s;
                throw 1;
            };
            QVERIFY_THROWS_EXCEPTION(int, pair.first->notifyObservers());
        }
        QCOMPARE(pair.take().join(u' '), u"mark first mark first second done mark first second done"_s);
        // Of several exceptions the first goes on, when all have been told.
        int thrown = 0;
        pair.whenHeard = [&] { throw int(pair.log.size()); };
        try {
            pair.first->notifyObservers();
        } catch (int first) {
            thrown = first;
        }
        QCOMPARE(thrown, 2); // mark, first
        QCOMPARE(pair.take().size(), 3);
        QCOMPARE(Round::number(), 0U);
    }

    void livesUntilItHasAnnouncedWhoeverDropsIt()
    {
        const auto lives = [](auto handle, auto signal, const auto& change) {
            const QPointer<QObject> alive(handle.data());
            bool aliveAtTheLast = false;
            ObserverFunctorAdapter last([&] { aliveAtTheLast = alive; });
            connect(handle.data(), signal, &last, [&] { handle.reset(); });
            handle->addObserver(&last);
            // What is read where it ends is nothing that whoever made the change has read.
            const NumberPointer number(new Number(1));
            connect(handle.data(), &QObject::destroyed, &last, [&] { number->getValue(); });
            const CountedMonitor changing([&] {
                if (handle)
                    change(*handle);
            });
            number->setValue(2);
            return aliveAtTheLast && !alive && changing.runs == 1;
        };
        const auto notify = [](ObservableImpl& observable) { observable.notifyObservers(); };
        FunctionFollower follower([] {});
        for (const bool isFollowed : {false, true}) {
            Observables observable(new ObservableImpl);
            if (isFollowed)
                follower.follow(*observable);
            QVERIFY(lives(std::move(observable), &ObservableImpl::observableChanged, notify));
        }
        // Each is heard where nobody listens to the others.
        const auto add = [](EditableList<int>& list) { list.append(1); };
        QVERIFY(lives(EditableListPointer<int>(), &ObservableListImpl::itemAdded, add));
        const auto remove = [](EditableList<int>& list) { list.remove(0); };
        QVERIFY(lives(EditableListPointer<int>({1}), &ObservableListImpl::itemRemoved, remove));
        const auto set = [](PlainMap<int, int>& map) { map.set({{1, 1}}); };
        QVERIFY(lives(PlainMapPointer<int, int>(), &ObservableMapImplBase::mapChanged, set));
        const NumberPointer value(new Number(1));
        QExplicitlySharedDataPointer values(MapObservableToValue<int>::create().impl());
        values->get(ObservableValue<int>(value.data()));
        QVERIFY(lives(std::move(values), &ObservableMapImplBase::mapChanged, [&](auto&) { value->setValue(2); }));
        QCOMPARE(value->ref.loadRelaxed(), 1);
    }

    void isNeitherDeletedNorMissedWhenNobodyCountsIt()
    {
        auto owned = std::make_unique<ObservableImpl>();
        Pair pair;
        FunctionFollower follower([&] { owned->notifyObservers(); });
        follower.follow(*pair.second);
        pair.first->notifyObservers();
        QVERIFY(ObservableTracker::runAndMonitor([&] { ObservableTracker::getterCalled(owned.get()); })->isEmpty());
        QCOMPARE(owned->ref.loadRelaxed(), 0);
        // It may be destroyed before it is announced, and by its own announcement.
        ObserverFunctorAdapter heard([] { QFAIL("it is gone"); });
        owned->addObserver(&heard);
        pair.whenHeard = [&] { owned.reset(); };
        pair.first->notifyObservers();
        QVERIFY(!owned);
        owned = std::make_unique<ObservableImpl>();
        ObserverFunctorAdapter destroys([&] { owned.reset(); });
        owned->addObserver(&destroys);
        owned->notifyObservers();
        QVERIFY(!owned);
    }
};

ZEL_TEST(TstObservableImpl)
#include "tst_observableimpl.moc"
