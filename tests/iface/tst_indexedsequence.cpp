// SPDX-License-Identifier: Apache-2.0
#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/detail/IndexedSequence.h>

#include <QtTest>

#include <algorithm>
#include <memory>
#include <vector>

using iface::detail::IndexedSequence;

namespace {

/// The same sequence as plain entries.
struct Entry
{
    bool marked = false;
    IndexedSequence::Item* item = nullptr;
};

} // namespace

class TstIndexedSequence : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void followsANaiveSequenceThroughRandomOperations();
    void findsItsPlacesAfterAReset();
    void letsItsItemsGoWhenItIsDestroyed();

private:
    void compareWhole(const IndexedSequence& sequence, const std::vector<Entry>& model);
};

void TstIndexedSequence::compareWhole(const IndexedSequence& sequence, const std::vector<Entry>& model)
{
    QCOMPARE(sequence.size(), int(model.size()));
    int rank = 0;
    for (int i = 0; i < sequence.size(); ++i) {
        QCOMPARE(sequence.isMarked(i), model[i].marked);
        QCOMPARE(sequence.item(i), model[i].item);
        QCOMPARE(sequence.rank(i), rank);
        if (model[i].item)
            QCOMPARE(sequence.indexOf(*model[i].item), i);
        if (model[i].marked)
            QCOMPARE(sequence.select(rank++), i);
    }
    QCOMPARE(sequence.markedCount(), rank);
    QCOMPARE(sequence.rank(sequence.size()), rank);
}

void TstIndexedSequence::followsANaiveSequenceThroughRandomOperations()
{
    QRandomGenerator random = seededRandom();
    for (const int growth : {9, 5, 1}) { // of ten operations that change the length, how many insert
        constexpr int Start = 3000;
        std::vector<std::unique_ptr<IndexedSequence::Item>> items;
        IndexedSequence sequence;
        std::vector<Entry> model(Start);
        sequence.reset(Start);

        for (int step = 0; step < 6000; ++step) {
            const int size = int(model.size());
            const int operation = random.bounded(4);
            // Runs at one place as well as jumps: the sequence remembers where it looked last.
            const int place = random.bounded(3) ? random.bounded(size + 1) : std::min(size, step % 700);
            if (operation == 0 && random.bounded(10) < growth) {
                IndexedSequence::Item* item = nullptr;
                if (random.bounded(2))
                    item = items.emplace_back(std::make_unique<IndexedSequence::Item>()).get();
                sequence.insert(place, item);
                model.insert(model.begin() + place, Entry{false, item});
            } else if (operation == 0 && place < size) {
                QCOMPARE(sequence.remove(place), model[place].item);
                if (model[place].item)
                    QVERIFY(!model[place].item->isPlaced());
                model.erase(model.begin() + place);
            } else if (operation == 1 && place < size) {
                model[place].marked = random.bounded(2);
                sequence.setMarked(place, model[place].marked);
            } else if (operation == 2 && place < size) {
                auto* const item = items.emplace_back(std::make_unique<IndexedSequence::Item>()).get();
                QCOMPARE(sequence.setItem(place, item), model[place].item);
                model[place].item = item;
            } else if (place < size) {
                const auto before =
                    std::count_if(model.begin(), model.begin() + place, [](auto& e) { return e.marked; });
                QCOMPARE(sequence.rank(place), int(before));
                if (model[place].marked)
                    QCOMPARE(sequence.select(int(before)), place);
                if (model[place].item)
                    QCOMPARE(sequence.indexOf(*model[place].item), place);
            }
            if (step % 500 == 0)
                compareWhole(sequence, model);
        }
        compareWhole(sequence, model);
        while (!model.empty()) {
            const int place = random.bounded(int(model.size()));
            sequence.remove(place);
            model.erase(model.begin() + place);
        }
        compareWhole(sequence, model);
        sequence.insert(0);
        model.insert(model.begin(), Entry());
        compareWhole(sequence, model);
    }
}

void TstIndexedSequence::findsItsPlacesAfterAReset()
{
    IndexedSequence sequence;
    IndexedSequence::Item item;
    sequence.insert(0, &item);
    sequence.setMarked(0, true);
    for (const int count : {0, 1, 511, 512, 513, 1024, 1025}) {
        sequence.reset(count);
        compareWhole(sequence, std::vector<Entry>(count));
        QVERIFY(!item.isPlaced());
    }
}

void TstIndexedSequence::letsItsItemsGoWhenItIsDestroyed()
{
    IndexedSequence::Item item;
    {
        IndexedSequence sequence;
        sequence.insert(0, &item);
        IndexedSequence other;
        other.swap(sequence);
        QVERIFY(item.isPlaced());
        QCOMPARE(other.indexOf(item), 0);
    }
    QVERIFY(!item.isPlaced());
}

ZEL_TEST_WITHOUT_APPLICATION(TstIndexedSequence)
#include "tst_indexedsequence.moc"
