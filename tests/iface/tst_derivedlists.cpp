// SPDX-License-Identifier: Apache-2.0
#include "Fixtures.h"

#include <common/FailingAllocations.h>

#include <stdexcept>

using Items = QList<int>;
using Mirror = ListMirror<int>;
constexpr int KeepsEverything = LazyTransformedObservableListImpl<int, int>::KeepsEverything;

namespace {

/// The indexes in what a list announced, in the words of a ListMirror.
Items indexesIn(const QString& words)
{
    Items indexes;
    for (const QString& word : words.split(u' ')) {
        if (!word.isEmpty() && !word.front().isLetter())
            indexes.append(word.toInt());
    }
    return indexes;
}

/// What a filtered list is to announce, from the positions of all input items before and after a change of the input.
QStringList announcedByAFilter(const QString& words, const Items& before, const Items& after)
{
    const Items indexes = indexesIn(words);
    if (words.startsWith("moved"_L1)) {
        Items moved;
        for (int i = 0; i < indexes.size(); ++i) {
            if (before.at(i) >= 0)
                moved.append(indexes.at(i) >= 0 ? after.at(indexes.at(i)) : -1);
        }
        return {Mirror::inWords(ChangeType::IndexesChanged, moved)};
    }
    if (indexes.isEmpty())
        return {words};
    const int from = words.startsWith("added"_L1) ? -1 : before.at(indexes.first());
    const int to = words.startsWith("removed"_L1) ? -1 : after.at(indexes.first());
    if (from < 0 && to < 0)
        return {};
    return {from < 0 ? u"added %1"_s.arg(to) : to < 0 ? u"removed %1"_s.arg(from) : u"updated %1"_s.arg(from)};
}

/// How many items a filtered list of this many has to judge when this is announced of its input.
int judgedUpon(const QString& words, int count)
{
    const Items indexes = indexesIn(words);
    if (words.startsWith("removed"_L1))
        return 0;
    if (words.startsWith("moved"_L1))
        return count - int(indexes.size() - indexes.count(-1));
    return indexes.isEmpty() ? count : 1;
}

/// The same for a list seen through a map, from its items. A change that leaves the length has them compared.
QStringList announcedThroughAMap(const QString& words, const Items& before, const Items& after)
{
    if (before.size() != after.size() || (words.startsWith("moved"_L1) && !indexesIn(words).isEmpty()))
        return {words};
    QStringList updates;
    for (int i = 0; i < before.size(); ++i) {
        if (before.at(i) != after.at(i))
            updates.append(u"updated %1"_s.arg(i));
    }
    return updates.size() > 1 ? QStringList{u"data changed"_s} : updates;
}

/// A list of keys seen through a map that a test edits.
struct Labelled
{
    explicit Labelled(const Items& firstKeys, int cacheLimit = KeepsEverything)
        : keys(firstKeys)
        , list(TransformedObservableList::create<int, QString>(keys, map, cacheLimit))
    {
        for (int key = 0; key < 10; ++key)
            map->contents.insert(key, QString::number(key));
    }

    QStringList expected() const
    {
        QStringList values;
        for (const int key : keys->items())
            values.append(map->contents.value(key));
        return values;
    }

    EditableListPointer<int> keys;
    PlainMapPointer<int, QString> map;
    ObservableList<QString> list;
};

/// Lists that hang on each other in every way: texts by key, those of some length, a copy of these, the keys while they
/// are fewer than those, and what a monitor saw.
struct Chain
{
    /// Changes everything once more, and compares.
    void mend()
    {
        for (int key = 0; key < 10; ++key)
            labelled.map->set({{key, labelled.map->contents.value(key) + u'.'}});
        labelled.keys->append(3);
        shortest->setValue(shortest->getValue() + 1);
        mirror = std::make_unique<ListMirror<QString>>(copy);
        labelled.keys->remove(0);
        labelled.map->set({{4, u"at last"_s}});
        const QStringList all = labelled.expected();
        QCOMPARE(labelled.list.toList(), all);
        QStringList some = all;
        some.removeIf([this](const QString& text) { return !fits(text); });
        QCOMPARE(longOnes.toList(), some);
        QCOMPARE(copy.toList(), some);
        QCOMPARE(mirror->items(), some);
        QCOMPARE(mirror->complaint(), QString());
        Items keys = labelled.keys->items();
        keys.removeIf([&](int key) { return key > some.size(); });
        QCOMPARE(fewKeys.toList(), keys);
    }
    bool fits(const QString& text) const { return text.size() >= shortest->getValue(); }

    Labelled labelled{{1, 2, 3, 4}};
    NumberPointer shortest{new Number(1)};
    ObservableList<QString> longOnes =
        FilteredObservableList<QString>::create(labelled.list, [this](const QString& text) { return fits(text); });
    ObservableList<QString> copy{new CachedObservableList<QString>(longOnes)};
    ObservableList<int> fewKeys =
        FilteredObservableList<int>::create(labelled.keys, [this](int key) { return key <= longOnes.size(); });
    std::unique_ptr<ListMirror<QString>> mirror = std::make_unique<ListMirror<QString>>(copy);
};

/// Throws the 7 when that is first hashed.
struct ThrowingHash
{
    std::size_t operator()(int key) const { return key == 7 && times++ == 0 ? throw key : std::size_t(key); }
    static inline int times = 0;
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
        for (const int count : {0, 1, 3, 40, 1024}) {
            const int itemCount = qMax(10, count / 2);
            const std::function<int()> makeItem = [&] { return random.bounded(itemCount); };
            Items items(count);
            std::generate(items.begin(), items.end(), makeItem);
            const EditableListPointer<int> edited(items);
            const ObservableList<int> input = edited;
            // Items are numbers of flags; one passes while its flag is set, unless it is below a limit that all share.
            QList<NumberPointer> flags;
            for (int i = 0; i < itemCount; ++i)
                flags.append(NumberPointer(new Number(i % 2 == 0)));
            const NumberPointer limit(new Number(0));
            const auto passes = [&](int item) { return item >= limit->getValue() && flags.at(item)->getValue(); };
            const auto positionsOf = [&](const Items& list) { // -1 for those that do not pass
                int next = 0;
                Items positions;
                for (const int item : list)
                    positions.append(passes(item) ? next++ : -1);
                return positions;
            };
            const PlainMapPointer<int, int> map;
            const auto throughMap = [&](Items keys) { // each with its value, as one number
                for (int& key : keys)
                    key = 10 * key + map->contents.value(key);
                return keys;
            };
            int judged = 0;
            const auto filtered =
                FilteredObservableList<int>::create(input, [&](int item) { return ++judged > 0 && passes(item); });
            const auto transformed = TransformedObservableList::create<int, int>(input, map, KeepsEverything);
            const auto readAtTheEnd = TransformedObservableList::create<int, int>(input, map, KeepsEverything);
            CachedObservableList<int> cached(input);
            QStringList told; // in the words of a mirror
            cached.setAddFunction([&](int index, int) { told.append(u"added %1"_s.arg(index)); });
            cached.setRemoveFunction([&](int index, int) { told.append(u"removed %1"_s.arg(index)); });
            cached.setUpdateFunction([&](int index, int, int) { told.append(u"updated %1"_s.arg(index)); });
            cached.setChangeFunction([&](ChangeType::Type type, const auto& mapper, const Items& old, const Items&) {
                told.append(Mirror::inWords(type, mapper ? Mirror::indexesOf(*mapper, int(old.size())) : Items()));
            });
            Mirror inputMirror(input);
            Mirror filteredMirror(filtered);
            Mirror transformedMirror(transformed);
            QSignalSpy plain(filtered.impl(), &ObservableListImpl::observableChanged);

            for (int step = 0; step < 400 || edited->size() > 0; ++step) { // in the end it is emptied
                const Items before = edited->items();
                const Items positionsBefore = positionsOf(before);
                const Items valuesBefore = throughMap(before);
                const int kind = random.bounded(12);
                const int size = edited->size();
                const int item = makeItem();
                int toJudge = 0;
                judged = 0;
                if (step == 400)
                    edited->replace(items);
                else if (step == 401) // into the last part of which a long list is made, which is full
                    edited->insert(3 * size / 4, item);
                else if (step > 401 && kind < 9) // not evenly, which would leave the parts alike
                    edited->remove(random.bounded((size + 2) / 3));
                else if (kind < 5)
                    editAtRandom(*edited, random, makeItem, 100 + 2 * count);
                else if (kind == 5 && limit->setValue(random.bounded(3) ? 0 : item))
                    toJudge = size;
                else if (kind < 10 && flags.at(item)->setValue(random.bounded(2)))
                    toJudge = item < limit->getValue() ? 0 : int(before.count(item)); // others never looked at it
                else
                    map->set({{item, random.bounded(3)}, {makeItem(), random.bounded(3)}});
                const Items after = edited->items();
                const QStringList changes = inputMirror.take();
                Items stay(before.size());
                std::iota(stay.begin(), stay.end(), 0);

                QStringList expected;
                const Items positions = positionsOf(after);
                if (!changes.isEmpty() || positionsBefore != positions)
                    expected = announcedByAFilter(changes.value(0, Mirror::inWords(ChangeType::IndexesChanged, stay)),
                                                  positionsBefore, positions);
                QCOMPARE(filteredMirror.take(), expected);
                QCOMPARE(plain.size(), expected.size());
                plain.clear();
                QCOMPARE(transformedMirror.take(),
                         announcedThroughAMap(changes.value(0), valuesBefore, throughMap(after)));
                QCOMPARE(std::exchange(told, {}), changes);
                QCOMPARE(judged, changes.isEmpty() ? toJudge : judgedUpon(changes.first(), int(after.size())));
                QCOMPARE(filtered.size(), int(positions.size() - positions.count(-1)));
                QCOMPARE(readAtTheEnd[int(after.size()) - 1], map->contents.value(after.value(after.size() - 1, -1)));
                for (const Mirror* mirror : {&inputMirror, &filteredMirror, &transformedMirror})
                    QCOMPARE(mirror->complaint(), QString());
            }
        }
    }

    void giveUpOnAFilterThatNeverSettles()
    {
        const NumberPointer counter(new Number(0));
        bool isRestless = true;
        const EditableListPointer<int> input;
        const auto list = FilteredObservableList<int>::create(input, [&](int) {
            if (isRestless)
                counter->setValue(counter->getValue() + 1);
            return true;
        });
        Mirror mirror(list);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"^DerivedList\\.cpp .* keeps changing"_s));
        input->append(1);
        QCOMPARE(counter->getValue(), 17);
        isRestless = false;
        input->append(2);
        QCOMPARE(mirror.items(), (Items{1, 2}));
        QCOMPARE(mirror.take().last(), u"reset"_s);
    }

    void computeAnItemWhenItIsReadAndOnce()
    {
        Labelled labelled({3, 4, 5}, 2);
        QCOMPARE(labelled.list.size(), 3);
        QCOMPARE(labelled.map->gets, 0);
        QCOMPARE(labelled.list[1], u"4"_s);
        labelled.keys->remove(0);
        labelled.keys->insert(0, 9);
        labelled.keys->insert(0, 9);
        const QStringList last = labelled.list.toList().mid(2); // reads the new ones first: 4 is forgotten
        QCOMPARE(last, (QStringList{u"4"_s, u"5"_s}));
        QCOMPARE(labelled.map->gets, 5);
        const QSignalSpy updated(labelled.list.impl(), &ObservableListImpl::itemUpdated);
        labelled.map->set({{9, u"nine"_s}}); // nobody has it any more
        labelled.map->set({{5, u"five"_s}});
        QVERIFY(updated.size() == 1 && updated[0][0].toList() == QVariantList{3});
        QTest::ignoreMessage(QtDebugMsg,
                             QRegularExpression(u"^LazyTransformedObservableList\\.h \\[ 101 \\]:  "
                                                "\"?Index out of bounds accessing LazyTransformedObservableList!"_s));
        QVERIFY(!labelled.list.impl()->data({4}).isValid());
        // And hears only what the map announces under keys; without any, of all that it keeps.
        labelled.map->contents = {{5, u"fünf"_s}, {9, u"neun"_s}};
        labelled.map->fireMapChanged(MapChange());
        QCOMPARE(updated.size(), 1);
        labelled.map->fireMapChanged(MapChange::create(Items()));
        QVERIFY(updated.size() == 2 && updated[1][0].toList() == QVariantList{3});
        // Who reads what is made of it depends on all of its map.
        const auto above = TransformedObservableList::create<QString, int>(
            labelled.list, PlainMapPointer<QString, int>(), KeepsEverything);
        const CountedMonitor monitor([&] { above.toList(); });
        labelled.map->set({{9, u"ninth"_s}}); // forgotten by now
        QCOMPARE(monitor.runs, 2);
    }

    void takeInWhatTheMapDoesWhileItIsAsked()
    {
        const Labelled labelled({1, 2, 3});
        const ListMirror<QString> mirror(labelled.list);
        auto& map = *labelled.map;
        auto& keys = *labelled.keys;
        const auto compareAfter = [&](const auto& change, const auto& whileAsked) {
            bool isAsked = false;
            map.whenAsked = [&](int) {
                if (!std::exchange(isAsked, true))
                    whileAsked();
            };
            change();
            QVERIFY(isAsked);
            QCOMPARE(labelled.list.toList(), labelled.expected());
            QCOMPARE(mirror.items(), labelled.expected());
            QCOMPARE(mirror.complaint(), QString());
        };
        compareAfter([&] { map.set({{1, u"one"_s}}); }, [&] { map.set({{1, u"again"_s}}); });
        compareAfter([&] { keys.append(4); }, [&] { map.set({{4, u"first"_s}}); });
        compareAfter([&] { keys.update(1, 9); }, [&] { keys.insert(0, 4); });
        compareAfter([&] { keys.update(0, 8); }, [&] { keys.remove(0); }); // another slides into its place
        const auto loseAnother = [&] {                                     // which is to be made anew, and is read
            map.set({{3, u"read"_s}});
            QCOMPARE(labelled.list[2], u"read"_s);
            keys.remove(2);
        };
        compareAfter([&] { map.set({{1, u"last"_s}}); }, loseAnother);
        for (const bool isTogether : {false, true}) {
            const Labelled other({7, 8}); // into the place of what is asked for none slides
            other.map->whenAsked = [&](int) {
                if (other.keys->size() == 2)
                    other.keys->remove(0);
            };
            const auto readOther = [&] { QCOMPARE(other.list[1], QString()); };
            isTogether ? Round::together(readOther) : readOther();
            QCOMPARE(other.list.toList(), QStringList{u"8"_s});
            const Labelled forgetting({1, 2, 3, 4}, 1); // its items are keys that are asked for anew when read
            const PlainMapPointer<QString, int> numbers({{u"2"_s, 2}, {u"3"_s, 3}, {u"4"_s, 4}, {u"7"_s, 7}});
            const auto list =
                TransformedObservableList::create<QString, int>(forgetting.list, numbers, KeepsEverything);
            forgetting.map->whenAsked = [&](int key) {
                if (key == 3 && forgetting.keys->size() == 4)
                    isTogether ? forgetting.keys->remove(0) : forgetting.keys->replace({7});
            };
            const auto read = [&] { ObservableTracker::runAndMonitor([&] { list[2]; }); };
            isTogether ? Round::together(read) : read();
            QCOMPARE(list.toList(), isTogether ? (Items{2, 3, 4}) : Items{7});
        }
        const Labelled restless({7}); // whose map never comes to rest
        restless.map->whenAsked = [&](int key) { restless.map->set({{key, QString::number(restless.map->gets)}}); };
        QCOMPARE(restless.list[0], u"15"_s);
        QCOMPARE(restless.map->gets, 16);
    }

    void mayBeChangedByWhatEndsWithAnItem()
    {
        using Held = std::shared_ptr<void>;
        const EditableListPointer<int> keys({1, 2});
        const PlainMapPointer<int, Held> map;
        int ended = 0;
        std::function<void()> atEnd = [&] { keys->replace({}); };
        for (const int key : {1, 2})
            map->contents[key] = Held(nullptr, [&](void*) {
                ++ended;
                atEnd();
            });
        auto list = TransformedObservableList::create<int, Held>(keys, map, 1);
        list[0];
        map->contents.remove(1);
        list[1]; // for which the first is forgotten, and with that all others go
        QVERIFY(ended == 1 && list.isEmpty());
        keys->append(2);
        list[0];
        map->contents.clear();
        atEnd = [&] {
            map->fireMapChanged(MapChange::create(Items{2}));
            keys->append(3);
        };
        const QSignalSpy spy(list.impl(), &ObservableListImpl::observableChanged);
        list = {};
        QVERIFY(ended == 2 && spy.isEmpty());
    }

    void outliveAReadThatDropsTheirLastHandle()
    {
        const EditableListPointer<int> input;
        ObservableList<int> list;
        ObservableList<int> reader; // of itself, too, which does not keep it
        reader =
            FilteredObservableList<int>::create(input, [&](int) { return reader.size() + list.toList().size() >= 0; });
        list = FilteredObservableList<int>::create(input, [&](int) {
            list = {};
            return true;
        });
        const QPointer<ObservableListImpl> alive = list.impl();
        input->append(1);
        QVERIFY(!alive);
        QCOMPARE(reader.toList(), Items{1});
        const QPointer<ObservableListImpl> read = reader.impl();
        reader = {};
        QVERIFY(!read);
        // Two that read each other hold each other, until they do no more.
        const NumberPointer apart(new Number(0));
        QPointer<ObservableListImpl> both[2];
        const auto readerOf = [&](int other) {
            return FilteredObservableList<int>::create(input, [&, other](int) {
                return apart->getValue() || ObservableList<int>(both[other].data()).size() >= 0;
            });
        };
        reader = readerOf(1);
        both[0] = reader.impl();
        list = readerOf(0);
        both[1] = list.impl();
        input->append(2);
        reader = list = {};
        QVERIFY(both[0] && both[1]);
        apart->setValue(1);
        QVERIFY(!both[0] && !both[1]);
    }

    // What becomes of the items random graphs tell.
    void passOnWhatTheMapThrows()
    {
        const Labelled labelled({1});
        const CachedObservableList<QString> reader(labelled.list);
        labelled.map->whenAsked = [](int) { throw std::runtime_error("no"); };
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, labelled.map->set({{1, u"one"_s}}));
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, labelled.keys->append(2)); // which the reader asks for
        QVERIFY_THROWS_EXCEPTION(std::runtime_error, labelled.list.toList());
        int asked = 0; // to change what it is asked for, then without memory
        labelled.map->whenAsked = [&](int key) {
            if (key != 1 || ++asked > 2)
                return;
            if (asked == 2)
                throw std::bad_alloc();
            labelled.map->set({{1, u"again"_s}});
            QCOMPARE(labelled.list[0], u"again"_s);
        };
        QVERIFY_THROWS_EXCEPTION(std::bad_alloc, labelled.map->set({{1, u"two"_s}}));
        QCOMPARE(labelled.list[0], u"again"_s);
        labelled.map->set({{1, u"one"_s}, {2, u"two"_s}});
        QCOMPARE(reader.toList(), labelled.expected());
        // What a key throws is none of the map's: all is read again with the next change.
        const EditableListPointer<int> keys;
        const PlainMapPointer<int, int> map({{7, 70}, {8, 80}});
        const auto list = TransformedObservableList::create<int, int, iEqual<int>, ThrowingHash>(keys, map);
        CachedObservableList<int> all(list);
        QVERIFY_THROWS_EXCEPTION(int, keys->append(7));
        keys->append(8);
        QCOMPARE(all.toList(), (Items{70, 80}));
        all.setInput({});
        ThrowingHash::times = 0;
        QVERIFY_THROWS_EXCEPTION(int, keys->update(1, 7));
        keys->update(1, 7);
        map->set({{7, 71}});
        QCOMPARE(list[1], 71);
    }

    void mayBeReadByTheMapThatMakesThem()
    {
        struct Counting : PlainMap<int, QString>
        {
            QString get(const int& key) const override
            {
                ++gets;
                return key == 0 ? contents.value(0) : list[int(keys->items().indexOf(key - 1))] + u'.';
            }
            EditableListPointer<int> keys{{2, 1, 0}};
            ObservableList<QString> list;
        };
        const QExplicitlySharedDataPointer<Counting> map(new Counting);
        map->contents[0] = u"0"_s;
        map->list = TransformedObservableList::create<int, QString>(map->keys, ObservableMap<int, QString>(map.data()),
                                                                    KeepsEverything);
        const ListMirror<QString> mirror(map->list);
        QCOMPARE(mirror.items(), (QStringList{u"0.."_s, u"0."_s, u"0"_s}));
        map->contents[0] = u"x"_s;
        map->fireMapChanged(MapChange::create(Items{1, 2, 0}));
        QCOMPARE(mirror.items(), (QStringList{u"x.."_s, u"x."_s, u"x"_s}));
        QCOMPARE(map->gets, 6);
        // So many hang on each other that one is left out.
        Items keys(250);
        std::iota(keys.rbegin(), keys.rend(), 0);
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"^LazyTransformedListBase\\.cpp .* too many others"_s));
        map->keys->replace(keys);
        QCOMPARE(map->list[0], QString(200, u'.'));
        QCOMPARE(map->list[200], u'x' + QString(49, u'.'));
        map->list = {}; // which holds the map
    }

    // So many that nobody asks them all; and of a single one nobody asks where each item went.
    void takeAnyNumberOfMovesAtOnce()
    {
        const EditableListPointer<int> input({1, 2});
        const auto list = FilteredObservableList<int>::create(input, [](int) { return true; });
        Mirror mirror(list);
        for (const int count : {99, 100, 101}) {
            Round::together([&] {
                for (int i = 0; i < count; ++i)
                    input->move(0, 1);
            });
            QCOMPARE(mirror.take(), QStringList{count == 99    ? u"moved 1 0"_s
                                                : count == 100 ? u"moved 0 1"_s
                                                               : u"reset"_s});
        }
        const QSignalSpy spy(list.impl(), &ObservableListImpl::itemsChanged);
        input->move(0, 1);
        QVERIFY(spy[0][1].value<QSharedPointer<ObservableListImpl::IndexMapper>>().dynamicCast<ItemMovedMapper>());
    }

    // For each step of a history every allocation fails in turn. With the next change of what they are made of all is
    // as if none had; without it nothing hangs in the air.
    void areRightAgainAfterMemoryRanOut()
    {
        const std::function<void(Chain&)> steps[] = {
            [](Chain& chain) { chain.labelled.keys->insert(1, 7); },
            [](Chain& chain) { chain.labelled.keys->append(8); },
            [](Chain& chain) { chain.labelled.keys->update(2, 9); },
            [](Chain& chain) { chain.labelled.keys->remove(0); },
            [](Chain& chain) { chain.labelled.keys->move(0, 3); },
            [](Chain& chain) {
                chain.labelled.keys->rearrange({2, 1, 0, -1}, {0, 0, 0, 5});
            },
            [](Chain& chain) {
                chain.labelled.keys->replace({5, 4, 3, 2, 1, 6});
            },
            [](Chain& chain) {
                chain.labelled.map->set({{1, u"22"_s}, {2, u""_s}, {3, u"333"_s}});
            },
            [](Chain& chain) { chain.shortest->setValue(2); },
            [](Chain& chain) { chain.labelled.list.toList(); },
        };
        failing::withMalloc = failing::withArrays = false;
        for (const auto& step : steps) {
            failing::eachInTurn([] { return std::make_unique<Chain>(); }, step, [](Chain& chain) { chain.mend(); });
            if (QTest::currentTestFailed())
                return;
        }
        failing::withMalloc = failing::withArrays = true;
    }

    void replaceTheirInputAsAReset()
    {
        using List = EditableListPointer<int>;
        const List first({1, 2});
        const List second({9});
        CachedObservableList<int> cached(first);
        QList<std::pair<Items, Items>> told;
        cached.setChangeFunction([&](ChangeType::Type, auto&&, const Items& old, const Items& now) {
            told.append({old, now});
        });
        cached.setInput(second);
        first->append(4);
        cached.setInput(ObservableList<int>());
        second->append(4);
        QCOMPARE(told, (QList<std::pair<Items, Items>>{{{1, 2}, {9}}, {{9}, {}}}));
        // Another input is set while this one is read.
        const PlainMapPointer<int, int> map;
        map->whenAsked = [&](int) { cached.setInput(List({7})); };
        cached.setInput(TransformedObservableList::create<int, int>(List({1}), map));
        QCOMPARE(cached.itemAt(0), QVariant(7));
        cached.setChangeFunction({});
        QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, cached.setInput(List({8})));
        QCOMPARE(cached.itemAt(0), QVariant(8));
        QThread thread;
        auto* const elsewhere = new EditableList<int>;
        elsewhere->moveToThread(&thread);
        cached.setChangeFunction([](auto&&...) {});
        QTest::ignoreMessage(QtDebugMsg, QRegularExpression(u"^DerivedList\\.cpp .* of another thread"_s));
        cached.setInput(ObservableList<int>(elsewhere));
    }

    // Value and key of a record are one change, announced once. One made in a function, as by a slot of the application
    // that spins an event loop in which more comes, is told, in order, before it is announced; a view hears of the
    // first with the second.
    void tellOfEachChangeThatIsMadeMeanwhile()
    {
        const EditableListPointer<int> ids({0, 1});
        const QExplicitlySharedDataPointer<RecordMap<int, QString>> records(new RecordMap<int, QString>);
        int judgements = 0;
        const auto filled = FilteredObservableList<QString>::create(
            TransformedObservableList::create<int, QString>(ids, contentsOf(records), KeepsEverything),
            [&](const QString& record) { return ++judgements > 0 && !record.isEmpty(); });
        const QExplicitlySharedDataPointer cached(new CachedObservableList<QString>(filled));
        const ObservableList<QString> view(cached.data());
        ListMirror<QString> mirror(view);
        const auto change = [&](int id, const QString& record) {
            records->set(id, record);
            return mirror.take().join(u' ');
        };
        for (const int id : {0, 1}) {
            QCOMPARE(change(id, u"first"_s), u"added %1"_s.arg(id));
            QCOMPARE(change(id, QString::number(id)), u"updated %1"_s.arg(id));
        }
        QCOMPARE(judgements, 6); // each once empty, and at each change of its own
        QStringList told;
        cached->setUpdateFunction([&](int index, const QString& before, const QString& after) {
            told.append(u"%1 %2 %3"_s.arg(index).arg(before, after));
            QStringList expected;
            for (const int id : ids->items())
                expected.append(records->peek(id));
            QCOMPARE(view.toList(), expected);
            if (after == "first"_L1) {
                QCOMPARE(mirror.take(), QStringList());
                records->set(0, u"second"_s);
                ids->remove(1);
                records->set(0, u"third"_s);
            }
        });
        cached->setRemoveFunction(
            [&](int index, const QString& item) { told.append(u"-%1 %2"_s.arg(index).arg(item)); });
        QCOMPARE(change(0, u"first"_s), u"updated 0 removed 1 updated 0"_s);
        QCOMPARE(told, (QStringList{u"0 0 first"_s, u"0 first second"_s, u"-1 1"_s, u"0 second third"_s}));
        QCOMPARE(change(0, QString()), u"removed 0"_s);
        QCOMPARE(mirror.complaint(), QString());
    }
};

ZEL_TEST(TstDerivedLists)
#include "tst_derivedlists.moc"
