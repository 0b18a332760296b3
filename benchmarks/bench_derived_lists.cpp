// SPDX-License-Identifier: Apache-2.0
// What derived lists cost at 1,000 to 100,000 items, beside Qt's proxy models and a vector kept by hand in the same
// run: compare the ratios.
#include <iface/BaseListImpl.h>
#include <iface/CachedObservableList.h>
#include <iface/FilteredObservableList.h>
#include <iface/ObservableMap.h>
#include <iface/TransformedObservableList.h>
#include <iface/WritableObservableValue.h>

#include <QtCore/QAbstractListModel>
#include <QtCore/QIdentityProxyModel>
#include <QtCore/QSortFilterProxyModel>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <vector>

namespace {

using Number = iface::WritableObservableValue<int>;
using ListImpl = iface::ObservableListImpl;

std::vector<int> shuffled(int count)
{
    std::vector<int> order(std::size_t(count), 0);
    std::iota(order.begin(), order.end(), 0);
    std::shuffle(order.begin(), order.end(), std::mt19937(1));
    return order;
}

class NumberList : public iface::BaseListImpl<int>
{
public:
    explicit NumberList(int count)
    {
        for (int i = 0; i < count; ++i)
            m_list.append(i);
    }
    void update(int index) { fireItemUpdated(index); }
};

/// Items name a value each, and pass while it is above zero. Nobody tells the list whose value changed.
struct Filtered
{
    Filtered(int count, int value)
    {
        for (int i = 0; i < count; ++i)
            values.emplace_back(new Number(value));
        list = iface::FilteredObservableList<int>::create(iface::ObservableList<int>(new NumberList(count)),
                                                          [this](int i) { return values[i]->getValue() > 0; });
    }
    void set(int item, int value) { values[item]->setValue(value); }
    int size() const { return list.size(); }

    std::vector<QExplicitlySharedDataPointer<Number>> values;
    iface::ObservableList<int> list;
};

/// The same as Qt has it; the model says which row changed.
class NumberModel : public QAbstractListModel
{
public:
    NumberModel(int count, int value)
        : values(std::size_t(count), value)
    {
    }
    int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : int(values.size()); }
    QVariant data(const QModelIndex& index, int role) const override
    {
        return role == Qt::DisplayRole ? QVariant(values[index.row()]) : QVariant();
    }
    void set(int row, int value)
    {
        values[row] = value;
        const QModelIndex changed = index(row);
        Q_EMIT dataChanged(changed, changed, {Qt::DisplayRole});
    }
    std::vector<int> values;
};

class AboveZero : public QSortFilterProxyModel
{
public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        return sourceModel()->index(row, 0, parent).data().toInt() > 0;
    }
};

struct Proxied
{
    Proxied(int count, int value)
        : model(count, value)
    {
        proxy.setSourceModel(&model);
        proxy.rowCount(); // builds its mapping, which it otherwise puts off
    }
    void set(int item, int value) { model.set(item, value); }
    int size() const { return proxy.rowCount(); }

    NumberModel model;
    AboveZero proxy;
};

/// A sorted vector of what passes; told what changed, tells nobody.
struct ByHand
{
    ByHand(int count, int value)
        : values(std::size_t(count), value)
    {
        for (int i = 0; i < count && value > 0; ++i)
            passing.push_back(i);
    }
    void set(int item, int value)
    {
        const bool passed = values[item] > 0;
        values[item] = value;
        if (passed == (value > 0))
            return;
        const auto place = std::lower_bound(passing.begin(), passing.end(), item);
        if (passed)
            passing.erase(place);
        else
            passing.insert(place, item);
    }
    int size() const { return int(passing.size()); }

    std::vector<int> values;
    std::vector<int> passing;
};

template <class List>
void flipOne(benchmark::State& state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    List list(count, 0);
    for (int i = 0; i < count; i += 2)
        list.set(order[i], 1);
    std::vector<char> isOn(std::size_t(count), 0);
    for (int i = 0; i < count; i += 2)
        isOn[order[i]] = 1;
    int next = 0;
    for (auto _ : state) {
        const int item = order[next];
        isOn[item] = !isOn[item];
        list.set(item, isOn[item]);
        next = next + 1 == count ? 0 : next + 1;
    }
    benchmark::DoNotOptimize(list.size());
}

template <class List>
void fillOneByOne(benchmark::State& state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    for (auto _ : state) {
        state.PauseTiming();
        {
            List list(count, 0);
            state.ResumeTiming();
            for (const int item : order)
                list.set(item, 1);
            if (list.size() != count)
                state.SkipWithError("items are missing");
            state.PauseTiming();
        }
        state.ResumeTiming();
    }
    state.SetItemsProcessed(state.iterations() * count);
}

template <class List>
void changeNothing(benchmark::State& state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    List list(count, 1);
    int next = 0;
    int value = 2;
    for (auto _ : state) {
        list.set(order[next], value);
        next = next + 1 == count ? 0 : next + 1;
        value = next == 0 ? value + 1 : value;
    }
}

/// A map that has every key's value at hand.
class NumberMap : public iface::ObservableMapImpl<int, int>
{
public:
    explicit NumberMap(int count)
        : values(std::size_t(count), 0)
    {
    }
    int get(const int& key) const override { return values[key]; }
    void set(int key, int value)
    {
        values[key] = value;
        fireMapChanged(iface::MapChange::createSingle(key));
    }
    std::vector<int> values;
};

struct Transformed
{
    explicit Transformed(int count)
        : map(new NumberMap(count))
        , list(iface::TransformedObservableList::create<int, int>(
              iface::ObservableList<int>(new NumberList(count)), iface::ObservableMap<int, int>(map.data()),
              iface::LazyTransformedObservableListImpl<int, int>::KeepsEverything))
    {
        list.toList();
    }
    void set(int item, int value) { map->set(item, value); }
    int read(int item) const { return list[item]; }

    QExplicitlySharedDataPointer<NumberMap> map;
    iface::ObservableList<int> list;
};

class Doubled : public QIdentityProxyModel
{
public:
    QVariant data(const QModelIndex& index, int role) const override
    {
        return QIdentityProxyModel::data(index, role).toInt() * 2;
    }
};

struct Mapped
{
    explicit Mapped(int count)
        : model(count, 0)
    {
        proxy.setSourceModel(&model);
    }
    void set(int item, int value) { model.set(item, value); }
    int read(int item) const { return proxy.index(item, 0).data().toInt(); }

    NumberModel model;
    Doubled proxy;
};

template <class List>
void readKept(benchmark::State& state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    List list(count);
    int next = 0;
    for (auto _ : state) {
        benchmark::DoNotOptimize(list.read(order[next]));
        next = next + 1 == count ? 0 : next + 1;
    }
}

template <class List>
void changeOne(benchmark::State& state)
{
    const int count = int(state.range(0));
    const std::vector<int> order = shuffled(count);
    List list(count);
    int next = 0;
    int value = 1;
    for (auto _ : state) {
        list.set(order[next], value);
        next = next + 1 == count ? 0 : next + 1;
        value = next == 0 ? value + 1 : value;
    }
}

// clang-format off
BENCHMARK_TEMPLATE(flipOne, ByHand)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(flipOne, Filtered)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(flipOne, Proxied)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(fillOneByOne, ByHand)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(fillOneByOne, Filtered)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(fillOneByOne, Proxied)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(changeNothing, Filtered)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(changeNothing, Proxied)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(readKept, Transformed)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(readKept, Mapped)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(changeOne, Transformed)->RangeMultiplier(10)->Range(1000, 100000);
BENCHMARK_TEMPLATE(changeOne, Mapped)->RangeMultiplier(10)->Range(1000, 100000);
// clang-format on

} // namespace
