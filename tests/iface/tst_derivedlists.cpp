// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <iface/Logging.h>

#include <QtCore/QPointer>
#include <QtCore/QRegularExpression>

#include <stdexcept>

using namespace iface;
using Items = QList<int>;
using Mirror = ListMirror<int>;
template <class K, class V>
using Transformed = LazyTransformedObservableListImpl<K, V>;

namespace {

/// Items are numbers of flags; an item passes while its flag is set, unless it is below a limit that all share.
struct Flags
{
    explicit Flags(int count)
    {
        for (int i = 0; i < count; ++i)
            flags.append(NumberPointer(new Number(i % 2 == 0)));
    }

    bool passes(int item) const { return item >= limit->getValue() && flags.at(item)->getValue(); }
    void set(int item, bool passes) { flags.at(item)->setValue(passes); }

    /// Where each item stands in a filtered list, -1 for those that do not pass.
    Items positions(const Items& items) const
    {
        int next = 0;
        Items positions;
        for (const int item : items)
            positions.append(passes(item) ? next++ : -1);
        return positions;
    }

    QList<NumberPointer> flags;
    NumberPointer limit{new Number(0)};
};

/// What a filtered list is to announce, from the positions of all input items before and after a change of the input.
QStringList announcedByAFilter(const QString& words, const Items& before, const Items& after)
{
    const Announced change(words);
    if (change.isWholesale()) {
        Items indexes;
        for (int i = 0; i < change.indexes.size(); ++i) {
            if (before.at(i) >= 0)
                indexes.append(change.indexes.at(i) >= 0 ? after.at(change.indexes.at(i)) : -1);
        }
        return {change.what == "moved"_L1 ? Mirror::inWords(ChangeType::IndexesChanged, indexes) : words};
    }
    const int index = change.indexes.first();
    const int from = change.what == "added"_L1 ? -1 : before.at(index);
    const int to = change.what == "removed"_L1 ? -1 : after.at(index);
    if (from < 0 && to < 0)
        return {};
    return {from < 0 ? u"added %1"_s.arg(to) : to < 0 ? u"removed %1"_s.arg(from) : u"updated %1"_s.arg(from)};
}

/// The same for a list seen through a map, from its items. A change that leaves the length has them compared.
QStringList announcedThroughAMap(const QString& words, const Items& before, const Items& after)
{
    const Announced change(words);
    if (before.size() != after.size() || (change.what == "moved"_L1 && !change.indexes.isEmpty()))
        return {words};
    QStringList updates;
    for (int i = 0; i < before.size(); ++i) {
        if (before.at(i) != after.at(i))
            updates.append(u"updated %1"_s.arg(i));
    }
    return updates.size() > 1 ? QStringList{u"data changed"_s} : updates;
}

/// A list of keys seen through a map that a test edits, and what it announces: read by nobody, unlike with a mirror.
struct Desk
{
    explicit Desk(const Items& firstKeys, int cacheLimit = Transformed<int, QString>::KeepsEverything)
        : keys(new EditableList<int>(firstKeys))
    {
        for (int key = 0; key < 10; ++key)
            map->contents.insert(key, QString::number(key));
        list = ObservableList<QString>(new Transformed<int, QString>(
            ObservableList<int>(keys.data()), ObservableMap<int, QString>(map.data()), cacheLimit));
        QObject::connect(list.impl(), &ObservableListImpl::itemUpdated, &m_context,
                         [this](const QVariantList& path) { updated.append(path.first().toInt()); });
    }

    QStringList expected() const
    {
        QStringList values;
        for (const int key : keys->items())
            values.append(map->contents.value(key));
        return values;
    }
    Items takeUpdated() { return std::exchange(updated, {}); }

    EditableListPointer<int> keys;
    QExplicitlySharedDataPointer<PlainMap<int, QString>> map{new PlainMap<int, QString>};
    ObservableList<QString> list;
    Items updated;

private:
    QObject m_context;
};

/// Ids, the records behind them, those that are not empty, and a copy of that.
struct Chain
{
    using Cached = CachedObservableList<QString>;

    explicit Chain(int count)
    {
        for (int i = 0; i < count; ++i)
            ids->append(i);
        const auto transformed = TransformedObservableList::create<int, QString>(
            ObservableList<int>(ids.data()), contentsOf(records), Transformed<int, QString>::KeepsEverything);
        const auto filtered = FilteredObservableList<QString>::create(transformed, [this](const QString& record) {
            ++judgements;
            return !record.isEmpty();
        });
        cached = QExplicitlySharedDataPointer<Cached>(new Cached(filtered));
        view = ObservableList<QString>(cached.data());
    }

    QStringList expected() const
    {
        QStringList filled;
        for (const int id : ids->items()) {
            if (!records->peek(id).isEmpty())
                filled.append(records->peek(id));
        }
        return filled;
    }

    EditableListPointer<int> ids{new EditableList<int>};
    QExplicitlySharedDataPointer<RecordMap<int, QString>> records{new RecordMap<int, QString>};
    QExplicitlySharedDataPointer<Cached> cached;
    ObservableList<QString> view;
    int judgements = 0;
};

} // namespace

/// Cached, filtered and transformed lists each on their own, and as the chain in which records are read.
class TstDerivedLists : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announceWhatListsMadeAnewWould()
    {
        QRandomGenerator random = seededRandom();
        for (const int count : {0, 1, 3, 40, 1100}) {
            const int itemCount = qMax(10, count / 2);
            const std::function<int()> makeItem = [&] { return random.bounded(itemCount); };
            Items items(count);
            std::generate(items.begin(), items.end(), makeItem);
            const EditableListPointer<int> edited(new EditableList<int>(items));
            const ObservableList<int> input(edited.data());
            Flags flags(itemCount);
            const QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
            const auto filtered =
                FilteredObservableList<int>::create(input, [&](int item) { return flags.passes(item); });
            const auto transformed = TransformedObservableList::create<int, int>(
                input, ObservableMap<int, int>(map.data()), Transformed<int, int>::KeepsEverything);
            CachedObservableList<int> cached(input);
            QStringList told;
            tellOfEverything(cached, told);
            Mirror inputMirror(input);
            Mirror filteredMirror(filtered);
            Mirror transformedMirror(transformed);
            QSignalSpy plain(filtered.impl(), &ObservableListImpl::observableChanged);

            for (int step = 0; step < 400 || edited->size() > 0; ++step) { // in the end it is emptied
                const Items before = edited->items();
                const Items positionsBefore = flags.positions(before);
                const Items valuesBefore = throughMap(before, *map);
                const int kind = random.bounded(12);
                const int size = edited->size();
                if (step >= 400) // not evenly, which would leave the parts of which a long list is made alike
                    edited->remove(size / 3 + random.bounded((size + 2) / 3));
                else if (kind < 5)
                    editAtRandom(*edited, random, makeItem, 100 + 2 * count);
                else if (kind == 5)
                    flags.limit->setValue(random.bounded(3) ? 0 : random.bounded(itemCount));
                else if (kind < 10)
                    flags.set(makeItem(), random.bounded(2));
                else
                    map->set({{makeItem(), random.bounded(3)}, {makeItem(), random.bounded(3)}});
                const Items after = edited->items();
                const QStringList changes = inputMirror.take();
                Items stay(before.size());
                std::iota(stay.begin(), stay.end(), 0);

                QStringList expected;
                const Items positions = flags.positions(after);
                if (!changes.isEmpty() || positionsBefore != positions)
                    expected = announcedByAFilter(changes.value(0, Mirror::inWords(ChangeType::IndexesChanged, stay)),
                                                  positionsBefore, positions);
                QCOMPARE(filteredMirror.take(), expected);
                QCOMPARE(plain.size(), expected.size());
                plain.clear();
                QCOMPARE(transformedMirror.take(),
                         announcedThroughAMap(changes.value(0), valuesBefore, throughMap(after, *map)));
                QCOMPARE(std::exchange(told, {}),
                         changes.isEmpty() ? changes : withItems(changes.first(), before, after));
                QCOMPARE(filtered.size(), int(positions.size() - positions.count(-1)));
                for (const Mirror* mirror : {&inputMirror, &filteredMirror, &transformedMirror})
                    QCOMPARE(mirror->complaint(), QString());
            }
        }
    }

    void callTheFilterOnlyForWhatChanged()
    {
        Items items(1000);
        std::iota(items.begin(), items.end(), 0);
        const EditableListPointer<int> input(new EditableList<int>(items));
        Flags flags(1000);
        Items judged;
        const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int item) {
            judged.append(item);
            return flags.passes(item);
        });
        QCOMPARE(judged.size(), 1000);
        const auto judgedBy = [&](const std::function<void()>& change) {
            judged.clear();
            change();
            return judged;
        };
        QCOMPARE(judgedBy([&] { flags.set(500, false); }), Items{500});
        QCOMPARE(judgedBy([&] { input->insert(10, 7); }), Items{7});
        QCOMPARE(judgedBy([&] { input->remove(3); }), Items());
        QCOMPARE(judgedBy([&] { input->move(0, 900); }), Items());
        QCOMPARE(judgedBy([&] { input->update(400, 8); }), Items{8});
        QCOMPARE(judgedBy([&] { flags.set(8, false); }), (Items{8, 8})); // it stands there twice
        // Only what the last judgement read counts: below the limit nobody looks at a flag.
        QCOMPARE(judgedBy([&] { flags.limit->setValue(500); }).size(), 1000);
        QCOMPARE(judgedBy([&] { flags.set(20, false); }), Items());
    }

    void giveUpOnAFilterThatNeverSettles()
    {
        const NumberPointer counter(new Number(0));
        bool isRestless = true;
        const EditableListPointer<int> input(new EditableList<int>);
        const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int) {
            if (isRestless)
                counter->setValue(counter->getValue() + 1);
            return true;
        });
        const Mirror mirror(list);
        // One line, where the library's log can be held back.
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"^Intake\\.cpp .* keeps changing"_s));
        input->append(1);
        setLogLevel(LogLevel::Type(100));
        input->append(2);
        setLogLevel(LogLevel::Info);
        isRestless = false;
        input->append(3);
        QCOMPARE(mirror.items(), (Items{1, 2, 3}));
        QCOMPARE(mirror.complaint(), QString());
    }

    void computeAnItemWhenItIsReadAndOnce()
    {
        QCOMPARE((Transformed<int, int>::DefaultCacheLimit), 150);
        Desk desk({3, 4, 5}, 2);
        QCOMPARE(desk.list.size(), 3);
        QCOMPARE(desk.map->gets, 0);
        QCOMPARE(desk.list[1], u"4"_s);
        desk.keys->remove(0);
        desk.keys->insert(0, 9);
        desk.keys->insert(0, 9);
        QCOMPARE(desk.list[2], u"4"_s);
        QCOMPARE(desk.list[3], u"5"_s);
        QCOMPARE(desk.map->gets, 2);
        // With a third one the first two are forgotten, and are not announced.
        QCOMPARE(desk.list[0], u"9"_s);
        desk.map->set({{4, u"four"_s}});
        QCOMPARE(desk.takeUpdated(), Items());
        QCOMPARE(desk.list[2], u"four"_s);
        desk.map->set({{4, u"quattro"_s}});
        QCOMPARE(desk.takeUpdated(), Items{2});
        QCOMPARE(desk.map->gets, 5);
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression(u"^LazyTransformedObservableList\\.h \\[ 101 \\]:  "
                                                "\"?Index out of bounds accessing LazyTransformedObservableList!"_s));
        QVERIFY(!desk.list.impl()->data({4}).isValid());
    }

    void hearOnlyWhatTheMapAnnouncesUnderKeys()
    {
        Desk desk({3, 4});
        desk.list.toList();
        desk.map->contents = {{3, u"three"_s}, {4, u"four"_s}};
        desk.map->fireMapChanged(MapChange());
        QCOMPARE(desk.takeUpdated(), Items());
        QCOMPARE(desk.list[0], u"3"_s);
        desk.map->fireMapChanged(MapChange::create(Items{3}));
        QCOMPARE(desk.takeUpdated(), Items{0});
        desk.map->fireMapChanged(MapChange::create(Items())); // and no key says what
        QCOMPARE(desk.takeUpdated(), Items{1});
    }

    // Asked for 1 the map changes that very key, asked for 9 it adds a key to the list.
    void takeInWhatTheMapDoesWhileItIsAsked()
    {
        const Desk desk({1, 2, 3});
        const ListMirror<QString> mirror(desk.list);
        bool isDone = false;
        desk.map->whenAsked = [&](int key) {
            if (key == 1 && !std::exchange(isDone, true))
                desk.map->set({{1, u"again"_s}});
            if (key == 9 && !std::exchange(isDone, true))
                desk.keys->insert(0, 4);
        };
        desk.map->contents = {{1, u"one"_s}, {2, u"two"_s}, {3, u"three"_s}};
        const auto announceThree = [&] { desk.map->fireMapChanged(MapChange::create(Items{2, 1, 3})); };
        const auto appendOne = [&] { desk.keys->append(1); }; // read for the first time
        const auto updateOne = [&] { desk.keys->update(1, 9); };
        const std::function<void()> changes[] = {announceThree, appendOne, updateOne};
        for (const auto& change : changes) {
            isDone = false;
            change();
            QVERIFY(isDone);
            QCOMPARE(desk.list.toList(), desk.expected());
            QCOMPARE(mirror.items(), desk.expected());
            QCOMPARE(mirror.complaint(), QString());
        }
        // The item that is being read goes away, and another slides into its place, if there is one.
        const Desk other({8, 5});
        other.map->whenAsked = [&](int key) {
            if (key == 8)
                other.keys->remove(int(other.keys->items().indexOf(8)));
        };
        QCOMPARE(other.list[0], u"5"_s);
        other.keys->append(8);
        QCOMPARE(other.list[1], QString());
        // A map that reads the list for which it is asked comes to an end.
        other.map->whenAsked = [&](int) { other.list.toList(); };
        other.keys->append(3);
        QCOMPARE(other.list.toList(), other.expected());
    }

    void goThoughTheirFilterReadsThem()
    {
        const Desk desk({1});
        ObservableList<QString> list;
        list = FilteredObservableList<QString>::create(desk.list, [&](const QString&) { return list.size() >= 0; });
        desk.keys->append(2);
        QCOMPARE(list.toList(), desk.expected());
        const QPointer<ObservableListImpl> alive = list.impl();
        list = {};
        QVERIFY(!alive);
    }

    void stayAsTheyWereWhenTheMapThrows()
    {
        Desk desk({1, 2});
        int bad = 2;
        desk.map->whenAsked = [&](int key) {
            if (key == bad)
                throw std::runtime_error("no");
        };
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, desk.list.toList());
        bad = 1;
        QCOMPARE(desk.list.toList(), desk.expected());
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, desk.map->set({{1, u"one"_s}}));
        QCOMPARE(desk.list[0], u"1"_s);
        bad = 0;
        desk.map->set({{1, u"uno"_s}});
        QCOMPARE(desk.takeUpdated(), Items{0});
        QCOMPARE(desk.list.toList(), desk.expected());
    }

    void replaceTheirInputAsAReset()
    {
        const auto listOf = [](const Items& items) { return ObservableList<int>(new EditableList<int>(items)); };
        const EditableListPointer<int> first(new EditableList<int>({1, 2}));
        CachedObservableList<int> cached((ObservableList<int>(first.data())));
        QStringList told;
        tellOfEverything(cached, told);
        cached.setInput(listOf({9}));
        first->append(4);
        cached.setInput(ObservableList<int>());
        QCOMPARE(told, withItems(u"reset"_s, {1, 2}, {9}) + withItems(u"reset"_s, {9}, {}));
        // Another input is set while this one is read.
        const QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
        map->whenAsked = [&](int) { cached.setInput(listOf({7})); };
        cached.setInput(TransformedObservableList::create<int, int>(listOf({1}), ObservableMap<int, int>(map.data())));
        QCOMPARE(cached.childCount({}), 1);
        QCOMPARE(cached.itemAt(0), QVariant(7));
        cached.setChangeFunction({});
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, cached.setInput(listOf({8})));
        QCOMPARE(cached.itemAt(0), QVariant(8));
    }

    // Value and key are one change; the value is not announced while any list still holds the old item.
    void announceEachChangeOfARecordOnce()
    {
        for (const int count : {0, 1, 149, 150, 151, 1000}) {
            Chain chain(count);
            ListMirror<QString> mirror(chain.view);
            const auto say = [](const char* what, int index) {
                return QStringList{QString::fromLatin1(what).arg(index)};
            };
            for (int id = 0; id < count; ++id) {
                chain.records->set(id, u"first %1"_s.arg(id));
                QCOMPARE(mirror.take(), say("added %1", id));
            }
            for (int id = 0; id < count; ++id) {
                chain.records->set(id, u"second %1"_s.arg(id));
                QCOMPARE(mirror.take(), say("updated %1", id));
            }
            QCOMPARE(chain.judgements, 3 * count); // each once empty, and at each change of its own
            for (int id = count - 1; id >= 0; --id) {
                chain.records->set(id, id % 2 ? QString() : u"second %1"_s.arg(id));
                QCOMPARE(mirror.take(), id % 2 ? say("removed %1", id) : QStringList());
            }
            chain.ids->append(count);
            QCOMPARE(mirror.take(), QStringList());
            chain.records->set(count, u"late"_s);
            QCOMPARE(mirror.take(), say("added %1", (count + 1) / 2));
            chain.ids->remove(count);
            QCOMPARE(mirror.take(), say("removed %1", (count + 1) / 2));
            QCOMPARE(mirror.items(), chain.expected());
            QCOMPARE(mirror.complaint(), QString());
        }
    }

    // As a slot of the application does that spins an event loop in which more comes: each change is told, once, in
    // order, before it is announced; a view hears of them as one.
    void tellOfEachChangeThatIsMadeMeanwhile()
    {
        for (const int count : {1, 149, 150, 151, 1000}) {
            Chain chain(count + 1);
            for (int id = 0; id <= count; ++id)
                chain.records->set(id, QString::number(id));
            ListMirror<QString> mirror(chain.view);
            QStringList told;
            chain.cached->setUpdateFunction([&](int index, const QString& before, const QString& after) {
                told.append(u"%1 %2 %3"_s.arg(index).arg(before, after));
                QCOMPARE(chain.view.toList(), chain.expected());
                if (after == "first"_L1) {
                    QCOMPARE(mirror.take(), QStringList());
                    chain.records->set(0, u"second"_s);
                    chain.ids->remove(count);
                    chain.records->set(0, u"third"_s);
                }
            });
            chain.cached->setRemoveFunction(
                [&](int index, const QString& item) { told.append(u"-%1 %2"_s.arg(index).arg(item)); });
            chain.records->set(0, u"first"_s);
            QCOMPARE(told,
                     (QStringList{u"0 0 first"_s, u"0 first second"_s, u"-%1 %1"_s.arg(count), u"0 second third"_s}));
            QCOMPARE(mirror.items(), chain.expected());
            QCOMPARE(mirror.complaint(), QString());
        }
    }

private:
    /// Key and value of each item, as one number.
    static Items throughMap(Items items, const PlainMap<int, int>& map)
    {
        for (int& item : items)
            item = 10 * item + map.contents.value(item);
        return items;
    }

    /// What the functions of a cached list tell of a change, with the items concerned before and after.
    static QStringList withItems(const QString& words, const Items& before, const Items& after)
    {
        const Announced change(words);
        const int index = change.indexes.value(0);
        const bool isWholesale = change.isWholesale();
        const Items old = isWholesale ? before : change.what == "added"_L1 ? Items() : before.mid(index, 1);
        const Items now = isWholesale ? after : change.what == "removed"_L1 ? Items() : after.mid(index, 1);
        return {words + u" of "_s + numbers(old) + u" to "_s + numbers(now)};
    }

    static void tellOfEverything(CachedObservableList<int>& list, QStringList& told)
    {
        const auto tell = [&told](const QString& words, const Items& old, const Items& now) {
            told.append(words + u" of "_s + numbers(old) + u" to "_s + numbers(now));
        };
        list.setAddFunction([=](int index, int item) { tell(u"added %1"_s.arg(index), {}, {item}); });
        list.setRemoveFunction([=](int index, int item) { tell(u"removed %1"_s.arg(index), {item}, {}); });
        list.setUpdateFunction([=](int index, int old, int now) { tell(u"updated %1"_s.arg(index), {old}, {now}); });
        list.setChangeFunction([=](ChangeType::Type type, const QSharedPointer<ObservableListImpl::IndexMapper>& mapper,
                                   const Items& old, const Items& now) {
            tell(Mirror::inWords(type, mapper ? Mirror::indexesOf(*mapper, int(old.size())) : Items()), old, now);
        });
    }

    static QString numbers(const Items& items) { return Mirror::inWords(ChangeType::IndexesChanged, items).mid(6); }
};

ZEL_TEST(TstDerivedLists)
#include "tst_derivedlists.moc"
