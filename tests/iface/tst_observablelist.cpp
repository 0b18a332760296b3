// SPDX-License-Identifier: Apache-2.0
#include "DerivedListFixtures.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/ItemMovedMapper.h>
#include <iface/ListMirror.h>
#include <iface/ObservableList.h>
#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/PrecomputedMapper.h>
#include <iface/Round.h>

#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

using namespace Qt::StringLiterals;

using namespace iface;
using ChangeType = ObservableListImpl::ChangeType;
using Mapper = QSharedPointer<ObservableListImpl::IndexMapper>;

namespace {

using IntList = EditableList<int>;
using Lists = QExplicitlySharedDataPointer<IntList>;

QVariantList path(int index)
{
    return ObservableListImpl::pathOf(index);
}

} // namespace

class TstObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsItemsThroughPaths();
    void readsThroughHandles();
    void announcesTheItemFirstThenThePlainChange();
    void reachesWhoeverListensToOneSignalAlone();
    void emitsWholesaleChangesWithDefaults();
    void mapsIndexesOfItemsThatStay();
    void movesAnAdapterToAnotherModel();
    void sendsChangesToAnotherThread();
    void outlivesItsLastHandleWhileItAnnounces();
    void letsAMirrorFollowRandomChanges();
};

void TstObservableList::readsItemsThroughPaths()
{
    const Lists list(new IntList({4, 5}));
    QCOMPARE(list->childCount({}), 2);
    QVERIFY(list->hasChildren({}));
    QCOMPARE(list->data(path(1)), QVariant(5));
    for (const QVariantList& bad : {QVariantList(), path(2), path(-1), QVariantList{0, 0}, QVariantList{u"x"_s}})
        QVERIFY(!list->data(bad).isValid());
    // As it stands: nobody counts the children of an item.
    QCOMPARE(list->childCount(path(0)), 0);
    QCOMPARE(Lists(new IntList)->childCount(path(0)), 1);
    QVERIFY(!list->hasChildren(path(0)));
    // A handle reads through data(), also where a subclass has another.
    struct Doubled : IntList
    {
        using IntList::IntList;
        QVariant data(const QVariantList& indexPath) const override { return 2 * IntList::data(indexPath).toInt(); }
    };
    QCOMPARE(ObservableList<int>(new Doubled({4, 5})).toList(), (QList<int>{8, 10}));
    const ObservableList<int> bare(new ObservableListImpl);
    QVERIFY(!bare.impl()->hasChildren({}));
    for (const auto& empty : {bare, ObservableList<int>()}) {
        QVERIFY(empty.isEmpty());
        QCOMPARE(empty[0], 0);
        QCOMPARE(empty.indexOf(0), -1);
    }
}

void TstObservableList::readsThroughHandles()
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
    const auto reads = [&](auto&& read) {
        return ObservableTracker::runAndMonitor(std::forward<decltype(read)>(read))->contains(list.impl());
    };
    QVERIFY(reads([&] { list.size(); }));
    QVERIFY(reads([&] { list[0]; }));
}

void TstObservableList::announcesTheItemFirstThenThePlainChange()
{
    const Lists list(new IntList({0, 1, 2}));
    QStringList log;
    ObserverFunctorAdapter plain([&] { log << u"changed"_s; });
    list->addObserver(&plain);
    connect(list.data(), &ObservableListImpl::itemAdded, &plain, [&](const QVariantList& at) {
        QCOMPARE(at, QVariantList{3});
        QCOMPARE(list->data(at), QVariant(9));
        log << u"added"_s;
    });
    connect(list.data(), &ObservableListImpl::itemUpdated, &plain, [&](const QVariantList& at) {
        QCOMPARE(list->data(at), QVariant(10));
        log << u"updated"_s;
    });
    connect(list.data(), &ObservableListImpl::itemRemoved, &plain, [&](const QVariantList& at) {
        QCOMPARE(at, QVariantList{0});
        QCOMPARE(list->items().size(), 3);
        log << u"removed"_s;
    });
    connect(list.data(), &ObservableListImpl::itemsChanged, &plain, [&] { log << u"wholesale"_s; });
    list->insert(3, 9);
    list->update(1, 10);
    list->remove(0);
    list->reset({});
    QCOMPARE(log, (QStringList{u"added"_s, u"changed"_s, u"updated"_s, u"changed"_s, u"removed"_s, u"changed"_s,
                               u"wholesale"_s, u"changed"_s}));
}

// A spy connects by the signal's number, and the list learns nothing of that.
void TstObservableList::reachesWhoeverListensToOneSignalAlone()
{
    using List = iface::ObservableListImpl;
    const auto heard = [](auto signal) {
        const EditableListPointer<int> list(new EditableList<int>({1, 2}));
        QSignalSpy spy(list.data(), signal);
        QList<int> counts;
        list->append(3);
        counts.append(int(spy.size()));
        list->update(0, 4);
        counts.append(int(spy.size()));
        list->remove(0);
        counts.append(int(spy.size()));
        list->reset({});
        counts.append(int(spy.size()));
        // As one change these are a Reset, and no item came or went.
        Round::together([&] {
            list->append(5);
            list->append(6);
            list->remove(0);
        });
        counts.append(int(spy.size()));
        return counts;
    };
    QCOMPARE(heard(&List::itemAdded), (QList<int>{1, 1, 1, 1, 1}));
    QCOMPARE(heard(&List::itemUpdated), (QList<int>{0, 1, 1, 1, 1}));
    QCOMPARE(heard(&List::itemRemoved), (QList<int>{0, 0, 1, 1, 1}));
    QCOMPARE(heard(&List::itemsChanged), (QList<int>{0, 0, 0, 1, 2}));
    QCOMPARE(heard(&List::observableChanged), (QList<int>{1, 2, 3, 4, 5}));

    const QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
    QSignalSpy keys(map.data(), &iface::ObservableMapImplBase::mapChanged);
    map->set({{1, 1}});
    map->fireKeyChanged(1);
    map->setQuietly(1, 2);
    QCOMPARE(keys.size(), 2);
    QCOMPARE(keys.at(1).at(0).value<iface::MapChange>().keys<int>(), QList<int>{1});
}

void TstObservableList::emitsWholesaleChangesWithDefaults()
{
    const Lists list(new IntList);
    // The names under which the signal is known to those who connect by them.
    const QMetaObject* meta = list->metaObject();
    for (const char* signature :
         {"itemAdded(QVariantList)", "itemUpdated(QVariantList)", "itemRemoved(QVariantList)", "itemsChanged()",
          "itemsChanged(ObservableListImpl::ChangeType::Type)",
          "itemsChanged(ObservableListImpl::ChangeType::Type,QSharedPointer<ObservableListImpl::IndexMapper>)",
          "observableChanged()"})
        QVERIFY2(meta->indexOfSignal(signature) >= 0, signature);
    QSignalSpy spy(list.data(), &ObservableListImpl::itemsChanged);
    Q_EMIT list->itemsChanged();
    QCOMPARE(spy.size(), 1);
    QCOMPARE(spy[0][0].value<ChangeType::Type>(), ChangeType::Reset);
    QVERIFY(spy[0][1].value<Mapper>().isNull());
}

void TstObservableList::mapsIndexesOfItemsThatStay()
{
    const ItemMovedMapper down(1, 3);
    const ItemMovedMapper up(3, 1);
    const PrecomputedMapper table({2, -1, 0});
    QCOMPARE(ListMirror<int>::indexesOf(down, 5), (QList<int>{0, 3, 1, 2, 4}));
    QCOMPARE(ListMirror<int>::indexesOf(up, 5), (QList<int>{0, 2, 3, 1, 4}));
    QCOMPARE(ListMirror<int>::indexesOf(table, 4), (QList<int>{2, -1, 0, -1}));
    for (const QVariantList& bad : {QVariantList(), QVariantList{0, 0}, QVariantList{-1}}) {
        for (const ObservableListImpl::IndexMapper* mapper :
             std::initializer_list<const ObservableListImpl::IndexMapper*>{&down, &table}) {
            int removed = 0;
            QVERIFY(!mapper->newIndexPath(nullptr, &removed, bad));
            QCOMPARE(removed, -1);
            QVERIFY(!mapper->newIndexPath(nullptr, nullptr, bad));
        }
    }
    QVERIFY(table.newIndexPath(nullptr, nullptr, path(0)));
}

void TstObservableList::movesAnAdapterToAnotherModel()
{
    Lists one(new IntList);
    const Lists other(new IntList);
    int calls = 0;
    ObservableListImplFunctorAdapter adapter(nullptr, [&](const QVariantList&) { ++calls; }, {}, {}, {});
    QVERIFY(!adapter.dataModel());
    adapter.setDataModel(one.data());
    one->insert(0, 1);
    QCOMPARE(calls, 1);
    QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, one->update(0, 2));
    adapter.setDataModel(other.data());
    one->insert(0, 1);
    QCOMPARE(calls, 1);
    other->insert(0, 1);
    QCOMPARE(calls, 2);
    adapter.setDataModel(one.data());
    one.reset();
    QVERIFY(!adapter.dataModel());
    adapter.setDataModel(nullptr);
    other->insert(0, 1);
    QCOMPARE(calls, 2);
}

void TstObservableList::sendsChangesToAnotherThread()
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
    list->insert(2, 3);
    list->move(0, 1);
    thread.start();
    QVERIFY(thread.wait(10000));
    QCOMPARE(log, (QStringList{u"+2"_s, u"*1 1"_s}));
}

void TstObservableList::outlivesItsLastHandleWhileItAnnounces()
{
    Lists list(new IntList({1}));
    const QPointer<QObject> alive(list.data());
    bool heard = false;
    ObserverFunctorAdapter plain([&] { heard = alive; });
    list->addObserver(&plain);
    connect(list.data(), &ObservableListImpl::itemRemoved, &plain, [&] { list.reset(); });
    list->remove(0);
    QVERIFY(heard);
    QVERIFY(!alive);
}

void TstObservableList::letsAMirrorFollowRandomChanges()
{
    QRandomGenerator random = seededRandom();
    const Lists list(new IntList);
    ListMirror<int> mirror(ObservableList<int>(list.data()));
    for (int step = 0; step < 4000; ++step) {
        editAtRandom<int>(*list, random, [&] { return random.bounded(1000); });
        QCOMPARE(mirror.items(), list->items());
        QCOMPARE(mirror.complaint(), QString());
        QCOMPARE(mirror.plainChanges(), step + 1);
    }
}

ZEL_TEST(TstObservableList)
#include "tst_observablelist.moc"
