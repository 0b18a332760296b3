// SPDX-License-Identifier: Apache-2.0
#include "DerivedListFixtures.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/FilteredObservableList.h>
#include <iface/ListMirror.h>
#include <iface/Logging.h>
#include <iface/ObservableMonitor.h>
#include <iface/TransformedObservableList.h>

#include <QRegularExpression>
#include <QtTest>

#include <algorithm>
#include <memory>
#include <stdexcept>

using iface::FilteredObservableList;
using iface::ObservableList;
using Flag = iface::WritableObservableValue<bool>;
using Number = iface::WritableObservableValue<int>;
using Mirror = iface::ListMirror<int>;
using ChangeType = iface::ObservableListImpl::ChangeType;

namespace {

/// A filtered list in its simplest form: everything is judged again at every change.
class NaiveFilter
{
public:
    explicit NaiveFilter(std::function<bool(int)> filter)
        : m_filter(std::move(filter))
    {
    }

    void build(const QList<int>& input)
    {
        filteredIndices.clear();
        positions.clear();
        for (int i = 0; i < input.size(); ++i) {
            const bool passes = m_filter(input.at(i));
            positions.append(passes ? int(filteredIndices.size()) : -1);
            if (passes)
                filteredIndices.append(i);
        }
    }

    /// What is to be announced when the input announces a change and already shows it.
    void listenTo(EditableList<int>& input)
    {
        using List = iface::ObservableListImpl;
        QObject::connect(&input, &List::itemAdded, &m_context, [&](const QVariantList& path) {
            build(input.items());
            say(QStringLiteral("added %1"), positions.at(List::indexOfPath(path)));
        });
        QObject::connect(&input, &List::itemRemoved, &m_context, [&](const QVariantList& path) {
            const int before = positions.at(List::indexOfPath(path));
            build(input.items());
            say(QStringLiteral("removed %1"), before);
        });
        QObject::connect(&input, &List::itemUpdated, &m_context, [&](const QVariantList& path) {
            const int before = positions.at(List::indexOfPath(path));
            build(input.items());
            const int after = positions.at(List::indexOfPath(path));
            if (before >= 0)
                say(after >= 0 ? QStringLiteral("updated %1") : QStringLiteral("removed %1"), before);
            else
                say(QStringLiteral("added %1"), after);
        });
        QObject::connect(&input, &List::itemsChanged, &m_context,
                         [&](ChangeType::Type type, const QSharedPointer<List::IndexMapper>& mapper) {
                             wholesale(input.items(), type, mapper.data());
                         });
    }

    void somethingReadChanged(const QList<int>& input)
    {
        const QList<int> before = filteredIndices;
        build(input);
        if (std::equal(before.begin(), before.end(), filteredIndices.begin(), filteredIndices.end()))
            return;
        QList<int> indexes;
        for (const int index : before)
            indexes.append(positions.at(index));
        announced.append(Mirror::inWords(ChangeType::IndexesChanged, indexes));
    }

    QStringList take() { return std::exchange(announced, {}); }

    QList<int> filteredIndices;
    QList<int> positions;
    QStringList announced;

private:
    void say(const QString& what, int position)
    {
        if (position >= 0)
            announced.append(what.arg(position));
    }

    void wholesale(const QList<int>& input, ChangeType::Type type, const iface::ObservableListImpl::IndexMapper* mapper)
    {
        const QList<int> before = filteredIndices;
        const int count = int(positions.size());
        build(input);
        QList<int> indexes;
        if (mapper) {
            const QList<int> moved = Mirror::indexesOf(*mapper, count);
            for (const int index : before)
                indexes.append(moved.at(index) >= 0 ? positions.at(moved.at(index)) : -1);
        }
        announced.append(Mirror::inWords(type, indexes));
    }

    const std::function<bool(int)> m_filter;
    QObject m_context;
};

/// Items are indexes of flags; an item passes while its flag is set, if it is not below a limit all share.
struct Flags
{
    explicit Flags(int count)
    {
        for (int i = 0; i < count; ++i)
            flags.append(QExplicitlySharedDataPointer<Flag>(new Flag(i % 2 == 0)));
    }
    bool passes(int item) const { return item >= limit->getValue() && flags.at(item)->getValue(); }

    QList<QExplicitlySharedDataPointer<Flag>> flags;
    QExplicitlySharedDataPointer<Number> limit{new Number(0)};
};

} // namespace

class TstFilteredObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcesWhatANaiveFilterWould();
    void callsTheFilterOnlyForWhatChanged();
    void refusesToReadPastItsEnd();
    void staysWholeWhenTheFilterThrows();
    void survivesAFilterThatEditsItsInput();
    void judgesOnceMoreWhatChangesWhileItIsJudged();
    void givesUpOnAFilterThatNeverSettles();
    void livesThroughAHandlerThatDropsIt();
    void tellsAReaderWhenItsItemsChange();
    void staysRightOverAListThatForgets();
};

void TstFilteredObservableList::announcesWhatANaiveFilterWould()
{
    QRandomGenerator random = seededRandom();
    for (const int count : {0, 1, 3, 40, 1500}) {
        const int flagCount = qMax(10, count / 2);
        const Flags flags(flagCount);
        const std::function<int()> makeItem = [&] { return random.bounded(flagCount); };

        const EditableListPointer<int> input(new EditableList<int>);
        while (input->size() < count)
            input->append(makeItem());
        NaiveFilter naive([&](int item) { return flags.passes(item); });
        naive.build(input->items());
        naive.listenTo(*input);
        const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()),
                                                              [&](int item) { return flags.passes(item); });
        Mirror mirror(list);

        for (int step = 0; step < 600; ++step) {
            const int plainBefore = mirror.plainChanges();
            const int kind = random.bounded(10);
            if (kind < 5) {
                editAtRandom(*input, random, makeItem, 100 + 2 * count);
            } else {
                if (kind == 5)
                    flags.limit->setValue(random.bounded(3) ? 0 : random.bounded(flagCount));
                else
                    flags.flags.at(makeItem())->setValue(random.bounded(2));
                naive.somethingReadChanged(input->items());
            }
            const QStringList announced = mirror.take();
            QCOMPARE(announced, naive.take());
            QCOMPARE(mirror.plainChanges() - plainBefore, int(announced.size()));
            QCOMPARE(mirror.complaint(), QString());
            QCOMPARE(list.size(), int(naive.filteredIndices.size()));
        }
        QList<int> expected;
        for (const int index : naive.filteredIndices)
            expected.append(input->items().at(index));
        QCOMPARE(list.toList(), expected);
    }
}

void TstFilteredObservableList::callsTheFilterOnlyForWhatChanged()
{
    const Flags flags(1000);
    const EditableListPointer<int> input(new EditableList<int>);
    for (int i = 0; i < 1000; ++i)
        input->append(i);
    QList<int> judged;
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
    QCOMPARE(judgedBy([&] { flags.flags.at(500)->setValue(false); }), QList<int>{500});
    QCOMPARE(judgedBy([&] { input->insert(10, 7); }), QList<int>{7});
    QCOMPARE(judgedBy([&] { input->remove(3); }), QList<int>());
    QCOMPARE(judgedBy([&] { input->move(0, 900); }), QList<int>());
    QCOMPARE(judgedBy([&] { input->update(400, 8); }), QList<int>{8});
    QCOMPARE(judgedBy([&] { flags.flags.at(8)->setValue(false); }), (QList<int>{8, 8})); // it stands there twice
    // Only what the last judgement read counts: below the limit nobody looks at a flag.
    QCOMPARE(judgedBy([&] { flags.limit->setValue(500); }).size(), 1000);
    QCOMPARE(judgedBy([&] { flags.flags.at(20)->setValue(false); }), QList<int>());
}

void TstFilteredObservableList::refusesToReadPastItsEnd()
{
    const EditableListPointer<int> input(new EditableList<int>({7, 8}));
    const auto list =
        FilteredObservableList<int>::create(ObservableList<int>(input.data()), [](int item) { return item == 8; });
    QCOMPARE(list.impl()->data({0}), QVariant(8));
    for (const QVariantList& path : {QVariantList(), QVariantList{1}, QVariantList{-1}, QVariantList{0, 0}})
        QVERIFY(!list.impl()->data(path).isValid());
    QVERIFY(FilteredObservableList<int>::create(ObservableList<int>(), [](int) { return true; }).isEmpty());
}

void TstFilteredObservableList::staysWholeWhenTheFilterThrows()
{
    const QExplicitlySharedDataPointer<Number> bad(new Number(-1));
    const EditableListPointer<int> input(new EditableList<int>({0, 1, 2}));
    const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int item) {
        if (bad->getValue() == item)
            throw std::runtime_error("bad");
        return true;
    });
    Mirror mirror(list);
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, bad->setValue(1));
    QCOMPARE(mirror.take(), QStringList{QStringLiteral("moved 0 -1 1")});
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, input->insert(0, 1));
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, input->reset({1, 3, 1}));
    QCOMPARE(list.toList(), QList<int>{3});
    bad->setValue(5);
    QCOMPARE(list.toList(), (QList<int>{1, 3, 1}));
    QCOMPARE(mirror.items(), list.toList());
    QCOMPARE(mirror.complaint(), QString());
}

void TstFilteredObservableList::survivesAFilterThatEditsItsInput()
{
    const EditableListPointer<int> input(new EditableList<int>({1}));
    bool isEdited = false;
    const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int item) {
        if (item == 2 && !std::exchange(isEdited, true))
            input->insert(0, 3);
        return true;
    });
    Mirror mirror(list);
    input->append(2);
    QCOMPARE(list.toList(), (QList<int>{3, 1, 2}));
    QCOMPARE(mirror.take(), QStringList{QStringLiteral("reset")});
    QCOMPARE(mirror.complaint(), QString());
}

void TstFilteredObservableList::judgesOnceMoreWhatChangesWhileItIsJudged()
{
    const QExplicitlySharedDataPointer<Number> limit(new Number(0));
    const EditableListPointer<int> input(new EditableList<int>);
    int judgements = 0;
    const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int item) {
        ++judgements;
        const bool passes = item >= limit->getValue();
        limit->setValue(5);
        return passes;
    });
    Mirror mirror(list);
    input->append(1);
    QCOMPARE(judgements, 2);
    QCOMPARE(list.size(), 0);
    QCOMPARE(mirror.complaint(), QString());
}

void TstFilteredObservableList::givesUpOnAFilterThatNeverSettles()
{
    const QExplicitlySharedDataPointer<Number> counter(new Number(0));
    const EditableListPointer<int> input(new EditableList<int>);
    bool isRestless = true;
    const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()), [&](int) {
        if (isRestless)
            counter->setValue(counter->getValue() + 1);
        return true;
    });
    Mirror mirror(list);
    // One line, where the library's log can be held back.
    QTest::ignoreMessage(QtDebugMsg, QRegularExpression(QStringLiteral("^Intake\\.cpp .* keeps changing")));
    input->append(1);
    iface::setLogLevel(iface::LogLevel::Type(100));
    input->append(2);
    iface::setLogLevel(iface::LogLevel::Info);
    isRestless = false;
    input->append(3);
    QCOMPARE(list.toList(), (QList<int>{1, 2, 3}));
    QCOMPARE(mirror.items(), list.toList());
    QCOMPARE(mirror.complaint(), QString());
}

void TstFilteredObservableList::livesThroughAHandlerThatDropsIt()
{
    const Flags flags(2);
    const EditableListPointer<int> input(new EditableList<int>);
    auto list = std::make_unique<ObservableList<int>>(FilteredObservableList<int>::create(
        ObservableList<int>(input.data()), [&](int item) { return flags.passes(item); }));
    connect(list->impl(), &iface::ObservableListImpl::itemAdded, this, [&](const QVariantList&) { list.reset(); });
    input->append(0);
    QVERIFY(!list);
    input->append(0);
    flags.flags.at(0)->setValue(false);
}

void TstFilteredObservableList::tellsAReaderWhenItsItemsChange()
{
    const Flags flags(4);
    const EditableListPointer<int> input(new EditableList<int>({0, 1, 2, 3}));
    const auto list = FilteredObservableList<int>::create(ObservableList<int>(input.data()),
                                                          [&](int item) { return flags.passes(item); });
    int sum = 0;
    int runs = 0;
    iface::ObservableMonitor monitor(
        [&] {
            ++runs;
            sum = 0;
            const QList<int> items = list.toList();
            for (const int item : items)
                sum += item;
        },
        nullptr, QStringLiteral("sum"), false);
    monitor.handleObservableChanged();
    flags.flags.at(3)->setValue(true);
    QCOMPARE(sum, 5);
    flags.flags.at(1)->setValue(false);
    QCOMPARE(runs, 2);
}

void TstFilteredObservableList::staysRightOverAListThatForgets()
{
    // Two items are kept at a time, so most changes come without an announcement of the transformed list.
    const EditableListPointer<int> keys(new EditableList<int>({1, 2, 3, 4, 5, 6}));
    const QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
    for (int i = 1; i <= 6; ++i)
        map->contents.insert(i, i);
    const auto transformed = iface::TransformedObservableList::create<int, int>(
        ObservableList<int>(keys.data()), iface::ObservableMap<int, int>(map.data()), 2);
    const auto list = FilteredObservableList<int>::create(transformed, [](int item) { return item % 2 == 0; });
    QVERIFY(!transformed.impl()->announcesEveryReadItem());
    QVERIFY(!list.impl()->announcesEveryReadItem());
    Mirror mirror(list);
    for (int i = 0; i < 50; ++i) {
        const int key = 1 + i % 6;
        map->set({{key, map->contents.value(key) + 1}});
        QList<int> expected;
        for (const int k : keys->items()) {
            if (map->contents.value(k) % 2 == 0)
                expected.append(map->contents.value(k));
        }
        QCOMPARE(list.toList(), expected);
        QCOMPARE(mirror.complaint(), QString());
    }
}

ZEL_TEST(TstFilteredObservableList)
#include "tst_filteredobservablelist.moc"
