// SPDX-License-Identifier: Apache-2.0
#include "DerivedListFixtures.h"

#include <common/TestMain.h>
#include <common/SeededRandom.h>

#include <iface/CachedObservableList.h>
#include <iface/CompositeMap.h>
#include <iface/FilteredObservableList.h>
#include <iface/ListMirror.h>
#include <iface/MapObservableToValue.h>
#include <iface/TransformedObservableList.h>

#include <QtTest>

#include <stdexcept>

using iface::ObservableList;
using iface::ObservableMap;
using Value = iface::ObservableValue<QString>;
using Cached = iface::CachedObservableList<QString>;
using ChangeType = iface::ObservableListImpl::ChangeType;

namespace {

/// Ids, the records behind them, those that are not empty, and a copy of that.
struct Chain
{
    explicit Chain(int count)
    {
        for (int i = 0; i < count; ++i)
            ids->append(i);
        const auto contents = iface::CompositeMap<int, Value, QString>::create(
            ObservableMap<int, Value>(records.data()), iface::MapObservableToValue<QString>::create());
        transformed = iface::TransformedObservableList::create<int, QString>(
            ObservableList<int>(ids.data()), contents,
            iface::LazyTransformedObservableListImpl<int, QString>::KeepsEverything);
        const auto filtered =
            iface::FilteredObservableList<QString>::create(transformed, [this](const QString& record) {
                ++judgements;
                return !record.isEmpty();
            });
        cached = QExplicitlySharedDataPointer<Cached>(new Cached(filtered));
        view = ObservableList<QString>(cached.data());
    }

    QList<QString> expected() const
    {
        QList<QString> filled;
        for (const int id : ids->items()) {
            if (!records->peek(id).isEmpty())
                filled.append(records->peek(id));
        }
        return filled;
    }

    EditableListPointer<int> ids{new EditableList<int>};
    QExplicitlySharedDataPointer<RecordMap<int, QString>> records{new RecordMap<int, QString>};
    ObservableList<QString> transformed;
    QExplicitlySharedDataPointer<Cached> cached;
    ObservableList<QString> view;
    int judgements = 0;
};

} // namespace

class TstDerivedListChain : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void announcesEachChangeOfARecordOnce();
    void tellsOfEachChangeThatIsMadeMeanwhile();
    void survivesHandlersThatEditAndThrow();
    void takesItsLastInputAndEveryKey();
    void costsTheSameForAChangeAtAnyLength();
};

// Value and key are one change; the value is not announced while any list still holds the old item.
void TstDerivedListChain::announcesEachChangeOfARecordOnce()
{
    for (const int count : {0, 1, 149, 150, 151, 1000}) {
        Chain chain(count);
        iface::ListMirror<QString> mirror(chain.view);
        for (int id = 0; id < count; ++id) {
            chain.records->set(id, QStringLiteral("first %1").arg(id));
            QCOMPARE(mirror.take(), QStringList{QStringLiteral("added %1").arg(id)});
        }
        for (int id = 0; id < count; ++id) {
            chain.records->set(id, QStringLiteral("second %1").arg(id));
            QCOMPARE(mirror.take(), QStringList{QStringLiteral("updated %1").arg(id)});
        }
        for (int id = count - 1; id >= 0; --id) {
            chain.records->set(id, id % 2 ? QString() : QStringLiteral("second %1").arg(id));
            QCOMPARE(mirror.take(), id % 2 ? QStringList{QStringLiteral("removed %1").arg(id)} : QStringList());
        }
        chain.ids->append(count);
        QCOMPARE(mirror.take(), QStringList());
        chain.records->set(count, QStringLiteral("late"));
        QCOMPARE(mirror.take(), QStringList{QStringLiteral("added %1").arg((count + 1) / 2)});
        chain.ids->remove(count);
        QCOMPARE(mirror.take(), QStringList{QStringLiteral("removed %1").arg((count + 1) / 2)});
        QCOMPARE(mirror.items(), chain.expected());
        QCOMPARE(mirror.complaint(), QString());
    }
}

// As a slot of the application does that spins an event loop in which more comes: each change is told, once, in order.
void TstDerivedListChain::tellsOfEachChangeThatIsMadeMeanwhile()
{
    for (const int count : {1, 149, 150, 151, 1000}) {
        Chain chain(count + 1);
        for (int id = 0; id <= count; ++id)
            chain.records->set(id, QString::number(id));
        QStringList told;
        chain.cached->setUpdateFunction([&](int index, const QString& before, const QString& after) {
            told.append(QStringLiteral("%1 %2 %3").arg(index).arg(before, after));
            QCOMPARE(chain.view.toList(), chain.expected());
            if (after == QLatin1String("first")) {
                chain.records->set(0, QStringLiteral("second"));
                chain.ids->remove(count);
                chain.records->set(0, QStringLiteral("third"));
            }
        });
        chain.cached->setRemoveFunction(
            [&](int index, const QString& item) { told.append(QStringLiteral("-%1 %2").arg(index).arg(item)); });
        chain.records->set(0, QStringLiteral("first"));
        QCOMPARE(told, (QStringList{QStringLiteral("0 0 first"), QStringLiteral("0 first second"),
                                    QStringLiteral("-%1 %1").arg(count), QStringLiteral("0 second third")}));
    }
}

void TstDerivedListChain::survivesHandlersThatEditAndThrow()
{
    QRandomGenerator random = seededRandom();
    const std::function<int()> makeId = [&] { return random.bounded(40); };
    Chain chain(10);
    iface::ListMirror<QString> mirror(chain.view);
    const auto change = [&] {
        if (random.bounded(3))
            chain.records->set(makeId(), random.bounded(3) ? QString::number(random.bounded(50)) : QString());
        else
            editAtRandom(*chain.ids, random, makeId);
    };
    int depth = 0;
    bool mayThrow = false;
    const auto react = [&] {
        if (depth >= 2)
            return;
        ++depth;
        if (random.bounded(2))
            change();
        --depth;
        if (mayThrow && random.bounded(10) == 0)
            throw std::runtime_error("handler");
    };
    chain.cached->setAddFunction([&](int, const QString&) { react(); });
    chain.cached->setRemoveFunction([&](int, const QString&) { react(); });
    chain.cached->setUpdateFunction([&](int, const QString&, const QString&) { react(); });
    chain.cached->setChangeFunction([&](auto&&...) { react(); });
    connect(chain.view.impl(), &iface::ObservableImpl::observableChanged, this, react);
    for (int step = 0; step < 2000; ++step) {
        change();
        QCOMPARE(mirror.items(), chain.expected());
        QCOMPARE(mirror.complaint(), QString());
    }
    // Whoever threw, every list is whole.
    mayThrow = true;
    int thrown = 0;
    for (int step = 0; step < 500; ++step) {
        depth = 0;
        try {
            change();
        } catch (const std::runtime_error&) {
            ++thrown;
        }
        QCOMPARE(chain.view.toList(), chain.expected());
    }
    QVERIFY(thrown > 0);
}

void TstDerivedListChain::takesItsLastInputAndEveryKey()
{
    QExplicitlySharedDataPointer<PlainMap<int, int>> map(new PlainMap<int, int>);
    EditableListPointer<int> keys(new EditableList<int>({1, 2}));
    const auto mapped = iface::TransformedObservableList::create<int, int>(ObservableList<int>(keys.data()),
                                                                           ObservableMap<int, int>(map.data()));
    QExplicitlySharedDataPointer<iface::CachedObservableList<int>> copy(new iface::CachedObservableList<int>);
    EditableListPointer<int> other(new EditableList<int>({7}));
    map->whenAsked = [&](int) {
        if (map->gets == 1)
            copy->setInput(ObservableList<int>(other.data()));
    };
    copy->setInput(mapped); // another input is set while this one is read
    QCOMPARE(ObservableList<int>(copy.data()).toList(), QList<int>{7});

    QCOMPARE(mapped.toList(), (QList<int>{0, 0}));
    map->contents = {{1, 10}, {2, 20}};
    map->fireMapChanged(iface::MapChange::create(QList<int>())); // something changed, and no key says what
    QCOMPARE(mapped.toList(), (QList<int>{10, 20}));
}

void TstDerivedListChain::costsTheSameForAChangeAtAnyLength()
{
    for (const int count : {10, 5000}) {
        Chain chain(count);
        for (int id = 0; id < count; ++id)
            chain.records->set(id, QString::number(id));
        QCOMPARE(chain.judgements, 2 * count); // each once empty, once filled
        chain.records->set(count / 2, QStringLiteral("other"));
        chain.ids->remove(0);
        QCOMPARE(chain.judgements, 2 * count + 1);
    }
}

ZEL_TEST(TstDerivedListChain)
#include "tst_derivedlistchain.moc"
