// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/ObservableListImplFunctorAdapter.h>

#include <QtTest/QSignalSpy>
#include <QtCore/QThread>

using namespace iface;
using Mapper = QSharedPointer<ObservableListImpl::IndexMapper>;

namespace {

using IntList = EditableList<int>;
using Lists = EditableListPointer<int>;

QVariantList path(int index)
{
    return ObservableListImpl::pathOf(index);
}

} // namespace

class TstObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsItemsThroughPaths()
    {
        const ObservableList<int> list(new IntList({4, 5}));
        const QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
        map->contents = {{4, 4}, {5, 5}};
        const ObservableMap<int, int> same(map.data());
        for (const auto& one : {list, ObservableList<int>(new CachedObservableList<int>(list)),
                                FilteredObservableList<int>::create(list, [](int) { return true; }),
                                TransformedObservableList::create<int, int>(list, same)}) {
            QCOMPARE(one.impl()->childCount({}), 2);
            QVERIFY(one.impl()->hasChildren({}));
            QCOMPARE(one.impl()->data(path(1)), QVariant(5));
            for (const QVariantList& bad : {QVariantList(), path(-1), QVariantList{0, 0}, QVariantList{u"x"_s}})
                QVERIFY(!one.impl()->data(bad).isValid());
            QCOMPARE(one.impl()->childCount(path(0)), 0);
            QVERIFY(!one.impl()->hasChildren(path(0)));
        }
        // As it stands: nobody counts the children of an item.
        QCOMPARE(Lists(new IntList)->childCount(path(0)), 1);
        const ObservableList<int> none;
        for (const auto& empty : {none, ObservableList<int>(new ObservableListImpl), ObservableList<int>(new IntList),
                                  ObservableList<int>(new CachedObservableList<int>),
                                  FilteredObservableList<int>::create(none, [](int) { return true; }),
                                  FilteredObservableList<int>::create(list, [](int) { return false; }),
                                  ObservableList<int>(new CachedObservableList<int>(none))}) {
            QVERIFY(empty.isEmpty());
            QVERIFY(!empty.impl() || !empty.impl()->hasChildren({}));
            QCOMPARE(empty[0], 0);
            QCOMPARE(empty.indexOf(0), -1);
        }
    }

    void readsThroughHandles()
    {
        ObservableList<int, IntList> exact(Lists(new IntList({7, 8, 7})));
        const ObservableList<int> list = exact;
        QCOMPARE(list.impl(), exact.impl());
        QCOMPARE(list[3], 0);
        QCOMPARE(list.indexOf(7), 0);
        QCOMPARE(list.indexOf(9), -1);
        QVERIFY(list.contains(8));
        QCOMPARE(list.toList(), (QList<int>{7, 8, 7}));
        QVERIFY2(ObservableList<QList<int>>(list.impl())[0].isEmpty(), "what does not convert reads as a default");
        QVERIFY(ObservableTracker::runAndMonitor([&] { list.size(); })->contains(list.impl()));
        QVERIFY(ObservableTracker::runAndMonitor([&] { list[0]; })->contains(list.impl()));
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
        const Lists list(new IntList({0, 1, 2}));
        QStringList log;
        ObserverFunctorAdapter plain([&] { log << u"changed"_s; });
        list->addObserver(&plain);
        ObservableListImplFunctorAdapter particular(
            list.data(), [&](const QVariantList& at) { log << u"added %1"_s.arg(list->data(at).toInt()); },
            [&](const QVariantList& at) { log << u"updated %1"_s.arg(list->data(at).toInt()); },
            [&](const QVariantList& at) { log << u"removed %1 of %2"_s.arg(at.first().toInt()).arg(list->size()); },
            [&](ChangeType::Type, const Mapper&) { log << u"wholesale"_s; });
        list->insert(3, 9);
        list->update(1, 10);
        list->remove(0);
        list->replace({});
        QCOMPARE(log, (QStringList{u"added 9"_s, u"changed"_s, u"updated 10"_s, u"changed"_s, u"removed 0 of 3"_s,
                                   u"changed"_s, u"wholesale"_s, u"changed"_s}));
    }

    // A spy connects by the signal's number, and the list learns nothing of that.
    void reachesWhoeverListensToOneSignalAlone()
    {
        const auto heard = [](auto signal) {
            const Lists list(new IntList({1, 2}));
            QSignalSpy spy(list.data(), signal);
            const std::function<void()> changes[] = {
                [&] { list->append(3); },
                [&] { list->update(0, 4); },
                [&] { list->remove(0); },
                [&] { list->replace({}); },
                [&] {
                    // As one change these are a Reset, and no item came or went.
                    Round::together([&] {
                        list->append(5);
                        list->append(6);
                        list->remove(0);
                    });
                },
            };
            QList<int> counts;
            for (const auto& change : changes) {
                change();
                counts.append(int(spy.size()));
            }
            return counts;
        };
        using List = ObservableListImpl;
        QCOMPARE(heard(&List::itemAdded), (QList<int>{1, 1, 1, 1, 1}));
        QCOMPARE(heard(&List::itemUpdated), (QList<int>{0, 1, 1, 1, 1}));
        QCOMPARE(heard(&List::itemRemoved), (QList<int>{0, 0, 1, 1, 1}));
        QCOMPARE(heard(&List::itemsChanged), (QList<int>{0, 0, 0, 1, 2}));
        QCOMPARE(heard(&List::observableChanged), (QList<int>{1, 2, 3, 4, 5}));
    }

    void emitsWholesaleChangesWithDefaults()
    {
        const Lists list(new IntList);
        // The names under which the signals are known to those who connect by them.
        for (const char* signature :
             {"itemAdded(QVariantList)", "itemUpdated(QVariantList)", "itemRemoved(QVariantList)", "itemsChanged()",
              "itemsChanged(ObservableListImpl::ChangeType::Type)",
              "itemsChanged(ObservableListImpl::ChangeType::Type,QSharedPointer<ObservableListImpl::IndexMapper>)",
              "observableChanged()"})
            QVERIFY2(list->metaObject()->indexOfSignal(signature) >= 0, signature);
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
        QCOMPARE(ListMirror<int>::indexesOf(down, 5), (QList<int>{0, 3, 1, 2, 4}));
        QCOMPARE(ListMirror<int>::indexesOf(ItemMovedMapper(3, 1), 5), (QList<int>{0, 2, 3, 1, 4}));
        QCOMPARE(ListMirror<int>::indexesOf(table, 4), (QList<int>{2, -1, 0, -1}));
        for (const QVariantList& bad : {QVariantList(), QVariantList{0, 0}, path(-1)}) {
            for (const auto* mapper : {static_cast<const ObservableListImpl::IndexMapper*>(&down),
                                       static_cast<const ObservableListImpl::IndexMapper*>(&table)}) {
                int removed = 0;
                QVERIFY(!mapper->newIndexPath(nullptr, &removed, bad));
                QCOMPARE(removed, -1);
                QVERIFY(!mapper->newIndexPath(nullptr, nullptr, bad));
            }
        }
        QVERIFY(table.newIndexPath(nullptr, nullptr, path(0)));
        // Moves that are made together are one.
        const Lists list(new IntList({1, 2, 3}));
        ListMirror<int> mirror(ObservableList<int>(list.data()));
        Round::together([&] {
            list->move(0, 2);
            list->rearrange({1, -1, 0}, {9, 9, 9});
        });
        QCOMPARE(mirror.take(), QStringList{u"moved 0 1 -1"_s});
        QCOMPARE(mirror.complaint(), QString());
    }

    void movesAnAdapterToAnotherModel()
    {
        Lists one(new IntList);
        const Lists other(new IntList);
        int calls = 0;
        ObservableListImplFunctorAdapter adapter(nullptr, [&](const QVariantList&) { ++calls; }, {}, {}, {});
        adapter.setDataModel(one.data());
        one->append(1);
        QCOMPARE(calls, 1);
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, one->update(0, 2));
        adapter.setDataModel(other.data());
        one->append(1);
        other->append(1);
        QCOMPARE(calls, 2);
        adapter.setDataModel(one.data());
        one.reset();
        QVERIFY(!adapter.dataModel());
        adapter.setDataModel(nullptr);
    }

    void sendsChangesToAnotherThread()
    {
        const Lists list(new IntList({1, 2}));
        QThread thread;
        QStringList log;
        auto* adapter = new ObservableListImplFunctorAdapter(
            list.data(), [&](const QVariantList& at) { log << u"+%1"_s.arg(at.first().toInt()); }, {}, {},
            [&](ChangeType::Type type, const Mapper& mapper) {
                log << u"*%1 %2"_s.arg(type).arg(ListMirror<int>::indexesOf(*mapper, 1).first());
                QThread::currentThread()->quit();
            });
        adapter->moveToThread(&thread);
        connect(&thread, &QThread::finished, adapter, &QObject::deleteLater);
        list->append(3);
        list->move(0, 1);
        thread.start();
        QVERIFY(thread.wait(10000));
        QCOMPARE(log, (QStringList{u"+2"_s, u"*1 1"_s}));
    }

    void isSeenThroughByAMirrorWhenItLies()
    {
        const auto moved = [](IntList& list, const QList<int>& newIndexes) {
            list.fireItemsChanged(ChangeType::IndexesChanged, QSharedPointer<PrecomputedMapper>::create(newIndexes));
        };
        const std::function<void(IntList&)> lies[] = {
            [](IntList& list) { list.fireItemAdded(0); },   [](IntList& list) { list.fireItemAdded(4); },
            [](IntList& list) { list.fireItemRemoved(0); }, [](IntList& list) { list.fireItemRemoved(3); },
            [](IntList& list) { list.fireItemUpdated(3); }, [&](IntList& list) { moved(list, {0, 2, 1}); },
            [&](IntList& list) { moved(list, {0, 1, 3}); }, [&](IntList& list) { moved(list, {0, 0, 2}); },
        };
        for (const auto& lie : lies) {
            const Lists list(new IntList({1, 1, 2}));
            const ListMirror<int> mirror(ObservableList<int>(list.data()));
            moved(*list, {1, 0, 2});
            QCOMPARE(mirror.complaint(), QString());
            lie(*list);
            QVERIFY2(!mirror.complaint().isEmpty(), qPrintable(QString::number(&lie - lies)));
        }
    }
};

ZEL_TEST(TstObservableList)
#include "tst_observablelist.moc"
