// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/ObservableMapImplFunctorAdapter.h>

using Mapper = QSharedPointer<ObservableListImpl::IndexMapper>;

namespace {

using IntList = EditableList<int>;
using Ints = EditableListPointer<int>;

constexpr auto path = &ObservableListImpl::pathOf;

} // namespace

class TstObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsItemsThroughPathsAndHandles()
    {
        const ObservableList<int> list = Ints({4, 5, 4});
        const PlainMapPointer<int, int> same({{4, 4}, {5, 5}});
        for (const auto& one : {list, ObservableList<int>(new CachedObservableList<int>(list)),
                                FilteredObservableList<int>::create(list, [](int) { return true; }),
                                TransformedObservableList::create<int, int>(list, same)}) {
            QCOMPARE(one.toList(), (QList<int>{4, 5, 4}));
            QVERIFY(one.impl()->hasChildren({}) && !one.impl()->hasChildren(path(0)));
            QCOMPARE(one.impl()->data(path(1)), QVariant(5));
            for (const QVariantList& bad : {QVariantList(), path(-1), QVariantList{0, 0}, QVariantList{u"x"_s}})
                QVERIFY(!one.impl()->data(bad).isValid());
            QCOMPARE(one.impl()->childCount(path(0)), 0);
            QVERIFY(one.indexOf(4) == 0 && one.indexOf(9) == -1 && one[3] == 0);
            const auto reads = [&](const auto& read) {
                return ObservableTracker::runAndMonitor([&] { read(); })->contains(one.impl());
            };
            QVERIFY(reads([&] { one.size(); }) && reads([&] { one[0]; }));
        }
        QVERIFY2(ObservableList<QList<int>>(list.impl())[0].isEmpty(), "what does not convert reads as a default");
        // As it stands: nobody counts the children of an item.
        QCOMPARE(Ints()->childCount(path(0)), 1);
        const ObservableList<int> none;
        for (const auto& empty : {none, ObservableList<int>(new ObservableListImpl),
                                  ObservableList<int>(new CachedObservableList<int>(none)),
                                  FilteredObservableList<int>::create(none, [](int) { return true; })}) {
            QVERIFY(empty.isEmpty() && empty[0] == 0);
            QVERIFY(!empty.impl() || !empty.impl()->hasChildren({}));
        }
        // Through data(), also where a subclass has another.
        struct Doubled : IntList
        {
            using IntList::IntList;
            QVariant data(const QVariantList& indexPath) const override { return 2 * IntList::data(indexPath).toInt(); }
        };
        QCOMPARE(ObservableList<int>(new Doubled({4, 5})).toList(), (QList<int>{8, 10}));
    }

    void announcesTheItemFirstThenThePlainChange()
    {
        const Ints list({0, 1, 2});
        QStringList log;
        ObserverFunctorAdapter plain([&] { log << u"changed"_s; });
        list->addObserver(&plain);
        const auto note = [&](const char* what) {
            return [&log, &list, what](const QVariantList& at) {
                log << u"%1 %2 of %3"_s.arg(QLatin1String(what)).arg(at.first().toInt()).arg(list->size());
            };
        };
        ObservableListImplFunctorAdapter particular(
            list.data(), note("added"), note("updated"), note("removed"),
            [&](ObservableListImpl::ChangeType::Type type, auto&&...) {
                log << (type == ObservableListImpl::ChangeType::Reset ? u"reset"_s : u"wholesale"_s);
            });
        list->insert(3, 9);
        list->update(1, 10);
        list->remove(0);
        list->replace({});
        Round::together([&] { // which is no change of one item
            list->append(5);
            list->append(6);
            list->remove(0);
        });
        Round::together([&] {
            list->update(0, 7);
            list->append(8);
        });
        Round::together([&] {
            list->update(0, 8);
            list->update(1, 9);
        });
        QCOMPARE(log.join(u", "), u"added 3 of 4, changed, updated 1 of 4, changed, removed 0 of 3, changed, "
                                  "reset, changed, reset, changed, reset, changed, wholesale, changed"_s);
    }

    // And with defaults; who follows the list hears nothing.
    void reachesOnlyItsSlotsWhenASignalIsEmitted()
    {
        const Ints list({1});
        CachedObservableList<int> cached(list);
        cached.setChangeFunction([](auto&&...) { QFAIL("nothing has changed"); });
        QSignalSpy spy(list.data(), &ObservableListImpl::itemsChanged);
        Q_EMIT list->itemsChanged();
        QCOMPARE(spy.size(), 1);
        QCOMPARE(spy[0][0].value<ChangeType::Type>(), ChangeType::Reset);
        QVERIFY(spy[0][1].value<Mapper>().isNull());
    }

    void mapsIndexesOfItemsThatStay()
    {
        const ItemMovedMapper down(1, 3);
        const PrecomputedMapper table({2, -1, 0});
        QCOMPARE(ListMirror<int>::indexesOf(table, 4), (QList<int>{2, -1, 0, -1}));
        for (const QVariantList& bad : {QVariantList(), QVariantList{0, 0}, path(-1)}) {
            for (const auto* mapper : {static_cast<const ObservableListImpl::IndexMapper*>(&down),
                                       static_cast<const ObservableListImpl::IndexMapper*>(&table)}) {
                int removed = 0;
                QVERIFY(!mapper->newIndexPath(nullptr, &removed, bad));
                QCOMPARE(removed, -1);
            }
        }
        QVERIFY(table.newIndexPath(nullptr, nullptr, path(0)));
        // Moves that are made together are one.
        const Ints list({1, 2, 3});
        ListMirror<int> mirror(list);
        Round::together([&] {
            list->move(0, 2);
            list->rearrange({1, -1, 0}, {9, 9, 9});
        });
        QCOMPARE(mirror.take(), QStringList{u"moved 0 1 -1"_s});
        QCOMPARE(mirror.complaint(), QString());
    }

    void sendsChangesToAnotherThread()
    {
        const Ints list({1, 2});
        const Ints other;
        QThread thread;
        QStringList log;
        auto* adapter = new ObservableListImplFunctorAdapter(
            other.data(), [&](const QVariantList& at) { log << u"+%1"_s.arg(at.first().toInt()); }, {}, {},
            [&](ChangeType::Type type, const Mapper& mapper) {
                log << u"*%1 %2"_s.arg(type).arg(ListMirror<int>::indexesOf(*mapper, 1).first());
                QThread::currentThread()->quit();
            });
        other->append(1);
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, other->remove(0));
        adapter->setDataModel(list.data());
        adapter->moveToThread(&thread);
        connect(&thread, &QThread::finished, adapter, &QObject::deleteLater);
        other->append(1);
        list->append(3);
        list->move(0, 1);
        thread.start();
        QVERIFY(thread.wait(10000));
        QCOMPARE(log.join(u' '), u"+0 +2 *1 1"_s);
    }

    // What ends with functions that hear of a list, an observable or a map may change it: they are not called any more.
    void callsNoFunctionWhileItEnds()
    {
        const Ints list;
        const Ints observed;
        const PlainMapPointer<int, int> map;
        int calls = 0;
        const auto hear = [&](const auto& change) {
            return [&, end = std::shared_ptr<void>(nullptr, [=](void*) { change(); })](auto...) { ++calls; };
        };
        const auto add = [&] { list->append(1); };
        const auto reset = [&] { list->fireItemsChanged(ChangeType::Reset, {}); };
        {
            const ObservableListImplFunctorAdapter items(list.data(), hear(reset), {}, {}, hear(add));
            ObserverFunctorAdapter observer(hear([&] { observed->append(1); }));
            observed->addObserver(&observer);
            ObservableMapImplFunctorAdapter keys(hear([&] { map->set({{1, 1}}); }));
            keys.startListening(map.data());
        }
        QCOMPARE(calls, 0);
        QCOMPARE(list->size() + observed->size(), 2);
    }

    void isSeenThroughByAMirrorWhenItLies()
    {
        struct Unsure : ObservableListImpl::IndexMapper // whether the items are gone
        {
            bool newIndexPath(QVariantList*, int*, const QVariantList&) const override { return false; }
        };
        const auto moved = [](auto* mapper) {
            return
                [mapper = Mapper(mapper)](IntList& list) { list.fireItemsChanged(ChangeType::IndexesChanged, mapper); };
        };
        const std::function<void(IntList&)> lies[] = {
            [](IntList& list) { list.fireItemAdded(0); },
            [](IntList& list) { list.fireItemAdded(4); },
            [](IntList& list) { list.fireItemRemoved(0); },
            [](IntList& list) { list.fireItemRemoved(3); },
            [](IntList& list) { list.fireItemUpdated(3); },
            moved(new PrecomputedMapper({0, 2, 1})),
            moved(new PrecomputedMapper({0, 1, 3})),
            moved(new PrecomputedMapper({0, 0, 2})),
            moved(new Unsure),
        };
        for (const auto& lie : lies) {
            const Ints list({1, 1, 2});
            const ListMirror<int> mirror(list);
            moved(new PrecomputedMapper({1, 0, 2}))(*list);
            QCOMPARE(mirror.complaint(), QString());
            const ListMirror<int> derived(FilteredObservableList<int>::create(list, [](int) { return true; }));
            lie(*list);
            QVERIFY2(!mirror.complaint().isEmpty(), qPrintable(QString::number(&lie - lies)));
            QCOMPARE(derived.items(), (QList<int>{1, 1, 2}));
            QVERIFY2(derived.complaint().isEmpty() || &lie - lies == 5, "only a move to elsewhere is passed on");
        }
    }
};

ZEL_TEST(TstObservableList)
#include "tst_observablelist.moc"
