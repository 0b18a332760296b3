// SPDX-License-Identifier: Apache-2.0
#include <common/SeededRandom.h>

#include <iface/LightObserver.h>
#include <iface/ObservableTracker.h>
#include <iface/ObservableValue.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QTest>

#include <algorithm>
#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

using iface::ObservableImpl;
using iface::ObservablePointer;
using iface::ObservableTracker;
using iface::ObserverFunctorAdapter;
using Observables = QExplicitlySharedDataPointer<ObservableImpl>;

namespace {

class FunctionLight : public iface::LightObserver
{
public:
    explicit FunctionLight(std::function<void()> function)
        : m_function(std::move(function))
    {
    }

protected:
    void observableChanged() override
    {
        const auto function = m_function;
        function();
    }

private:
    std::function<void()> m_function;
};

// Tells when it is destroyed.
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

} // namespace

class TstObservableImpl : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void callsAnObserverOncePerRegistration();
    void announcesLightObserversFirstEachInOrder();
    void observesOneThingAtATime();
    void keepsReactionsFromTheTrackedComputation();
    void survivesTheLastHandleDroppedByAnObserver();
    void neverDeletesWhatNobodyCounts();
    void mayBeDestroyedByAnObserverWhenNobodyCountsIt();
    void staysWholeWhenAnObserverThrows();
    void agreesWithAModelWhenLightObserversComeAndGo();
};

void TstObservableImpl::callsAnObserverOncePerRegistration()
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

void TstObservableImpl::announcesLightObserversFirstEachInOrder()
{
    const Observables observable(new ObservableImpl);
    QStringList log;
    ObserverFunctorAdapter signal1([&] { log << u"signal 1"_qs; });
    ObserverFunctorAdapter signal2([&] { log << u"signal 2"_qs; });
    FunctionLight light1([&] {
        log << u"light 1"_qs;
        if (log.size() == 1)
            observable->notifyObservers(); // announced here, in full
    });
    FunctionLight light2([&] { log << u"light 2"_qs; });
    observable->addObserver(&signal1);
    light1.observe(*observable);
    observable->addObserver(&signal2);
    light2.observe(*observable);
    observable->notifyObservers();
    const QStringList rest{u"light 2"_qs, u"signal 1"_qs, u"signal 2"_qs};
    QCOMPARE(log, (QStringList{u"light 1"_qs, u"light 1"_qs} + rest + rest));
}

void TstObservableImpl::observesOneThingAtATime()
{
    const Observables one(new ObservableImpl);
    Observables other(new ObservableImpl);
    int calls = 0;
    FunctionLight light([&] { ++calls; });
    FunctionLight second([] {});
    second.observe(*other);
    light.observe(*one);
    light.observe(*other);
    one->notifyObservers();
    QCOMPARE(calls, 0);
    other->notifyObservers();
    QCOMPARE(calls, 1);
    second.detach();
    second.detach();
    other.reset();
    QVERIFY(!light.observable());
}

void TstObservableImpl::keepsReactionsFromTheTrackedComputation()
{
    const Observables observable(new ObservableImpl);
    const iface::ObservableValue<int> before(new iface::ObservableValueImpl<int>);
    const iface::ObservableValue<int> during(new iface::ObservableValueImpl<int>);
    const iface::ObservableValue<int> after(new iface::ObservableValueImpl<int>);
    ObserverFunctorAdapter observer([&] { during.getValue(); });
    FunctionLight light([&] { during.getValue(); });
    observable->addObserver(&observer);
    light.observe(*observable);
    const auto read = ObservableTracker::runAndMonitor([&] {
        before.getValue();
        observable->notifyObservers();
        after.getValue();
    });
    QCOMPARE(read->size(), 2);
    QVERIFY(read->contains(before.impl()));
    QVERIFY(read->contains(after.impl()));
}

void TstObservableImpl::survivesTheLastHandleDroppedByAnObserver()
{
    for (const bool isLight : {true, false}) {
        bool alive = false;
        bool aliveAtTheLast = false;
        QExplicitlySharedDataPointer<Mortal> observable(new Mortal(&alive));
        FunctionLight dropsLight([&] { observable.reset(); });
        ObserverFunctorAdapter drops([&] { observable.reset(); });
        ObserverFunctorAdapter last([&] { aliveAtTheLast = alive; });
        if (isLight)
            dropsLight.observe(*observable);
        else
            observable->addObserver(&drops);
        observable->addObserver(&last);
        observable->notifyObservers();
        QVERIFY(aliveAtTheLast);
        QVERIFY(!alive);
    }
}

void TstObservableImpl::neverDeletesWhatNobodyCounts()
{
    bool alive = false;
    Mortal owned(&alive);
    owned.notifyObservers();
    const auto read = ObservableTracker::runAndMonitor([&] { ObservableTracker::getterCalled(&owned); });
    QVERIFY(read->isEmpty());
    QVERIFY(alive);
    QCOMPARE(owned.ref.loadRelaxed(), 0);
}

void TstObservableImpl::mayBeDestroyedByAnObserverWhenNobodyCountsIt()
{
    bool alive = false;
    auto owned = std::make_unique<Mortal>(&alive);
    int calls = 0;
    FunctionLight destroys([&] { owned.reset(); });
    FunctionLight later([&] { ++calls; });
    destroys.observe(*owned);
    later.observe(*owned);
    owned->notifyObservers();
    QVERIFY(!alive);
    QCOMPARE(calls, 0);
}

void TstObservableImpl::staysWholeWhenAnObserverThrows()
{
    const Observables observable(new ObservableImpl);
    const iface::ObservableValue<int> value(new iface::ObservableValueImpl<int>);
    int calls = 0;
    const auto react = [&] {
        if (++calls % 2)
            throw std::runtime_error("no");
    };
    FunctionLight light(react);
    ObserverFunctorAdapter observer(react);
    light.observe(*observable);
    for (int i = 0; i < 2; ++i) {
        const auto read = ObservableTracker::runAndMonitor([&] {
            QVERIFY_THROWS_EXCEPTION(std::runtime_error, observable->notifyObservers());
            value.getValue();
        });
        QVERIFY2(read->contains(value.impl()), "tracking goes on where it was");
        QCOMPARE(observable->ref.loadRelaxed(), 1);
        observable->notifyObservers();
        QCOMPARE(calls, 2 * (i + 1));
        light.detach();
        observable->addObserver(&observer);
    }
}

// Every observer, when called, attaches, detaches, destroys and creates others at random. The model is a plain list of
// who is attached: a round calls those who were attached when it began and have stayed attached, in order.
void TstObservableImpl::agreesWithAModelWhenLightObserversComeAndGo()
{
    QRandomGenerator random = seededRandom();
    const Observables observable(new ObservableImpl);

    constexpr int Count = 12;
    std::vector<std::unique_ptr<FunctionLight>> lights(Count);
    // Attachments, each with a serial number: who attaches again is another attachment.
    struct Attachment
    {
        int light;
        int serial;
    };
    std::vector<Attachment> attached;
    int serials = 0;
    std::vector<int> called;
    int depth = 0;

    const auto forget = [&](int light) {
        std::erase_if(attached, [light](const Attachment& a) { return a.light == light; });
    };
    std::function<void(int)> act = [&](int light) {
        switch (random.bounded(4)) {
        case 0:
            lights[light].reset();
            forget(light);
            break;
        case 1:
            if (lights[light])
                lights[light]->detach();
            forget(light);
            break;
        default:
            if (!lights[light]) {
                lights[light] = std::make_unique<FunctionLight>([&, light] {
                    called.push_back(light);
                    if (depth == 0)
                        return;
                    for (int i = random.bounded(4); i > 0; --i)
                        act(random.bounded(Count));
                });
            }
            lights[light]->observe(*observable);
            forget(light);
            attached.push_back({light, ++serials});
        }
    };

    for (int round = 0; round < 3000; ++round) {
        for (int i = random.bounded(5); i > 0; --i)
            act(random.bounded(Count));
        // Without actions, the order is exactly that of attaching.
        called.clear();
        depth = 0;
        observable->notifyObservers();
        std::vector<int> expected;
        for (const Attachment& a : attached)
            expected.push_back(a.light);
        QCOMPARE(called, expected);
        // With actions: nobody new, nobody twice, everybody who stayed.
        const std::vector<Attachment> before = attached;
        const int lastSerial = serials;
        called.clear();
        depth = 1;
        observable->notifyObservers();
        std::vector<int> stayed;
        for (const Attachment& a : attached) {
            if (a.serial <= lastSerial)
                stayed.push_back(a.light);
        }
        std::vector<int> order;
        for (const Attachment& a : before)
            order.push_back(a.light);
        auto at = order.cbegin();
        for (const int light : called) {
            at = std::find(at, order.cend(), light);
            QVERIFY(at != order.cend());
            ++at;
        }
        for (const int light : stayed)
            QVERIFY(std::find(called.cbegin(), called.cend(), light) != called.cend());
    }
}

QTEST_GUILESS_MAIN(TstObservableImpl)
#include "tst_observableimpl.moc"
