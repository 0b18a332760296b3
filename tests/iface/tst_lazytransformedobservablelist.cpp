// SPDX-License-Identifier: Apache-2.0
#include "DerivedListFixtures.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/LazyTransformedObservableList.h>
#include <iface/ListMirror.h>
#include <iface/ObservableMonitor.h>

#include <QRegularExpression>
#include <QtTest>

#include <map>
#include <stdexcept>

using iface::ObservableList;
using iface::ObservableMap;
using Transformed = iface::LazyTransformedObservableListImpl<int, QString>;
using Handle = iface::LazyTransformedObservableList<int, QString>;
using Mirror = iface::ListMirror<QString>;
using ChangeType = iface::ObservableListImpl::ChangeType;

namespace {

struct Desk
{
    explicit Desk(const QList<int>& firstKeys, int cacheLimit = Transformed::DefaultCacheLimit)
        : keys(new EditableList<int>(firstKeys))
        , map(new PlainMap<int, QString>)
    {
        for (int key = 0; key < 400; ++key)
            map->contents.insert(key, QString::number(key));
        list = Handle(
            new Transformed(ObservableList<int>(keys.data()), ObservableMap<int, QString>(map.data()), cacheLimit));
        watch();
    }

    QStringList expected() const
    {
        QStringList values;
        for (const int key : keys->items())
            values.append(map->contents.value(key));
        return values;
    }

    QStringList take() { return std::exchange(announced, {}); }

    EditableListPointer<int> keys;
    QExplicitlySharedDataPointer<PlainMap<int, QString>> map;
    Handle list;
    QStringList announced; ///< without reading anything, unlike a mirror

private:
    void watch()
    {
        using List = iface::ObservableListImpl;
        const auto say = [this](const QString& what) { announced.append(what); };
        const auto at = [](const QVariantList& path) { return List::indexOfPath(path); };
        QObject::connect(list.impl(), &List::itemAdded, &m_context,
                         [=](const QVariantList& path) { say(QStringLiteral("added %1").arg(at(path))); });
        QObject::connect(list.impl(), &List::itemUpdated, &m_context,
                         [=](const QVariantList& path) { say(QStringLiteral("updated %1").arg(at(path))); });
        QObject::connect(list.impl(), &List::itemRemoved, &m_context,
                         [=](const QVariantList& path) { say(QStringLiteral("removed %1").arg(at(path))); });
        QObject::connect(list.impl(), &List::itemsChanged, &m_context, [=](ChangeType::Type type) {
            say(type == ChangeType::IndexesChanged ? QStringLiteral("moved") : Mirror::inWords(type, {}));
        });
    }

    QObject m_context;
};

/// What a transformed list that forgets announces, step by step: which items are kept is remembered by index.
class NaiveCache
{
public:
    explicit NaiveCache(Desk& desk, int limit)
        : m_desk(desk)
        , m_limit(limit)
        , m_count(desk.keys->size())
    {
        using List = iface::ObservableListImpl;
        auto* const keys = desk.keys.data();
        QObject::connect(keys, &List::itemAdded, &m_context, [this](const QVariantList& path) {
            const int index = List::indexOfPath(path);
            ++m_count;
            shift(index, 1);
            announced.append(QStringLiteral("added %1").arg(index));
        });
        QObject::connect(keys, &List::itemRemoved, &m_context, [this](const QVariantList& path) {
            const int index = List::indexOfPath(path);
            --m_count;
            m_kept.erase(index);
            shift(index, -1);
            announced.append(QStringLiteral("removed %1").arg(index));
        });
        QObject::connect(keys, &List::itemUpdated, &m_context,
                         [this](const QVariantList& path) { compare({List::indexOfPath(path)}); });
        QObject::connect(keys, &List::itemsChanged, &m_context,
                         [this](ChangeType::Type type, const QSharedPointer<List::IndexMapper>& mapper) {
                             wholesale(type, mapper.data());
                         });
    }

    void read(int index)
    {
        if (m_kept.count(index))
            return;
        if (int(m_kept.size()) >= m_limit)
            m_kept.clear();
        m_kept[index] = current(index);
    }

    void mapChanged()
    {
        QList<int> all;
        for (const auto& entry : m_kept)
            all.append(entry.first);
        compare(all);
    }

    QStringList take() { return std::exchange(announced, {}); }

    QStringList announced;

private:
    using Pair = std::pair<int, QString>;

    Pair current(int index) const
    {
        const int key = m_desk.keys->items().at(index);
        return {key, m_desk.map->contents.value(key)};
    }

    void compare(const QList<int>& indexes)
    {
        QList<int> changed;
        for (const int index : indexes) {
            if (m_kept.count(index) && m_kept[index] != current(index)) {
                m_kept[index] = current(index);
                changed.append(index);
            }
        }
        if (changed.size() == 1)
            announced.append(QStringLiteral("updated %1").arg(changed.first()));
        else if (changed.size() > 1)
            announced.append(QStringLiteral("data changed"));
    }

    void wholesale(ChangeType::Type type, const iface::ObservableListImpl::IndexMapper* mapper)
    {
        const int before = std::exchange(m_count, m_desk.keys->size());
        if (type == ChangeType::IndexesChanged && mapper) {
            const QList<int> moved = Mirror::indexesOf(*mapper, before);
            std::map<int, Pair> kept;
            for (const auto& [index, pair] : m_kept) {
                if (moved.at(index) >= 0)
                    kept[moved.at(index)] = pair;
            }
            m_kept = kept;
            announced.append(QStringLiteral("moved"));
        } else if (before == m_count) {
            mapChanged();
        } else {
            m_kept.clear();
            announced.append(type == ChangeType::IndexesChanged ? QStringLiteral("moved") : Mirror::inWords(type, {}));
        }
    }

    void shift(int from, int by)
    {
        std::map<int, Pair> kept;
        for (const auto& [index, pair] : m_kept)
            kept[index >= from ? index + by : index] = pair;
        m_kept = kept;
    }

    Desk& m_desk;
    const int m_limit;
    int m_count;
    std::map<int, Pair> m_kept;
    QObject m_context;
};

QList<int> numbers(int count)
{
    QList<int> keys;
    for (int i = 0; i < count; ++i)
        keys.append(i);
    return keys;
}

} // namespace

class TstLazyTransformedObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcesWhatANaiveCacheWould();
    void computesAnItemWhenItIsReadAndOnce();
    void hearsOnlyWhatTheMapAnnouncesUnderKeys();
    void logsAndRefusesAReadPastItsEnd();
    void tellsReadersOfForgottenItemsThroughTheMap();
    void takesInWhatTheMapDoesWhileItIsAsked();
    void survivesAMapThatEditsTheKeysWhileItIsAsked();
    void staysAsItWasWhenTheMapThrows();
    void livesThroughAHandlerThatDropsIt();
};

void TstLazyTransformedObservableList::announcesWhatANaiveCacheWould()
{
    QCOMPARE(Transformed::DefaultCacheLimit, 150);
    QRandomGenerator random = seededRandom();
    constexpr int everything = Transformed::KeepsEverything;
    const std::pair<int, int> countsAndLimits[] = {{3, 2}, {60, 20}, {200, 150}, {0, everything}, {60, everything}};
    for (const auto& [count, limit] : countsAndLimits) {
        const int keyCount = qMax(10, 2 * count);
        const std::function<int()> makeKey = [&] { return random.bounded(keyCount); };
        Desk desk(numbers(count), limit);
        NaiveCache naive(desk, limit);

        for (int step = 0; step < 1500; ++step) {
            const int kind = random.bounded(10);
            if (kind < 3) {
                editAtRandom(*desk.keys, random, makeKey);
            } else if (kind < 7 && desk.keys->size() > 0) {
                const int index = random.bounded(desk.keys->size());
                naive.read(index);
                QCOMPARE(desk.list[index], desk.expected().at(index));
            } else {
                QHash<int, QString> changes;
                for (int i = random.bounded(1, 4); i > 0; --i)
                    changes.insert(makeKey(), QString::number(random.bounded(1000)));
                desk.map->set(changes);
                naive.mapChanged();
            }
            QCOMPARE(desk.take(), naive.take());
            QCOMPARE(desk.list.size(), desk.keys->size());
        }
        QCOMPARE(desk.list.toList(), desk.expected());
    }
}

void TstLazyTransformedObservableList::computesAnItemWhenItIsReadAndOnce()
{
    Desk desk({3, 4, 5});
    QCOMPARE(desk.map->gets, 0);
    QCOMPARE(desk.list.size(), 3);
    QCOMPARE(desk.list[1], QStringLiteral("4"));
    QCOMPARE(desk.list[1], QStringLiteral("4"));
    QCOMPARE(desk.map->gets, 1);
    desk.keys->remove(0);
    desk.keys->insert(0, 9);
    desk.keys->insert(0, 9);
    QCOMPARE(desk.list[2], QStringLiteral("4"));
    QCOMPARE(desk.map->gets, 1);
}

void TstLazyTransformedObservableList::hearsOnlyWhatTheMapAnnouncesUnderKeys()
{
    Desk desk({3});
    QCOMPARE(desk.list[0], QStringLiteral("3"));
    desk.map->setQuietly(3, QStringLiteral("three"));
    QCOMPARE(desk.take(), QStringList());
    QCOMPARE(desk.list[0], QStringLiteral("3"));
    desk.map->set({{3, QStringLiteral("three")}});
    QCOMPARE(desk.take(), QStringList{QStringLiteral("updated 0")});
}

void TstLazyTransformedObservableList::logsAndRefusesAReadPastItsEnd()
{
    Desk desk({1});
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral(
                                         "^LazyTransformedObservableList\\.h \\[ 101 \\]:  "
                                         "\"?Index out of bounds accessing LazyTransformedObservableList!\"?\\s*$")));
    QVERIFY(!desk.list.impl()->data({1}).isValid());
    for (const QVariantList& path : {QVariantList(), QVariantList{-1}, QVariantList{0, 0}})
        QVERIFY(!desk.list.impl()->data(path).isValid());
    QCOMPARE(desk.map->gets, 0);
}

void TstLazyTransformedObservableList::tellsReadersOfForgottenItemsThroughTheMap()
{
    Desk desk(numbers(3), 1);
    QString joined;
    iface::ObservableMonitor monitor([&] { joined = QStringList(desk.list.toList()).join(QLatin1Char(' ')); }, nullptr,
                                     QStringLiteral("joined"), false);
    monitor.handleObservableChanged();
    desk.map->set({{0, QStringLiteral("zero")}});
    QCOMPARE(joined, QStringLiteral("zero 1 2"));
}

void TstLazyTransformedObservableList::takesInWhatTheMapDoesWhileItIsAsked()
{
    Desk desk({1, 2}, Transformed::KeepsEverything);
    Mirror mirror(desk.list);
    // Asked for 1 again, the map changes that very key, and another.
    bool isDone = false;
    desk.map->whenAsked = [&](int key) {
        if (key == 1 && !std::exchange(isDone, true))
            desk.map->set({{1, QStringLiteral("again")}, {2, QStringLiteral("too")}});
    };
    desk.map->set({{1, QStringLiteral("one")}});
    QCOMPARE(desk.list.toList(), desk.expected());
    QCOMPARE(mirror.items(), desk.expected());
    // The same while an item is read for the first time.
    isDone = false;
    desk.keys->append(1);
    QCOMPARE(desk.list[2], QStringLiteral("again"));
    QCOMPARE(mirror.items(), desk.expected());
    QCOMPARE(mirror.complaint(), QString());
}

void TstLazyTransformedObservableList::survivesAMapThatEditsTheKeysWhileItIsAsked()
{
    Desk desk({1, 2, 3}, Transformed::KeepsEverything);
    Mirror mirror(desk.list);
    int edits = 0;
    desk.map->whenAsked = [&](int key) {
        if (key == 9 && edits++ == 0)
            desk.keys->insert(0, 4);
    };
    desk.keys->update(1, 9);
    QCOMPARE(edits > 0, true);
    QCOMPARE(desk.list.toList(),
             (QStringList{QStringLiteral("4"), QStringLiteral("1"), QStringLiteral("9"), QStringLiteral("3")}));
    QCOMPARE(mirror.items(), desk.expected());
    QCOMPARE(mirror.complaint(), QString());
    // The item that is being read goes away, and another slides into its place.
    Desk other({8, 5});
    other.map->whenAsked = [&](int key) {
        if (key == 8)
            other.keys->remove(0);
    };
    QCOMPARE(other.list[0], QStringLiteral("5"));
    QCOMPARE(other.list.toList(), QStringList{QStringLiteral("5")});
}

void TstLazyTransformedObservableList::staysAsItWasWhenTheMapThrows()
{
    Desk desk({1, 2}, Transformed::KeepsEverything);
    desk.map->whenAsked = [](int key) {
        if (key == 2)
            throw std::runtime_error("no");
    };
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, desk.list.toList());
    QCOMPARE(desk.list[0], QStringLiteral("1"));
    desk.map->whenAsked = nullptr;
    QCOMPARE(desk.list[1], QStringLiteral("2"));
    desk.map->whenAsked = [](int) { throw std::runtime_error("no"); };
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, desk.map->set({{1, QStringLiteral("one")}}));
    desk.map->whenAsked = nullptr;
    desk.keys->remove(1);
    desk.map->set({{1, QStringLiteral("uno")}});
    QCOMPARE(desk.take(), (QStringList{QStringLiteral("removed 1"), QStringLiteral("updated 0")}));
    QCOMPARE(desk.list.toList(), desk.expected());
}

void TstLazyTransformedObservableList::livesThroughAHandlerThatDropsIt()
{
    Desk desk({1, 2}, Transformed::KeepsEverything);
    desk.list.toList();
    connect(desk.list.impl(), &iface::ObservableListImpl::itemUpdated, this,
            [&](const QVariantList&) { desk.list = Handle(); });
    desk.map->set({{1, QStringLiteral("one")}});
    desk.map->set({{2, QStringLiteral("two")}});
    QCOMPARE(desk.take(), QStringList{QStringLiteral("updated 0")});
}

ZEL_TEST(TstLazyTransformedObservableList)
#include "tst_lazytransformedobservablelist.moc"
