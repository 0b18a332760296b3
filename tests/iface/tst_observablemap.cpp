// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/ObservableMapImplFunctorAdapter.h>

#include <QtCore/QSet>
#include <QtTest/QSignalSpy>

using namespace iface;

namespace {

using Value = ObservableValue<int>;
template <class K, class V>
using MapPointer = QExplicitlySharedDataPointer<PlainMap<K, V>>;

// What a map announces, as text: "a,b" for keys, "*" for the plain change.
template <class K>
struct Announcements
{
    explicit Announcements(const ObservableMapImplBase* map)
        : keys([this](const MapChange& change) {
            for (const K& key : change.keys<K>())
                log << QVariant::fromValue(key).toString();
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
    void answersDefaultsForMissingKeys()
    {
        for (const auto& values :
             {ObservableMap<QString, Value>(new ObservableMapImpl<QString, Value>), ObservableMap<QString, Value>()}) {
            const Value missing = values.get(u"x"_s);
            QVERIFY(missing.impl());
            QCOMPARE(missing.getValue(), 0);
        }
    }

    void announcesKeysFirstThenThePlainChange()
    {
        const MapPointer<QString, int> map(new PlainMap<QString, int>);
        QVERIFY(map->metaObject()->indexOfSignal("mapChanged(MapChange)") >= 0);
        QSignalSpy alone(map.data(), &ObservableMapImplBase::mapChanged); // connects by the signal's number
        map->set({{u"a"_s, 1}});
        QCOMPARE(alone.size(), 1);
        Announcements<QString> heard(map.data());
        map->fireMapChanged(MapChange::create(QStringList{u"b"_s, u"c"_s}));
        QCOMPARE(heard.take(), (QStringList{u"b"_s, u"c"_s, u"*"_s}));
        QVERIFY2(MapChange::createSingle(1).keys<QString>().isEmpty(), "keys are known by their type");
        // Without keys there is nothing to tell those who listen for keys.
        ObservableMapImplFunctorAdapter empty({});
        empty.startListening(map.data());
        map->fireMapChanged(MapChange());
        QCOMPARE(heard.take(), QStringList{u"*"_s});
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, map->fireKeyChanged(u"a"_s));
        empty.stopListening(map.data());
        map->fireKeyChanged(u"a"_s);
        QCOMPARE(heard.take().size(), 4);
    }

    void dependsOnBothMaps()
    {
        using First = PlainMap<QString, int>;
        const ObservableMap<QString, int, First> first(new First);
        const ObservableMap<int, QString> second(new PlainMap<int, QString>);
        const auto map = CompositeMap<QString, int, QString>::create(first, second);
        const auto read = ObservableTracker::runAndMonitor([&] { map.get(u"a"_s); });
        QVERIFY(read->size() == 3 && read->contains(map.impl()));
        QVERIFY(read->contains(first.impl()) && read->contains(second.impl()));
        Announcements<QString> heard(map.impl());
        first.impl()->fireMapChanged(MapChange()); // without keys, from either side
        second.impl()->fireMapChanged(MapChange::createSingle(1));
        QCOMPARE(heard.take(), (QStringList{u"*"_s, u"*"_s}));
    }

    // The key belongs to whoever made the change, and may be gone before the last has heard of it.
    void announcesCopiesOfKeys()
    {
        const MapPointer<QString, int> map(new PlainMap<QString, int>);
        const auto composite = CompositeMap<QString, int, int>::create(ObservableMap<QString, int>(map.data()),
                                                                       ObservableMap<int, int>(new PlainMap<int, int>));
        auto key = std::make_unique<QString>(u"a longer key"_s);
        ObserverFunctorAdapter frees([&] { key.reset(); });
        map->addObserver(&frees);
        Announcements<QString> heard(composite.impl());
        map->fireKeyChanged(*key);
        QVERIFY(!key);
        QCOMPARE(heard.take(), (QStringList{u"a longer key"_s, u"*"_s}));
        // Every change made together is announced under its key.
        Round::together([&] {
            map->set({{u"b"_s, 1}});
            map->set({{u"c"_s, 1}});
            QCOMPARE(heard.take(), QStringList());
        });
        QCOMPARE(heard.take(), (QStringList{u"b"_s, u"c"_s, u"*"_s}));
    }

    // Keys to values to contents, as records are read: after any change, what the maps announced and what they answer
    // must be what two plain tables say. A value that nobody asked for is not observed.
    void agreesWithAModelThroughAChainOfMaps()
    {
        QRandomGenerator random = seededRandom();
        constexpr int Keys = 8;
        const MapPointer<int, Value> records(new PlainMap<int, Value>);
        const auto contents = MapObservableToValue<int>::create();
        const auto map = CompositeMap<int, Value, int>::create(ObservableMap<int, Value>(records.data()), contents);
        QList<NumberPointer> values;
        for (int i = 0; i < 5; ++i)
            values.append(NumberPointer(new Number(i)));
        QList<int> model(Keys, -1);
        QSet<int> asked;
        QList<std::pair<Value, int>> heardOfContents;
        ObservableMapImplFunctorAdapter adapter([&](const MapChange& change) {
            for (const Value& value : change.keys<Value>())
                heardOfContents.append({value, contents.get(value)});
        });
        adapter.startListening(contents.impl());
        Announcements<int> heard(map.impl());
        for (int step = 0; step < 5000; ++step) {
            const int key = random.bounded(Keys);
            const int value = random.bounded(5);
            QStringList expected;
            QList<std::pair<Value, int>> expectedOfContents;
            if (random.bounded(2)) {
                model[key] = value;
                records->set({{key, Value(values[value].data())}});
                expected = QStringList{QString::number(key), u"*"_s};
            } else if (values[value]->setValue(random.bounded(3)) && asked.contains(value)) {
                expected = QStringList{u"*"_s};
                expectedOfContents = {{Value(values[value].data()), values[value]->getValue()}};
            }
            QCOMPARE(heard.take(), expected);
            QVERIFY(std::exchange(heardOfContents, {}) == expectedOfContents);
            const int readKey = random.bounded(Keys);
            if (model[readKey] >= 0)
                asked.insert(model[readKey]);
            QCOMPARE(map.get(readKey), model[readKey] >= 0 ? values[model[readKey]]->getValue() : 0);
            QCOMPARE(static_cast<const MapObservableToValue<int>&>(*contents.impl()).observedCount(),
                     int(asked.size()));
        }
    }
};

ZEL_TEST(TstObservableMap)
#include "tst_observablemap.moc"
