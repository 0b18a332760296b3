// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/FakeClock.h>

#include <iface/LazyLoader.h>
#include <iface/ObserverFunctorAdapter.h>

#include <QTest>

#include <stdexcept>

using namespace Qt::StringLiterals;

using namespace iface;
using Loader = LazyLoader<QString, int>;

namespace {

QString key(int number)
{
    return u"k%1"_s.arg(number);
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
    /// Answers whether that was a change.
    bool store(int number, int contents)
    {
        bool changed = false;
        loader->store(key(number), contents, [&] { changed = true; });
        return changed;
    }
};

} // namespace

/// What a loader does with answers that are late, lost or not its own is tested with the live map, whose loader it is.
class TstLazyLoader : public QObject
{
    Q_OBJECT

    static void turn() { QCoreApplication::sendPostedEvents(); }

private Q_SLOTS:
    void cleanup() { FakeClock::uninstall(); }

    void gathersTheKeysOfOneTurnInOrder()
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

    void settlesRequestedValuesWhenTheAnswerEnds()
    {
        Fixture f;
        QVERIFY(!f.loader->isLoaded(key(0)));
        QVERIFY(!f.loader->value(key(0)));
        f.ask(0, 2);
        turn();
        QStringList heard;
        ObserverFunctorAdapter answered([&] { heard << u"answered %1"_s.arg(f.loader->value(key(0))->state()); });
        ObserverFunctorAdapter missing([&] { heard << u"missing %1"_s.arg(f.loader->value(key(1))->state()); });
        f.loader->value(key(0))->addObserver(&answered);
        f.loader->value(key(1))->addObserver(&missing);
        f.store(0, 3);
        QCOMPARE(heard, QStringList{u"answered 2"_s});
        QVERIFY2(f.loader->isLoaded(key(0)), "as soon as contents are there");
        QVERIFY(!f.loader->isLoaded(key(1)));
        f.loader->updateDone();
        QCOMPARE(heard, (QStringList{u"answered 2"_s, u"answered 1"_s, u"missing 1"_s}));
        QVERIFY2(f.loader->isLoaded(key(1)), "answered, though without contents");
        QVERIFY2(!f.store(9, 0), "unasked, and as the default contents are");
        QCOMPARE(f.loader->value(key(9))->state(), 1);
        QCOMPARE(f.loader->keys().size(), 3);
    }

    void repeatsARequestWithoutAnswer()
    {
        const auto clock = FakeClock::install();
        Fixture f;
        f.ask(0, 21);
        turn();
        clock->advance(29999);
        QCOMPARE(f.sizes(), QList<int>{20});
        f.store(1, 1);
        clock->advance(1);
        QCOMPARE(f.sizes(), (QList<int>{20, 19}));
        for (int i = 0; i < 20; ++i)
            f.store(i, i);
        clock->advance(60000); // Everything has come but for the end of the answer.
        QCOMPARE(f.loader->value(key(0))->state(), 1);
        turn();
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1}));
        clock->advance(30000);
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1, 1}));
        f.loader->updateDone(); // brings nothing of it
        clock->advance(30000);
        QCOMPARE(f.sizes(), (QList<int>{20, 19, 1, 1, 1}));
        f.loader->takeAnswered(Loader::Answer::Nothing);
        QCOMPARE(clock->waiting(), 0);
    }

    void tellsEverybodyBeforeItThrows()
    {
        Fixture f;
        f.ask(0, 21);
        turn();
        int told = 0;
        ObserverFunctorAdapter throwing([] { throw std::runtime_error("no"); });
        ObserverFunctorAdapter counting([&] { ++told; });
        f.loader->value(key(0))->addObserver(&throwing);
        f.loader->value(key(19))->addObserver(&counting);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->store(key(0), 1, [&] { ++told; }));
        QCOMPARE(told, 1);
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, f.loader->updateDone());
        QCOMPARE(told, 2);
        turn();
        QCOMPARE(f.sizes(), (QList<int>{20, 1}));
    }

    void dropsItsRequestsWithItsLastReference()
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

    void mayBeDroppedByItsLoadFunction()
    {
        const auto clock = FakeClock::install();
        for (const int delay : {0, 30000}) { // by the request, by its repetition
            Fixture f;
            int requests = 0;
            f.loader = QExplicitlySharedDataPointer<Loader>(new Loader([&](const QStringList&) {
                if (++requests > (delay > 0))
                    f.loader.reset();
            }));
            f.ask(0, 1);
            turn();
            clock->advance(delay);
            QVERIFY(!f.loader);
            QCOMPARE(clock->waiting(), 0);
        }
    }
};

ZEL_TEST(TstLazyLoader)
#include "tst_lazyloader.moc"
