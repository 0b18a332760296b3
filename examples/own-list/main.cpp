// SPDX-License-Identifier: Apache-2.0
// A list of one's own, and how to find out whether it keeps its word: changed a thousand times at random, with a mirror
// that follows what it announces and another behind a filter.
#include <iface/FilteredObservableList.h>
#include <iface/ListMirror.h>
#include <iface/ObservableList.h>
#include <iface/ObservableListImpl.h>
#include <iface/PrecomputedMapper.h>

#include <QtCore/QRandomGenerator>

#include <cstdio>

/// The numbers from one up to another, none of which it stores.
class Range : public iface::ObservableListImpl
{
public:
    int childCount(const QVariantList& indexPath) const override { return indexPath.isEmpty() ? m_count : 0; }
    QVariant data(const QVariantList& indexPath) const override
    {
        const int index = indexOfPath(indexPath);
        return index >= 0 && index < m_count ? QVariant(m_first + index) : QVariant();
    }

    // Each changes the list first, and then says what it did.

    void growAtTheEnd()
    {
        ++m_count;
        fireItemAdded(m_count - 1);
    }

    void shrinkAtTheFront()
    {
        ++m_first;
        --m_count;
        fireItemRemoved(0);
    }

    /// Those that stay in range move along.
    void slide(int by)
    {
        QList<int> newIndexes;
        for (int i = 0; i < m_count; ++i)
            newIndexes.append(i - by >= 0 && i - by < m_count ? i - by : -1);
        m_first += by;
        fireItemsChanged(ChangeType::IndexesChanged, QSharedPointer<iface::PrecomputedMapper>::create(newIndexes));
    }

    void restart(int first, int count)
    {
        m_first = first;
        m_count = count;
        fireItemsChanged(ChangeType::Reset, {});
    }

private:
    int m_first = 0;
    int m_count = 0;
};

int main()
{
    const QExplicitlySharedDataPointer<Range> range(new Range);
    const iface::ObservableList<int> numbers(range.data());
    const auto even = iface::FilteredObservableList<int>::create(numbers, [](int number) { return number % 2 == 0; });
    iface::ListMirror<int> mirror(numbers);
    iface::ListMirror<int> evenMirror(even);

    auto& random = *QRandomGenerator::global();
    constexpr int Changes = 1000;
    for (int i = 0; i < Changes; ++i) {
        switch (random.bounded(8)) {
        case 0:
            range->restart(random.bounded(100), random.bounded(20));
            break;
        case 1:
            range->slide(random.bounded(-3, 4));
            break;
        case 2:
        case 3:
        case 4:
            if (!numbers.isEmpty()) {
                range->shrinkAtTheFront();
                break;
            }
            [[fallthrough]];
        default:
            range->growAtTheEnd();
        }
        for (const auto* each : {&mirror, &evenMirror}) {
            if (!each->complaint().isEmpty()) {
                std::printf("After %d changes: %s\n", i + 1, qPrintable(each->complaint()));
                return 1;
            }
        }
    }
    std::printf("%d changes, each as it was announced; %d numbers, %d of them even.\n", Changes, numbers.size(),
                even.size());
    return 0;
}
