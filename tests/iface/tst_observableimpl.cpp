// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>

#include <iface/Change.h>
#include <iface/ObservableTracker.h>
#include <iface/ObservableValue.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/Round.h>

#include <QTest>

#include <functional>
#include <memory>
#include <stdexcept>

using namespace Qt::StringLiterals;

using namespace iface;
using Observables = QExplicitlySharedDataPointer<ObservableImpl>;

namespace {

/// Calls a function in the first step of a round.
class FunctionFollower : public Follower
{
public:
    explicit FunctionFollower(std::function<void()> function)
        : m_function(std::move(function))
    {
    }

protected:
    void mark(const Change&) override { m_function(); }

private:
    const std::function<void()> m_function;
};

/// Tells when it is destroyed.
class Mortal : public ObservableImpl
{
public:
    explicit Mortal(bool* alive)
        : m_alive(alive)
    {
        *m_alive = true;
    }
    ~Mortal() override { *m_alive = false; }

private:
    bool* const m_alive;
};

/// Two observables, of which the second follows the first, and what was heard of them.
struct Pair
{
    Pair() { follower.follow(*first); }
    QStringList take() { return std::exchange(log, {}); }

    Observables first{new ObservableImpl};
    Observables second{new ObservableImpl};
    QStringList log;
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
        QVERIFY(!observable->addObserver(nullptr));
        QVERIFY(!observable->removeObserver(nullptr));
        observable->notifyObservers();
        QCOMPARE(calls, 2);
    }

    void followsOneThingAtATime()
    {
        const Observables one(new ObservableImpl);
        Observables other(new ObservableImpl);
        int calls = 0;
        FunctionFollower follower([&] { ++calls; });
        FunctionFollower second([] {});
        second.follow(*other);
        follower.follow(*one);
        follower.follow(*other);
        one->notifyObservers();
        QCOMPARE(calls, 0);
        other->notifyObservers();
        QCOMPARE(calls, 1);
        second.detach();
        second.detach();
        other.reset();
        QVERIFY(!follower.observable());
    }

    void keepsReactionsFromTheTrackedComputation()
    {
        const Observables observable(new ObservableImpl);
        const ObservableValue<int> before(new ObservableValueImpl<int>);
        const ObservableValue<int> during(new ObservableValueImpl<int>);
        const ObservableValue<int> after(new ObservableValueImpl<int>);
        ObserverFunctorAdapter observer([&] { during.getValue(); });
        observable->addObserver(&observer);
        FunctionFollower follower([] {});
        for (int i = 0; i < 2; ++i) {
            const auto read = ObservableTracker::runAndMonitor([&] {
                before.getValue();
                observable->notifyObservers();
                after.getValue();
            });
            QCOMPARE(read->size(), 2);
            QVERIFY(read->contains(before.impl()) && read->contains(after.impl()));
            follower.follow(*observable); // then by way of a round
        }
    }

    void announcesWhenAllHaveTakenTheChangeIn()
    {
        Pair pair;
        ObserverFunctorAdapter first([&] {
            pair.log << u"first"_s;
            QVERIFY(Round::number() != 0);
        });
        ObserverFunctorAdapter second([&] { pair.log << u"second"_s; });
        pair.second->addObserver(&second);
        pair.first->addObserver(&first);
        pair.first->notifyObservers();
        QCOMPARE(pair.take(), (QStringList{u"mark"_s, u"first"_s, u"second"_s}));
        QCOMPARE(Round::number(), 0U);
        // Several changes made together are announced once each, whatever is thrown meanwhile.
        const auto several = [&] {
            Round::together([&] {
                pair.second->notifyObservers();
                pair.first->notifyObservers();
                Round::together([&] { pair.first->notifyObservers(); });
                QCOMPARE(pair.take(), (QStringList{u"mark"_s, u"mark"_s}));
                throw std::runtime_error("no");
            });
        };
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, several());
        QCOMPARE(pair.take(), (QStringList{u"second"_s, u"first"_s}));
    }

    // What the outer change has not announced by then is announced with the inner one.
    void announcesAChangeMadeMeanwhileInFull()
    {
        Pair pair;
        bool isDone = false;
        ObserverFunctorAdapter first([&] {
            pair.log << u"first"_s;
            if (!std::exchange(isDone, true)) {
                pair.first->notifyObservers();
                pair.log << u"done"_s;
            }
        });
        ObserverFunctorAdapter second([&] { pair.log << u"second"_s; });
        pair.first->addObserver(&first);
        pair.second->addObserver(&second);
        pair.first->notifyObservers();
        QCOMPARE(pair.take(), (QStringList{u"mark"_s, u"first"_s, u"mark"_s, u"first"_s, u"second"_s, u"done"_s}));
    }

    void passesTheFirstExceptionOnWhenAllHasBeenTold()
    {
        Pair pair;
        int calls = 0;
        ObserverFunctorAdapter first([&] { throw ++calls; });
        ObserverFunctorAdapter second([&] { throw ++calls; });
        pair.first->addObserver(&first);
        pair.second->addObserver(&second);
        const ObservableValue<int> value(new ObservableValueImpl<int>);
        const auto read = ObservableTracker::runAndMonitor([&] {
            try {
                pair.first->notifyObservers();
                QFAIL("nothing was thrown");
            } catch (int thrown) {
                QCOMPARE(thrown, 1);
            }
            value.getValue();
        });
        QCOMPARE(calls, 2);
        QVERIFY2(read->contains(value.impl()), "tracking goes on where it was");
        QCOMPARE(pair.first->ref.loadRelaxed(), 1);
        QCOMPARE(Round::number(), 0U);
    }

    void survivesTheLastHandleDroppedByAnObserver()
    {
        for (const bool isFollowed : {true, false}) {
            bool alive = false;
            bool aliveAtTheLast = false;
            QExplicitlySharedDataPointer<Mortal> observable(new Mortal(&alive));
            FunctionFollower follower([] {});
            if (isFollowed)
                follower.follow(*observable);
            ObserverFunctorAdapter drops([&] { observable.reset(); });
            ObserverFunctorAdapter last([&] { aliveAtTheLast = alive; });
            observable->addObserver(&drops);
            observable->addObserver(&last);
            observable->notifyObservers();
            QVERIFY(aliveAtTheLast);
            QVERIFY(!alive);
        }
    }

    void neverDeletesWhatNobodyCounts()
    {
        bool alive = false;
        Mortal owned(&alive);
        FunctionFollower follower([] {});
        follower.follow(owned);
        owned.notifyObservers();
        const auto read = ObservableTracker::runAndMonitor([&] { ObservableTracker::getterCalled(&owned); });
        QVERIFY(read->isEmpty());
        QVERIFY(alive);
        QCOMPARE(owned.ref.loadRelaxed(), 0);
    }

    void mayBeDestroyedByAnObserverWhenNobodyCountsIt()
    {
        bool alive = false;
        Pair pair;
        auto owned = std::make_unique<Mortal>(&alive);
        FunctionFollower follower([&] { owned->notifyObservers(); });
        follower.follow(*pair.second);
        ObserverFunctorAdapter destroys([&] { owned.reset(); });
        ObserverFunctorAdapter heard([] { QFAIL("it is gone"); });
        pair.first->addObserver(&destroys);
        owned->addObserver(&heard);
        pair.first->notifyObservers();
        QVERIFY(!alive);
        // And by its own.
        owned = std::make_unique<Mortal>(&alive);
        owned->addObserver(&destroys);
        owned->notifyObservers();
        QVERIFY(!alive);
    }
};

ZEL_TEST(TstObservableImpl)
#include "tst_observableimpl.moc"
