// SPDX-License-Identifier: Apache-2.0
#include <common/FakeClock.h>
#include <common/SeededRandom.h>

#include <iface/LazyLoader.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QEventLoop>
#include <QSet>
#include <QTest>

#include <stdexcept>

using namespace iface;
using Loader = LazyLoader<QString, int>;

namespace {

QString key(int number)
{
    return u"k%1"_qs.arg(number);
}

/// A loader whose requests are written down.
struct Fixture
{
    QList<QStringList> requests;
    QExplicitlySharedDataPointer<Loader> loader{new Loader([this](const QStringList& keys) { requests << keys; })};

    QList<int> sizes() const
    {
        QList<int> result;
        for (const QStringList& request : requests)
            result << static_cast<int>(request.size());
        return result;
    }
    void ask(int from, int to)
    {
        for (int i = from; i < to; ++i)
            loader->getObservableValue(key(i));
    }
};

} // namespace

class TstLazyLoader : public QObject
{
    Q_OBJECT

private:
    static void turn() { QCoreApplication::sendPostedEvents(); }

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void gathersTheKeysOfOneTurnInOrder();
    void settlesRequestedValuesWhenTheAnswerEnds();
    void goesOnWhileAnAnswerIsStored();
    void repeatsARequestWithoutAnswer();
    void survivesAnythingAnObserverDoes();
    void survivesAThrowingObserver();
    void dropsItsRequestsWithItsLastReference();
    void mayBeDroppedByItsLoadFunction();
    void agreesWithAModel();
};

void TstLazyLoader::gathersTheKeysOfOneTurnInOrder()
{
    Fixture f;
    f.loader->requestAll();
    turn();
    for (const int i : {3, 1, 2, 1, 3})
        QCOMPARE(f.loader->getObservableValue(key(i)).getValue(), 0);
    QVERIFY(f.requests.isEmpty());
    QCOMPARE(f.loader->value(key(1))->state(), 2);
    turn();
    QCOMPARE(f.requests, (QList<QStringList>{{key(3), key(1), key(2)}}));
    QCOMPARE(Loader({}, 7).getObservableValue(key(1)).getValue(), 7);
}

void TstLazyLoader::settlesRequestedValuesWhenTheAnswerEnds()
{
    Fixture f;
    QVERIFY(!f.loader->isLoaded(key(0)));
    QVERIFY(!f.loader->value(key(0)));
    f.ask(0, 2);
    turn();
    QStringList heard;
    ObserverFunctorAdapter answered([&] { heard << u"answered %1"_qs.arg(f.loader->value(key(0))->state()); });
    ObserverFunctorAdapter missing([&] { heard << u"missing %1"_qs.arg(f.loader->value(key(1))->state()); });
    f.loader->value(key(0))->addObserver(&answered);
    f.loader->value(key(1))->addObserver(&missing);
    f.loader->store(key(0), 3);
    QCOMPARE(heard, QStringList{u"answered 2"_qs});
    QVERIFY2(f.loader->isLoaded(key(0)), "as soon as contents are there");
    QVERIFY(!f.loader->isLoaded(key(1)));
    f.loader->updateDone();
    QCOMPARE(heard, (QStringList{u"answered 2"_qs, u"answered 1"_qs, u"missing 1"_qs}));
    QVERIFY2(f.loader->isLoaded(key(1)), "answered, though without contents");
    QVERIFY2(!f.loader->store(key(9), 0), "unasked, and as the default contents are");
    QCOMPARE(f.loader->value(key(9))->state(), 1);
    QCOMPARE(f.loader->keys().size(), 3);
}

void TstLazyLoader::goesOnWhileAnAnswerIsStored()
{
    const auto clock = FakeClock::install();
    Fixture f;
    QVERIFY2(!f.loader->requestNext(), "nothing is under way");
    f.ask(0, 61);
    turn();
    f.loader->store(key(20), 1);
    QVERIFY(f.loader->requestNext());
    QCOMPARE(f.sizes(), (QList<int>{20, 20}));
    QCOMPARE(f.requests.last().first(), key(21));
    QVERIFY(!f.loader->isLoaded(key(0)));
    clock->advance(30000);
    QCOMPARE(f.sizes(), (QList<int>{20, 20, 20}));
    f.loader->answerStored();
    QVERIFY(f.loader->isLoaded(key(0)));
    QVERIFY2(!f.loader->isLoaded(key(21)), "its answer is still to come");
    QVERIFY(f.loader->requestNext());
    f.loader->updateDone(); // the next answer, though nobody said that the one before has been stored
    QVERIFY(f.loader->isLoaded(key(21)) && f.loader->isLoaded(key(60)));
    f.ask(61, 100);
    turn();
    QVERIFY2(!f.loader->requestNext(), "what waits does not fill a request: more may be asked for meanwhile");
    f.loader->updateDone();
    turn();
    QCOMPARE(f.sizes(), (QList<int>{20, 20, 20, 20, 20, 19}));
}

void TstLazyLoader::repeatsARequestWithoutAnswer()
{
    const auto clock = FakeClock::install();
    Fixture f;
    f.ask(0, 21);
    turn();
    clock->advance(29999);
    QCOMPARE(f.sizes(), QList<int>{20});
    f.loader->store(key(1), 1);
    clock->advance(1);
    QCOMPARE(f.sizes(), (QList<int>{20, 19}));
    for (int i = 0; i < 20; ++i)
        f.loader->store(key(i), i);
    clock->advance(60000); // Everything has come but for the end of the answer.
    QCOMPARE(f.loader->value(key(0))->state(), 1);
    turn();
    QCOMPARE(f.sizes(), (QList<int>{20, 19, 1}));
    clock->advance(30000);
    QCOMPARE(f.sizes(), (QList<int>{20, 19, 1, 1}));
    f.loader->updateDone();
    QCOMPARE(clock->waiting(), 0);
}

void TstLazyLoader::survivesAnythingAnObserverDoes()
{
    Fixture f;
    f.ask(0, 20);
    turn();
    int settled = 0;
    ObserverFunctorAdapter observer([&] {
        ++settled;
        // A dialog: the next batch is asked for and answered meanwhile, and more is asked for.
        f.ask(20, 45);
        QEventLoop loop;
        Realm::threadDefault()->asyncExec([&] {
            QCOMPARE(f.sizes(), (QList<int>{20, 20}));
            f.loader->updateDone();
            loop.quit();
        });
        loop.exec();
    });
    f.loader->value(key(0))->addObserver(&observer);
    f.loader->updateDone();
    QCOMPARE(settled, 1);
    QVERIFY(f.loader->isLoaded(key(39)));
    turn();
    QCOMPARE(f.sizes(), (QList<int>{20, 20, 5}));
}

void TstLazyLoader::survivesAThrowingObserver()
{
    Fixture f;
    f.ask(0, 21);
    turn();
    ObserverFunctorAdapter observer([] { throw std::runtime_error("no"); });
    f.loader->value(key(0))->addObserver(&observer);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->store(key(0), 1));
    QVERIFY(f.loader->isLoaded(key(0)));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->updateDone());
    for (int i = 0; i < 20; ++i)
        QVERIFY(f.loader->isLoaded(key(i)));
    turn();
    QCOMPARE(f.sizes(), (QList<int>{20, 1}));
}

void TstLazyLoader::dropsItsRequestsWithItsLastReference()
{
    const auto clock = FakeClock::install();
    Fixture f;
    const ObservableValue<int> value = f.loader->getObservableValue(key(0));
    f.loader.reset();
    turn();
    QVERIFY(f.requests.isEmpty());
    QCOMPARE(value.getValue(), 0);
    f.loader = QExplicitlySharedDataPointer<Loader>(new Loader([](const QStringList&) {}));
    f.ask(0, 1);
    turn();
    QCOMPARE(clock->waiting(), 1);
    ObserverFunctorAdapter observer([&] { f.loader.reset(); });
    f.loader->value(key(0))->addObserver(&observer);
    f.loader->updateDone();
    QVERIFY(!f.loader);
    QCOMPARE(clock->waiting(), 0);
}

void TstLazyLoader::mayBeDroppedByItsLoadFunction()
{
    const auto clock = FakeClock::install();
    QExplicitlySharedDataPointer<Loader> loader;
    int requests = 0;
    bool drops = true;
    const auto load = [&](const QStringList& keys) {
        ++requests;
        if (drops)
            loader.reset();
        QCOMPARE(keys, QStringList{key(0)});
    };
    loader = QExplicitlySharedDataPointer<Loader>(new Loader(load));
    loader->getObservableValue(key(0));
    turn();
    QVERIFY(!loader);
    drops = false;
    loader = QExplicitlySharedDataPointer<Loader>(new Loader(load));
    loader->getObservableValue(key(0));
    turn();
    drops = true;
    clock->advance(30000);
    QVERIFY(!loader);
    QCOMPARE(requests, 3);
    QCOMPARE(clock->waiting(), 0);
}

// The service answers some of what is asked, late or never, and sends things unasked.
void TstLazyLoader::agreesWithAModel()
{
    QRandomGenerator random = seededRandom();
    const auto clock = FakeClock::install();
    QStringList inFlight;
    QSet<QString> requested;
    bool broken = false;
    QHash<QString, int> stored;
    const QExplicitlySharedDataPointer<Loader> loader(new Loader([&](const QStringList& keys) {
        broken = broken || keys.isEmpty() || keys.size() > Loader::BatchLimit;
        const bool repeats = inFlight.contains(keys.first());
        for (const QString& k : keys) {
            broken = broken || stored.contains(k) || (repeats ? !inFlight.contains(k) : requested.contains(k));
            requested.insert(k);
        }
        if (repeats)
            return;
        // A request may end by itself, once everything in it has come.
        for (const QString& k : std::as_const(inFlight))
            broken = broken || !stored.contains(k);
        inFlight = keys;
    }));
    QSet<QString> asked;
    QSet<QString> answered;
    QStringList beingStored;
    const auto some = [&] { return key(random.bounded(400)); };
    for (int step = 0; step < 20000; ++step) {
        switch (random.bounded(7)) {
        case 0: {
            const QString k = some();
            QCOMPARE(loader->getObservableValue(k).getValue(), stored.value(k));
            if (!stored.contains(k))
                asked.insert(k);
            break;
        }
        case 1: {
            const QString k = inFlight.isEmpty() || random.bounded(4) == 0
                                  ? some()
                                  : inFlight[random.bounded(static_cast<int>(inFlight.size()))];
            const int contents = random.bounded(3);
            QCOMPARE(loader->store(k, contents), stored.value(k) != contents);
            stored[k] = contents;
            break;
        }
        case 2:
            if (!beingStored.isEmpty()) {
                answered += QSet<QString>(beingStored.cbegin(), beingStored.cend());
                beingStored.clear();
                loader->answerStored();
                break;
            }
            answered += QSet<QString>(inFlight.cbegin(), inFlight.cend());
            inFlight.clear();
            loader->updateDone();
            break;
        case 3:
            if (beingStored.isEmpty()) {
                beingStored = std::exchange(inFlight, {});
                if (!loader->requestNext())
                    inFlight = std::exchange(beingStored, {});
            }
            break;
        case 4:
            clock->advance(random.bounded(40000));
            break;
        default:
            turn();
        }
        QVERIFY(!broken);
        const QString k = some();
        QCOMPARE(loader->hasValue(k), asked.contains(k) || stored.contains(k));
        if (stored.contains(k) || answered.contains(k))
            QVERIFY(loader->isLoaded(k));
        else if (asked.contains(k) && !inFlight.contains(k) && !beingStored.contains(k))
            QVERIFY(!loader->isLoaded(k));
    }
    // In the end everything asked for has been requested or has come by itself.
    for (int i = 0; i < 40; ++i) {
        turn();
        loader->updateDone();
        inFlight.clear();
    }
    for (const QString& k : std::as_const(asked)) {
        QVERIFY(loader->isLoaded(k));
        QVERIFY(requested.contains(k) || stored.contains(k));
    }
}

QTEST_GUILESS_MAIN(TstLazyLoader)
#include "tst_lazyloader.moc"
