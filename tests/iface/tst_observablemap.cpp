// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/BaseMap.h>
#include <iface/CompositeMap.h>
#include <iface/MapObservableToValue.h>
#include <iface/ObservableMap.h>
#include <iface/ObservableMapImplFunctorAdapter.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/Round.h>
#include <iface/WritableObservableValue.h>

#include <QHash>
#include <QPointer>
#include <QSet>
#include <QTest>

#include <memory>

using namespace Qt::StringLiterals;

using namespace iface;

namespace {

template <class K, class V>
class StoredMap : public BaseMap<K, V>
{
public:
    void set(const K& key, const V& value)
    {
        entries[key] = value;
        this->fireMapChanged(MapChange::createSingle(key));
    }

    QHash<K, V> entries;

protected:
    V doGet(const K& key) const override { return entries.value(key); }
};

using Writable = WritableObservableValue<int>;
using Value = ObservableValue<int>;

// What a map announces, as text: "a,b" for keys, "*" for the plain change.
template <class K>
struct Announcements
{
    explicit Announcements(const ObservableMapImplBase* map)
        : keys([this](const MapChange& change) {
            for (const K& key : change.keys<K>())
                log << (QVariant::fromValue(key).toString());
        })
        , plain([this] { log << u"*"_s; })
    {
        keys.startListening(map);
        map->addObserver(&plain);
    }

    QStringList take() { return std::exchange(log, {}); }

    QStringList log;
    ObservableMapImplFunctorAdapter keys;
    ObserverFunctorAdapter plain;
};

} // namespace

class TstObservableMap : public QObject
{
    Q_OBJECT

private Q_SLOTS:

    void answersDefaultsForMissingKeys();
    void announcesKeysFirstThenThePlainChange();
    void survivesItsLastHandleWhileItAnnounces();

    void dependsOnBothMaps();
    void announcesCopiesOfKeys();

    void announcesAValueUnderItsHandle();
    void endsWhileAValueAnnounces();
    void agreesWithAModelThroughAChainOfMaps();
};

void TstObservableMap::answersDefaultsForMissingKeys()
{
    const ObservableMap<QString, int> plain(new ObservableMapImpl<QString, int>);
    QCOMPARE(plain.get(u"x"_s), 0);
    QVERIFY(plain.impl()->equals(3, 3));
    QVERIFY(!plain.impl()->equals(3, 4));
    QCOMPARE((ObservableMap<QString, int>()).get(u"x"_s), 0);
    for (const auto& values :
         {ObservableMap<QString, Value>(new ObservableMapImpl<QString, Value>), ObservableMap<QString, Value>()}) {
        const Value missing = values.get(u"x"_s);
        QVERIFY(missing.impl());
        QCOMPARE(missing.getValue(), 0);
    }
}

void TstObservableMap::announcesKeysFirstThenThePlainChange()
{
    const QExplicitlySharedDataPointer<StoredMap<QString, int>> map(new StoredMap<QString, int>);
    QVERIFY(map->metaObject()->indexOfSignal("mapChanged(MapChange)") >= 0);
    Announcements<QString> heard(map.data());
    map->fireMapChanged(MapChange::create(QStringList{u"b"_s, u"c"_s}));
    QCOMPARE(heard.take(), (QStringList{u"b"_s, u"c"_s, u"*"_s}));
    QVERIFY2(MapChange::createSingle(1).keys<QString>().isEmpty(), "keys are known by their type");
    // Without keys there is nothing to tell those who listen for keys.
    ObservableMapImplFunctorAdapter empty({});
    empty.startListening(nullptr);
    empty.startListening(map.data());
    map->fireMapChanged(MapChange());
    QCOMPARE(heard.take(), QStringList{u"*"_s});
    QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, map->set(u"a"_s, 1));
    empty.stopListening(map.data());
    empty.stopListening(nullptr);
    heard.take();
    map->set(u"a"_s, 2);
    QCOMPARE(heard.take(), (QStringList{u"a"_s, u"*"_s}));
}

void TstObservableMap::survivesItsLastHandleWhileItAnnounces()
{
    QExplicitlySharedDataPointer<StoredMap<int, int>> map(new StoredMap<int, int>);
    const QPointer<QObject> alive(map.data());
    bool heard = false;
    ObservableMapImplFunctorAdapter drops([&](const MapChange&) { map.reset(); });
    ObserverFunctorAdapter plain([&] { heard = alive; });
    drops.startListening(map.data());
    map->addObserver(&plain);
    map->set(1, 1);
    QVERIFY(heard);
    QVERIFY(!alive);
}

void TstObservableMap::dependsOnBothMaps()
{
    using First = StoredMap<QString, int>;
    const ObservableMap<QString, int, First> first(new First);
    const ObservableMap<int, QString> second(new StoredMap<int, QString>);
    const auto map = CompositeMap<QString, int, QString>::create(first, second);
    const auto read = ObservableTracker::runAndMonitor([&] { map.get(u"a"_s); });
    QVERIFY(read->size() == 3 && read->contains(map.impl()));
    QVERIFY(read->contains(first.impl()) && read->contains(second.impl()));
    Announcements<QString> heard(map.impl());
    first.impl()->fireMapChanged(MapChange::create(QStringList{u"a"_s, u"b"_s}));
    QCOMPARE(heard.take(), (QStringList{u"a"_s, u"b"_s, u"*"_s}));
    // Without keys from either side.
    first.impl()->fireMapChanged(MapChange());
    second.impl()->fireMapChanged(MapChange::createSingle(1));
    QCOMPARE(heard.take(), (QStringList{u"*"_s, u"*"_s}));
}

// The key belongs to whoever made the change, and may be gone before the last has heard of it.
void TstObservableMap::announcesCopiesOfKeys()
{
    const QExplicitlySharedDataPointer<StoredMap<QString, int>> map(new StoredMap<QString, int>);
    const auto composite = CompositeMap<QString, int, int>::create(ObservableMap<QString, int>(map.data()),
                                                                   ObservableMap<int, int>(new StoredMap<int, int>));
    auto key = std::make_unique<QString>(u"a longer key"_s);
    ObserverFunctorAdapter frees([&] { key.reset(); });
    map->addObserver(&frees);
    Announcements<QString> heard(composite.impl());
    map->fireKeyChanged(*key);
    QVERIFY(!key);
    QCOMPARE(heard.take(), (QStringList{u"a longer key"_s, u"*"_s}));
    // Every change made together is announced under its key.
    Round::together([&] {
        map->set(u"b"_s, 1);
        map->set(u"c"_s, 1);
        QCOMPARE(heard.take(), QStringList());
    });
    QCOMPARE(heard.take(), (QStringList{u"b"_s, u"c"_s, u"*"_s}));
}

void TstObservableMap::announcesAValueUnderItsHandle()
{
    const auto map = MapObservableToValue<int>::create();
    const QExplicitlySharedDataPointer<Writable> a(new Writable(1));
    const QExplicitlySharedDataPointer<Writable> b(new Writable(1));
    const QExplicitlySharedDataPointer<Writable> never(new Writable(1));
    map.get(Value(a.data()));
    map.get(Value(b.data()));
    QCOMPARE(map.get(Value(b.data())), 1);
    QCOMPARE(map.get(Value()), 0);
    QCOMPARE(static_cast<const MapObservableToValue<int>&>(*map.impl()).observedCount(), 2);
    QList<Value> announced;
    int current = 0;
    ObservableMapImplFunctorAdapter adapter([&](const MapChange& change) {
        announced += change.keys<Value>();
        current = map.get(announced.last());
    });
    adapter.startListening(map.impl());
    b->setValue(5);
    never->setValue(5);
    QCOMPARE(announced, QList<Value>{Value(b.data())});
    QCOMPARE(current, 5);
}

void TstObservableMap::endsWhileAValueAnnounces()
{
    auto map = MapObservableToValue<int>::create();
    const QPointer<QObject> alive(map.impl());
    QExplicitlySharedDataPointer<Writable> value(new Writable(1));
    map.get(Value(value.data()));
    int changes = 0;
    ObservableMapImplFunctorAdapter adapter([&](const MapChange&) {
        ++changes;
        map = {};
    });
    adapter.startListening(map.impl());
    value->setValue(2);
    QVERIFY(!alive);
    value->setValue(3);
    QCOMPARE(changes, 1);
    QCOMPARE(value->ref.loadRelaxed(), 1);
}

// Keys to values to contents, as records are read: after any change, what the chain announced and what it answers
// must be what two plain tables say.
void TstObservableMap::agreesWithAModelThroughAChainOfMaps()
{
    QRandomGenerator random = seededRandom();
    constexpr int Keys = 8;
    const ObservableMap<int, Value, StoredMap<int, Value>> records(new StoredMap<int, Value>);
    const auto contents = MapObservableToValue<int>::create();
    const auto map = CompositeMap<int, Value, int>::create(records, contents);
    QList<QExplicitlySharedDataPointer<Writable>> values;
    for (int i = 0; i < 5; ++i)
        values.append(QExplicitlySharedDataPointer<Writable>(new Writable(i)));
    QList<int> model(Keys, -1);
    QSet<int> asked;
    Announcements<int> heard(map.impl());
    for (int step = 0; step < 5000; ++step) {
        const int key = random.bounded(Keys);
        const int value = random.bounded(static_cast<int>(values.size()));
        if (random.bounded(2)) {
            model[key] = value;
            records.impl()->set(key, Value(values[value].data()));
            QCOMPARE(heard.take(), (QStringList{QString::number(key), u"*"_s}));
        } else {
            const bool differs = values[value]->setValue(random.bounded(3));
            QCOMPARE(heard.take(), differs && asked.contains(value) ? QStringList{u"*"_s} : QStringList());
        }
        const int read = random.bounded(Keys);
        if (model[read] >= 0)
            asked.insert(model[read]);
        QCOMPARE(map.get(read), model[read] >= 0 ? values[model[read]]->getValue() : 0);
    }
}

ZEL_TEST(TstObservableMap)
#include "tst_observablemap.moc"
