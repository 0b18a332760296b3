// SPDX-License-Identifier: Apache-2.0
#include <common/FakeClock.h>
#include <common/TestMain.h>

#include <iface/LazyLoader.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QtTest/QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;

using namespace iface;

namespace {

/// A loader whose requests are written down, under keys that are numbers.
struct Fixture
{
    using Loader = LazyLoader<int, int>;

    QList<QList<int>> requests;
    std::function<void()> whenAsked = [] {};
    QExplicitlySharedDataPointer<Loader> loader{new Loader([this](const QList<int>& keys) {
        requests << keys;
        whenAsked();
    })};

    QList<int> sizes() const
    {
        QList<int> sizes;
        for (const auto& request : requests)
            sizes << int(request.size());
        return sizes;
    }
    void ask(int from, int to)
    {
        for (int key = from; key < to; ++key)
            loader->getObservableValue(key);
        turn();
    }
    /// Answers whether that was a change.
    bool store(int key, int contents)
    {
        bool changed = false;
        loader->store(key, contents, [&] { changed = true; });
        return changed;
    }
    static void turn() { QCoreApplication::sendPostedEvents(); }
};

} // namespace

/// What a loader does with answers that are late, lost or not its own is tested with the live map, whose loader it is.
class TstLazyLoader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void gathersTheKeysOfOneTurnInOrder()
    {
        Fixture f;
        f.loader->requestAll();
        f.turn();
        for (const int key : {3, 1, 2, 1, 3})
            QCOMPARE(f.loader->getObservableValue(key).getValue(), 0);
        QVERIFY(f.requests.isEmpty());
        QCOMPARE(f.loader->value(1)->state(), 2);
        f.turn();
        QCOMPARE(f.requests, (QList<QList<int>>{{3, 1, 2}}));
        QCOMPARE(Fixture::Loader({}, 7).getObservableValue(1).getValue(), 7);
    }

    void asksInTurnsForWhatManyAnswersLeftOut()
    {
        const auto clock = FakeClock::install();
        Fixture f;
        for (int key = 0; key < 1000; key += Fixture::Loader::BatchLimit) {
            f.ask(key, key + Fixture::Loader::BatchLimit);
            f.loader->updateDone();
        }
        f.requests.clear();
        clock->advance(10 * 60 * 1000);
        QSet<int> asked;
        for (const QList<int>& request : std::as_const(f.requests)) {
            QVERIFY(request.size() <= Fixture::Loader::RepeatLimit);
            asked.unite(QSet<int>(request.begin(), request.end()));
        }
        QCOMPARE(asked.size(), 1000);
    }

    void settlesRequestedValuesWhenTheAnswerEnds()
    {
        Fixture f;
        QVERIFY(!f.loader->isLoaded(0) && !f.loader->value(0));
        f.ask(0, 2);
        QStringList heard;
        ObserverFunctorAdapter answered([&] { heard << u"answered %1"_s.arg(f.loader->value(0)->state()); });
        ObserverFunctorAdapter missing([&] { heard << u"missing %1"_s.arg(f.loader->value(1)->state()); });
        f.loader->value(0)->addObserver(&answered);
        f.loader->value(1)->addObserver(&missing);
        f.store(0, 3);
        QCOMPARE(heard, QStringList{u"answered 2"_s});
        QVERIFY2(f.loader->isLoaded(0) && !f.loader->isLoaded(1), "as soon as contents are there");
        f.loader->updateDone();
        QCOMPARE(heard, (QStringList{u"answered 2"_s, u"answered 1"_s, u"missing 1"_s}));
        QVERIFY2(f.loader->isLoaded(1), "answered, though without contents");
        QVERIFY2(!f.store(9, 0), "unasked, and as the default contents are");
        QCOMPARE(f.loader->value(9)->state(), 1);
        QCOMPARE(f.loader->keys().size(), 3);
    }

    void repeatsARequestWithoutAnswer()
    {
        const auto clock = FakeClock::install();
        Fixture f;
        f.ask(0, 21);
        clock->advance(29999);
        QCOMPARE(f.sizes(), QList<int>{20});
        f.store(1, 1);
        clock->advance(1);
        QCOMPARE(f.sizes(), (QList<int>{20, 19}));
        for (int key = 0; key < 20; ++key)
            f.store(key, key);
        clock->advance(60000); // Everything has come but for the end of the answer.
        QCOMPARE(f.loader->value(0)->state(), 1);
        f.turn();
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1}));
        clock->advance(30000);
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1, 1}));
        f.loader->updateDone(); // brings nothing of it
        clock->advance(30000);
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1, 1, 1}));
        f.loader->takeAnswered(Fixture::Loader::Answer::Nothing);
        QCOMPARE(clock->waiting(), 0);
    }

    void tellsEverybodyBeforeItThrows()
    {
        Fixture f;
        f.ask(0, 21);
        int told = 0;
        ObserverFunctorAdapter throwing([] { throw std::runtime_error("no"); });
        ObserverFunctorAdapter counting([&] { ++told; });
        f.loader->value(0)->addObserver(&throwing);
        f.loader->value(19)->addObserver(&counting);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->store(0, 1, [&] { ++told; }));
        QCOMPARE(told, 1);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->updateDone());
        QCOMPARE(told, 2);
        f.turn();
        QCOMPARE(f.sizes(), (QList<int>{20, 1}));
    }

    // Before the request, by it, by its repetition, and by an observer of its answer.
    void mayBeDroppedAtAnyTime()
    {
        const auto clock = FakeClock::install();
        for (int requests = 0; requests < 4; ++requests) {
            Fixture f;
            const ObservableValue<int> value = f.loader->getObservableValue(0);
            ObserverFunctorAdapter observer([&] { f.loader.reset(); });
            f.whenAsked = [&] {
                if (f.requests.size() == requests)
                    f.loader.reset();
            };
            if (requests == 0)
                f.loader.reset();
            f.turn();
            clock->advance(30000);
            if (requests == 3) {
                f.loader->value(0)->addObserver(&observer);
                f.loader->updateDone();
            }
            QVERIFY(!f.loader);
            QCOMPARE(f.requests.size(), requests < 3 ? requests : 2);
            QCOMPARE(value.getValue(), 0);
            QCOMPARE(clock->waiting(), 0);
        }
    }
};

ZEL_TEST(TstLazyLoader)
#include "tst_lazyloader.moc"
