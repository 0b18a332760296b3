// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/ObservableMapImplFunctorAdapter.h>

#include <optional>

namespace {

using Value = ObservableValue<int>;

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
        for (const auto& values : {ObservableMap<int, Value>(new ObservableMapImpl<int, Value>), {}})
            QVERIFY(values.get(1).impl() && values.get(1).getValue() == 0);
    }

    void announcesKeysFirstThenThePlainChange()
    {
        const PlainMapPointer<QString, int> map;
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
        const NumberPointer number(new Number(1));
        const PlainMapPointer<int, Value> first({{1, Value(number.data())}});
        const auto contents = MapObservableToValue<int>::create();
        const auto map = CompositeMap<int, Value, int>::create(first, contents);
        Announcements<int> heard(map.impl());
        number->setValue(2);
        QCOMPARE(heard.take(), QStringList()); // nobody has asked for it
        const auto read = ObservableTracker::runAndMonitor([&] { QCOMPARE(map.get(1), 2); });
        for (const Observable* const part :
             std::initializer_list<const Observable*>{map.impl(), first.data(), contents.impl(), number.data()})
            QVERIFY(read->contains(part));
        QVERIFY2(map.get(2) == 0 && read->size() == 4, "nothing has no value to be observed");
        first->set({{2, Value(number.data())}});
        QCOMPARE(heard.take(), (QStringList{u"2"_s, u"*"_s}));
        first->fireMapChanged(MapChange()); // without keys, from either side
        number->setValue(3);
        QCOMPARE(heard.take(), (QStringList{u"*"_s, u"*"_s}));
        QCOMPARE(map.get(2), 3);
    }

    // The key belongs to whoever made the change, and may be gone before the last has heard of it.
    void announcesCopiesOfKeys()
    {
        const PlainMapPointer<QString, int> map;
        const auto composite = CompositeMap<QString, int, int>::create(map, PlainMapPointer<int, int>());
        auto key = std::make_unique<QString>(u"a longer key"_s);
        std::optional<Announcements<QString>> late; // comes before the composite map has announced it
        ObserverFunctorAdapter frees([&] {
            key.reset();
            late.emplace(composite.impl());
        });
        map->addObserver(&frees);
        Announcements<QString> heard(composite.impl());
        map->fireKeyChanged(*key);
        QVERIFY(!key);
        QCOMPARE(heard.take(), (QStringList{u"a longer key"_s, u"*"_s}));
        QCOMPARE(late->take(), (QStringList{u"a longer key"_s, u"*"_s}));
        // Every change made together is announced under its key.
        Round::together([&] {
            map->set({{u"b"_s, 1}});
            map->set({{u"c"_s, 1}});
            QCOMPARE(heard.take(), QStringList());
        });
        QCOMPARE(heard.take(), (QStringList{u"b"_s, u"c"_s, u"*"_s}));
    }
};

ZEL_TEST(TstObservableMap)
#include "tst_observablemap.moc"
