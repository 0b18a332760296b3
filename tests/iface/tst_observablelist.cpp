// SPDX-License-Identifier: Apache-2.0
#include <iface/BaseListImpl.h>
#include <iface/ItemMovedMapper.h>
#include <iface/ObservableList.h>
#include <iface/ObservableListImplFunctorAdapter.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/PrecomputedMapper.h>

#include <QPointer>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <algorithm>
#include <numeric>
#include <optional>
#include <stdexcept>

using namespace iface;
using ChangeType = ObservableListImpl::ChangeType;
using Mapper = QSharedPointer<ObservableListImpl::IndexMapper>;

namespace {

class IntList : public BaseListImpl<int>
{
public:
    explicit IntList(const QList<int>& items = {}) { m_list = items; }

    const QList<int>& items() const { return m_list; }
    void insert(int index, int value)
    {
        m_list.insert(index, value);
        fireItemAdded(index);
    }
    void update(int index, int value)
    {
        m_list[index] = value;
        fireItemUpdated(index);
    }
    void remove(int index)
    {
        m_list.removeAt(index);
        fireItemRemoved(index);
    }
    void replace(const QList<int>& items, ChangeType::Type type, const Mapper& mapper = {})
    {
        m_list = items;
        fireItemsChanged(type, mapper);
    }
};

using Lists = QExplicitlySharedDataPointer<IntList>;

QVariantList path(int index)
{
    return ObservableListImpl::pathOf(index);
}

/// Where an index goes; nothing when the mapper says it is gone.
std::optional<int> mapped(const ObservableListImpl::IndexMapper& mapper, const QVariantList& oldPath)
{
    QVariantList newPath;
    int removed = 0;
    const bool known = mapper.newIndexPath(&newPath, &removed, oldPath);
    // Both out-parameters may be missing.
    if (mapper.newIndexPath(nullptr, nullptr, oldPath) != known || removed != (known ? 0 : -1))
        throw std::logic_error("a mapper contradicts itself");
    return known ? std::optional<int>(ObservableListImpl::indexOfPath(newPath)) : std::nullopt;
}

std::optional<int> mapped(const ObservableListImpl::IndexMapper& mapper, int index)
{
    return mapped(mapper, path(index));
}

} // namespace

class TstObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readsAsEmptyWhereThereIsNothing();
    void readsItemsThroughPaths();
    void answersNothingForBadPaths();
    void readsThroughHandles();
    void recordsReadsOfTheList();
    void stopsSearchingAnEmptyListAtOnce();
    void announcesTheItemFirstThenThePlainChange();
    void emitsWholesaleChangesWithDefaults();
    void mapsAMovedItem();
    void mapsByTable();
    void callsAnAdaptersFunctions();
    void movesAnAdapterToAnotherModel();
    void sendsChangesToAnotherThread();
    void outlivesItsLastHandleWhileItAnnounces();
    void staysWholeWhenAHandlerEditsTheList();
    void staysWholeWhenAHandlerThrows();
    void letsAMirrorFollowRandomChanges();
};

void TstObservableList::readsAsEmptyWhereThereIsNothing()
{
    const ObservableList<int> bare(new ObservableListImpl);
    const ObservableList<int> nothing;
    for (const auto& list : {bare, nothing}) {
        QCOMPARE(list.size(), 0);
        QVERIFY(list.isEmpty());
        QCOMPARE(list[0], 0);
        QCOMPARE(list.toList(), QList<int>());
    }
    QVERIFY(!bare.impl()->hasChildren({}));
    QCOMPARE(bare.impl()->itemType({}), QString());
    QVERIFY(!bare.impl()->data(path(0)).isValid());
}

void TstObservableList::readsItemsThroughPaths()
{
    const Lists list(new IntList({4, 5}));
    QCOMPARE(list->childCount({}), 2);
    QVERIFY(list->hasChildren({}));
    QCOMPARE(list->data(path(1)), QVariant(5));
    QCOMPARE(list->itemType(path(1)), QString());
    // As it stands: nobody counts the children of an item.
    QCOMPARE(list->childCount(path(0)), 0);
    QCOMPARE(Lists(new IntList)->childCount(path(0)), 1);
    QVERIFY(!list->hasChildren(path(0)));
}

void TstObservableList::answersNothingForBadPaths()
{
    const Lists list(new IntList({4, 5}));
    QVERIFY(!list->data({}).isValid());
    QVERIFY(!list->data(path(2)).isValid());
    QVERIFY(!list->data(path(-1)).isValid());
    QVERIFY(!list->data({QVariant(0), QVariant(0)}).isValid());
    QVERIFY(!list->data({QVariant(u"x"_qs)}).isValid());
}

void TstObservableList::readsThroughHandles()
{
    ObservableList<int, IntList> exact(Lists(new IntList({7, 8, 7})));
    const ObservableList<int> list = exact;
    QCOMPARE(list.impl(), exact.impl());
    QCOMPARE(list.size(), 3);
    QCOMPARE(list[1], 8);
    QCOMPARE(list[3], 0);
    QCOMPARE(list.indexOf(7), 0);
    QCOMPARE(list.indexOf(9), -1);
    QVERIFY(list.contains(8));
    QVERIFY(!list.contains(9));
    QCOMPARE(list.toList(), (QList<int>{7, 8, 7}));
    const ObservableList<QList<int>> otherType(list.impl());
    QVERIFY2(otherType[0].isEmpty(), "what does not convert reads as a default");
}

void TstObservableList::recordsReadsOfTheList()
{
    const ObservableList<int> list(new IntList({1}));
    const auto reads = [&](auto&& read) {
        return ObservableTracker::runAndMonitor(std::forward<decltype(read)>(read))->contains(list.impl());
    };
    QVERIFY(reads([&] { list.size(); }));
    QVERIFY(reads([&] { list[0]; }));
    QVERIFY(reads([&] { list.isEmpty(); }));
    QVERIFY(reads([&] { list.indexOf(3); }));
    QVERIFY(reads([&] { list.toList(); }));
    QVERIFY(!reads([] {}));
}

void TstObservableList::stopsSearchingAnEmptyListAtOnce()
{
    class Unreadable : public IntList
    {
    public:
        QVariant data(const QVariantList&) const override { throw std::logic_error("read"); }
    };
    const ObservableList<int> list(new Unreadable);
    QCOMPARE(list.indexOf(1), -1);
    QVERIFY(!list.contains(1));
}

void TstObservableList::announcesTheItemFirstThenThePlainChange()
{
    const Lists list(new IntList({0, 1, 2}));
    QStringList log;
    ObserverFunctorAdapter plain([&] { log << u"changed"_qs; });
    list->addObserver(&plain);
    connect(list.data(), &ObservableListImpl::itemAdded, &plain, [&](const QVariantList& at) {
        QCOMPARE(at, QVariantList{3});
        QCOMPARE(list->data(at), QVariant(9));
        log << u"added"_qs;
    });
    connect(list.data(), &ObservableListImpl::itemUpdated, &plain, [&](const QVariantList& at) {
        QCOMPARE(list->data(at), QVariant(10));
        log << u"updated"_qs;
    });
    connect(list.data(), &ObservableListImpl::itemRemoved, &plain, [&](const QVariantList& at) {
        QCOMPARE(at, QVariantList{0});
        QCOMPARE(list->items().size(), 3);
        log << u"removed"_qs;
    });
    connect(list.data(), &ObservableListImpl::itemsChanged, &plain, [&] { log << u"wholesale"_qs; });
    list->insert(3, 9);
    list->update(1, 10);
    list->remove(0);
    list->replace({}, ChangeType::Reset);
    QCOMPARE(log, (QStringList{u"added"_qs, u"changed"_qs, u"updated"_qs, u"changed"_qs, u"removed"_qs, u"changed"_qs,
                               u"wholesale"_qs, u"changed"_qs}));
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

void TstObservableList::mapsAMovedItem()
{
    const ItemMovedMapper down(1, 3);
    const QList<int> movedDown{0, 3, 1, 2, 4};
    const ItemMovedMapper up(3, 1);
    const QList<int> movedUp{0, 2, 3, 1, 4};
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(mapped(down, i), movedDown[i]);
        QCOMPARE(mapped(up, i), movedUp[i]);
    }
    for (const QVariantList& bad : {QVariantList(), QVariantList{0, 0}, QVariantList{-1}})
        QVERIFY(!mapped(down, bad));
}

void TstObservableList::mapsByTable()
{
    const PrecomputedMapper mapper({2, -1, 0});
    QCOMPARE(mapped(mapper, 0), 2);
    QCOMPARE(mapped(mapper, 2), 0);
    for (const QVariantList& gone : {path(1), path(3), path(-1), QVariantList(), QVariantList{0, 0}})
        QVERIFY(!mapped(mapper, gone));
}

void TstObservableList::callsAnAdaptersFunctions()
{
    const Lists list(new IntList({1, 2}));
    QStringList log;
    const auto item = [&](const QString& what) {
        return [&log, what](const QVariantList& at) { log << what + QString::number(at.first().toInt()); };
    };
    const Mapper mapper(new ItemMovedMapper(0, 1));
    ObservableListImplFunctorAdapter adapter(
        list.data(), item(u"+"_qs), item(u"="_qs), item(u"-"_qs),
        [&](ChangeType::Type type, const Mapper& given) { log << u"*%1%2"_qs.arg(type).arg(given == mapper); });
    list->insert(2, 3);
    list->update(1, 4);
    list->remove(0);
    list->replace({3, 4}, ChangeType::IndexesChanged, mapper);
    QCOMPARE(log, (QStringList{u"+2"_qs, u"=1"_qs, u"-0"_qs, u"*11"_qs}));
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
        list.data(), [&](const QVariantList& at) { log << u"+%1"_qs.arg(at.first().toInt()); }, {}, {},
        [&](ChangeType::Type type, const Mapper& mapper) {
            log << u"*%1 %2"_qs.arg(type).arg(*mapped(*mapper, 0));
            QThread::currentThread()->quit();
        });
    adapter->moveToThread(&thread);
    connect(&thread, &QThread::finished, adapter, &QObject::deleteLater);
    list->insert(2, 3);
    list->replace({2, 1, 3}, ChangeType::IndexesChanged, Mapper(new ItemMovedMapper(0, 1)));
    thread.start();
    QVERIFY(thread.wait(10000));
    QCOMPARE(log, (QStringList{u"+2"_qs, u"*1 1"_qs}));
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

void TstObservableList::staysWholeWhenAHandlerEditsTheList()
{
    const Lists list(new IntList);
    QList<QList<int>> seenByTheSecond;
    QObject context;
    connect(list.data(), &ObservableListImpl::itemAdded, &context, [&] {
        if (list->items().size() < 3)
            list->insert(0, static_cast<int>(list->items().size()));
    });
    connect(list.data(), &ObservableListImpl::itemAdded, &context, [&] { seenByTheSecond << list->items(); });
    list->insert(0, 9);
    QCOMPARE(list->items(), (QList<int>{2, 1, 9}));
    QCOMPARE(seenByTheSecond, QList<QList<int>>(3, list->items()));
}

void TstObservableList::staysWholeWhenAHandlerThrows()
{
    const Lists list(new IntList);
    bool throws = true;
    int heard = 0;
    QObject context;
    connect(list.data(), &ObservableListImpl::itemAdded, &context, [&] {
        if (throws)
            throw std::runtime_error("no");
        ++heard;
    });
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, list->insert(0, 1));
    QCOMPARE(list->items(), QList<int>{1});
    QCOMPARE(list->ref.loadRelaxed(), 1);
    throws = false;
    list->insert(0, 2);
    QCOMPARE(heard, 1);
}

void TstObservableList::letsAMirrorFollowRandomChanges()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    qInfo() << "seed" << seed;
    QRandomGenerator random(seed);
    const auto below = [&](qsizetype bound) { return random.bounded(static_cast<int>(bound)); };
    const Lists list(new IntList);
    const ObservableList<int> reader(list.data());

    // The mirror reads from the list only what each announcement says is new.
    QList<int> mirror;
    const auto at = [](const QVariantList& indexPath) { return indexPath.first().toInt(); };
    ObservableListImplFunctorAdapter adapter(
        list.data(), [&](const QVariantList& p) { mirror.insert(at(p), reader[at(p)]); },
        [&](const QVariantList& p) { mirror[at(p)] = reader[at(p)]; },
        [&](const QVariantList& p) { mirror.removeAt(at(p)); },
        [&](ChangeType::Type type, const Mapper& mapper) {
            if (type != ChangeType::IndexesChanged) {
                QVERIFY(mapper.isNull());
                mirror = reader.toList();
                return;
            }
            QList<std::optional<int>> moved(reader.size());
            for (int i = 0; i < mirror.size(); ++i) {
                if (const auto to = mapped(*mapper, i)) {
                    QVERIFY2(!moved[*to], "two items in one place");
                    moved[*to] = mirror[i];
                }
            }
            mirror.clear();
            for (int i = 0; i < moved.size(); ++i)
                mirror.append(moved[i] ? *moved[i] : reader[i]);
        });

    for (int step = 0; step < 4000; ++step) {
        const QList<int> items = list->items();
        const qsizetype n = items.size();
        const int kind = random.bounded(8);
        if (n == 0 || (kind <= 2 && n < 50)) {
            list->insert(below(n + 1), below(1000));
        } else if (kind <= 1 || kind == 3) {
            list->update(below(n), below(1000));
        } else if (kind == 2 || kind == 4) {
            list->remove(below(n));
        } else if (kind == 5) {
            QList<int> moved = items;
            const int from = below(n);
            const int to = below(n);
            moved.move(from, to);
            list->replace(moved, ChangeType::IndexesChanged, Mapper(new ItemMovedMapper(from, to)));
        } else if (kind == 6) {
            // Shuffle, drop some, add some.
            QList<int> places(n);
            std::iota(places.begin(), places.end(), 0);
            std::shuffle(places.begin(), places.end(), random);
            places.resize(n - below(std::min<qsizetype>(n, 4)));
            for (int added = below(3); added > 0; --added)
                places.insert(below(places.size() + 1), -1);
            QList<int> newIndexes(n, -1);
            QList<int> changed;
            for (int i = 0; i < places.size(); ++i) {
                if (places[i] >= 0)
                    newIndexes[places[i]] = i;
                changed.append(places[i] >= 0 ? items[places[i]] : 5000 + step);
            }
            list->replace(changed, ChangeType::IndexesChanged, Mapper(new PrecomputedMapper(newIndexes)));
        } else {
            QList<int> changed = items;
            for (int& item : changed)
                item += below(2);
            list->replace(changed, random.bounded(2) ? ChangeType::DataChanged : ChangeType::Reset);
        }
        QCOMPARE(mirror, list->items());
    }
}

QTEST_GUILESS_MAIN(TstObservableList)
#include "tst_observablelist.moc"
