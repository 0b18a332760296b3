// SPDX-License-Identifier: Apache-2.0
#include "DerivedListFixtures.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/CachedObservableList.h>
#include <iface/ListMirror.h>

#include <QtTest>

#include <stdexcept>

using iface::CachedObservableList;
using iface::ObservableList;
using Cached = CachedObservableList<int>;
using ChangeType = iface::ObservableListImpl::ChangeType;
using IndexMapper = iface::ObservableListImpl::IndexMapper;

namespace {

QString inWords(const QList<int>& items)
{
    QStringList numbers;
    for (const int item : items)
        numbers.append(QString::number(item));
    return numbers.join(QLatin1Char(' '));
}

} // namespace

class TstCachedObservableList : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void isEmptyWithoutAnInput();
    void followsItsInputAndTellsOldAndNew();
    void replacesItsInputAsAReset();
    void answersFromItsCopy();
    void callsFunctionsForEachChangeThatAFunctionMakes();
    void announcesWhatAFunctionThrewAt();
    void livesThroughAHandlerThatDropsIt();

private:
    EditableListPointer<int> m_input;
    QExplicitlySharedDataPointer<Cached> m_cached;
    ObservableList<int> m_list;
};

void TstCachedObservableList::init()
{
    m_input = EditableListPointer<int>(new EditableList<int>({1, 2, 3}));
    m_cached = QExplicitlySharedDataPointer<Cached>(new Cached(ObservableList<int>(m_input.data())));
    m_list = ObservableList<int>(m_cached.data());
}

void TstCachedObservableList::isEmptyWithoutAnInput()
{
    const ObservableList<int> list(new Cached);
    QCOMPARE(list.size(), 0);
    QCOMPARE(list[0], 0);
    m_cached->setInput(ObservableList<int>());
    QCOMPARE(m_list.size(), 0);
    m_input->append(4);
    QCOMPARE(m_list.size(), 0);
}

void TstCachedObservableList::followsItsInputAndTellsOldAndNew()
{
    QRandomGenerator random = seededRandom();
    // Each function tells what the input announces, in the same words, with the contents before and after.
    QStringList told;
    const auto tell = [&](const QString& what, int index, const QString& items) {
        told.append(QStringLiteral("%1 %2: %3").arg(what).arg(index).arg(items));
    };
    const auto number = [](int item) { return QString::number(item); };
    m_cached->setAddFunction([&](int index, int item) { tell(QStringLiteral("added"), index, number(item)); });
    m_cached->setRemoveFunction([&](int index, int item) { tell(QStringLiteral("removed"), index, number(item)); });
    m_cached->setUpdateFunction([&](int index, int before, int after) {
        tell(QStringLiteral("updated"), index, inWords({before, after}));
    });
    m_cached->setChangeFunction([&](ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper,
                                    const QList<int>& before, const QList<int>& after) {
        const QList<int> indexes =
            mapper ? iface::ListMirror<int>::indexesOf(*mapper, int(before.size())) : QList<int>();
        told.append(iface::ListMirror<int>::inWords(type, indexes) + QStringLiteral(": ") + inWords(before + after));
    });

    iface::ListMirror<int> inputMirror(ObservableList<int>(m_input.data()));
    iface::ListMirror<int> mirror(m_list);
    for (int step = 0; step < 1500; ++step) {
        const QList<int> before = m_input->items();
        editAtRandom<int>(*m_input, random, [&] { return int(random.bounded(100)); });
        const QList<int> after = m_input->items();
        const QStringList announced = inputMirror.take();
        QCOMPARE(announced.size(), 1);
        const int index = announced.first().section(QLatin1Char(' '), 1, 1).toInt();
        QList<int> items = before + after;
        if (announced.first().startsWith(QLatin1String("added")))
            items = {after.at(index)};
        else if (announced.first().startsWith(QLatin1String("removed")))
            items = {before.at(index)};
        else if (announced.first().startsWith(QLatin1String("updated")))
            items = {before.at(index), after.at(index)};
        QCOMPARE(std::exchange(told, {}), QStringList(announced.first() + QStringLiteral(": ") + inWords(items)));
        QCOMPARE(mirror.take(), announced);
        QCOMPARE(mirror.items(), after);
        QCOMPARE(mirror.complaint(), QString());
    }
}

void TstCachedObservableList::replacesItsInputAsAReset()
{
    iface::ListMirror<int> mirror(m_list);
    QList<int> old;
    m_cached->setChangeFunction([&](ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper,
                                    const QList<int>& before, const QList<int>& after) {
        QCOMPARE(type, ChangeType::Reset);
        QVERIFY(!mapper);
        QCOMPARE(after, QList<int>{9});
        old = before;
    });
    m_cached->setInput(ObservableList<int>(new EditableList<int>({9})));
    QCOMPARE(old, (QList<int>{1, 2, 3}));
    m_input->append(4);
    QCOMPARE(mirror.take(), QStringList{QStringLiteral("reset")});
    QCOMPARE(m_list.toList(), QList<int>{9});
}

void TstCachedObservableList::answersFromItsCopy()
{
    struct Input : EditableList<int>
    {
        using EditableList::EditableList;
        void setQuietly(int item) { m_list[0] = item; }
    };
    const QExplicitlySharedDataPointer<Input> input(new Input({1}));
    const ObservableList<int> list(new Cached(ObservableList<int>(input.data())));
    input->setQuietly(2);
    QCOMPARE(list[0], 1);
    // Who is connected to the input hears when the copy has been made.
    QObject context;
    int seen = -1;
    connect(input.data(), &iface::ObservableListImpl::itemUpdated, &context,
            [&](const QVariantList&) { seen = list[0]; });
    input->update(0, 3);
    QCOMPARE(seen, 3);
    for (const QVariantList& path : {QVariantList(), QVariantList{1}, QVariantList{-1}, QVariantList{0, 0}})
        QVERIFY(!list.impl()->data(path).isValid());
}

// Every function hears of every change, in order; a view hears of them as one.
void TstCachedObservableList::callsFunctionsForEachChangeThatAFunctionMakes()
{
    iface::ListMirror<int> mirror(m_list);
    QStringList told;
    m_cached->setAddFunction([&](int index, int item) {
        QCOMPARE(mirror.take(), QStringList()); // the function comes first, and sees the item
        QCOMPARE(m_list[index], item);
        told.append(QStringLiteral("added"));
        m_input->remove(0);
        told.append(QStringLiteral("after"));
    });
    m_cached->setRemoveFunction([&](int, int item) {
        told.append(QStringLiteral("removed %1").arg(item));
        if (item == 1)
            m_input->update(0, 7);
    });
    m_cached->setUpdateFunction(
        [&](int, int before, int after) { told.append(QStringLiteral("updated %1 %2").arg(before).arg(after)); });
    m_input->append(4);
    QCOMPARE(told, (QStringList{QStringLiteral("added"), QStringLiteral("removed 1"), QStringLiteral("updated 2 7"),
                                QStringLiteral("after")}));
    QCOMPARE(mirror.take(), QStringList{QStringLiteral("reset")});
    QCOMPARE(mirror.items(), (QList<int>{7, 3, 4}));
    QCOMPARE(mirror.complaint(), QString());
}

void TstCachedObservableList::announcesWhatAFunctionThrewAt()
{
    iface::ListMirror<int> mirror(m_list);
    m_cached->setAddFunction({});
    QVERIFY_THROWS_EXCEPTION(boost::bad_function_call, m_input->append(4));
    m_cached->setRemoveFunction([](int, int) { throw std::runtime_error("no"); });
    QVERIFY_THROWS_EXCEPTION(std::runtime_error, m_input->remove(0));
    QCOMPARE(mirror.take(), (QStringList{QStringLiteral("added 3"), QStringLiteral("removed 0")}));
    m_input->update(0, 8);
    QCOMPARE(mirror.items(), (QList<int>{8, 3, 4}));
    QCOMPARE(mirror.complaint(), QString());
}

void TstCachedObservableList::livesThroughAHandlerThatDropsIt()
{
    int calls = 0;
    m_cached->setAddFunction([&](int, int) {
        ++calls;
        m_cached.reset();
        m_list = ObservableList<int>();
    });
    m_input->append(4);
    m_input->append(5);
    QCOMPARE(calls, 1);
}

ZEL_TEST(TstCachedObservableList)
#include "tst_cachedobservablelist.moc"
