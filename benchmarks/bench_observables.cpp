// SPDX-License-Identifier: Apache-2.0
// What observing costs, beside what Qt's own signals and properties cost in the same run: compare the ratios.
#include <iface/Follower.h>
#include <iface/LazyLoaderValue.h>
#include <iface/ObservableMonitor.h>
#include <iface/ObservableTracker.h>
#include <iface/ObservableValue.h>
#include <iface/ObserverFunctorAdapter.h>
#include <iface/WritableObservableValue.h>

#include <QtCore/QProperty>

#include <benchmark/benchmark.h>

#include <malloc.h>

#include <memory>
#include <vector>

namespace {

using Writable = iface::WritableObservableValue<int>;
using Value = QExplicitlySharedDataPointer<Writable>;

class Emitter : public QObject
{
    Q_OBJECT

Q_SIGNALS:
    void changed();

public:
    void emitChanged() { Q_EMIT changed(); }
};

class Receiver : public iface::ObserverImpl
{
    Q_OBJECT

public Q_SLOTS:
    void handleObservableChanged() override { ++calls; }

public:
    int calls = 0;
};

class Receiving : public iface::Follower
{
public:
    int calls = 0;

protected:
    void mark(const iface::Change&) override { ++calls; }
};

void notifyByBareSignal(benchmark::State& state)
{
    Emitter emitter;
    Receiver receiver;
    QObject::connect(&emitter, &Emitter::changed, &receiver, &Receiver::handleObservableChanged);
    for (auto _ : state)
        emitter.emitChanged();
    benchmark::DoNotOptimize(receiver.calls);
}
BENCHMARK(notifyByBareSignal);

void notifyOneObserver(benchmark::State& state)
{
    const Value value(new Writable);
    Receiver receiver;
    value->addObserver(&receiver);
    for (auto _ : state)
        value->notifyObservers();
    benchmark::DoNotOptimize(receiver.calls);
}
BENCHMARK(notifyOneObserver);

void notifyOneFollower(benchmark::State& state)
{
    const Value value(new Writable);
    Receiving receiver;
    receiver.follow(*value);
    for (auto _ : state)
        value->notifyObservers();
    benchmark::DoNotOptimize(receiver.calls);
}
BENCHMARK(notifyOneFollower);

void hookByConnection(benchmark::State& state)
{
    Emitter emitter;
    Receiver receiver;
    for (auto _ : state)
        QObject::disconnect(
            QObject::connect(&emitter, &Emitter::changed, &receiver, &Receiver::handleObservableChanged));
}
BENCHMARK(hookByConnection);

void hookOneObserver(benchmark::State& state)
{
    const Value value(new Writable);
    const Receiver receiver;
    for (auto _ : state) {
        value->addObserver(&receiver);
        value->removeObserver(&receiver);
    }
}
BENCHMARK(hookOneObserver);

void hookOneFollower(benchmark::State& state)
{
    const Value value(new Writable);
    Receiving receiver;
    for (auto _ : state) {
        receiver.follow(*value);
        receiver.detach();
    }
}
BENCHMARK(hookOneFollower);

// A monitor whose runs read one value or another in turn: one dependency goes, one comes.
void hookOneDependency(benchmark::State& state)
{
    const Value which(new Writable);
    const Value values[] = {Value(new Writable), Value(new Writable)};
    int sum = 0;
    iface::ObservableMonitor monitor([&] { sum += values[which->getValue()]->getValue(); }, nullptr, QString(), false);
    monitor.handleObservableChanged();
    for (auto _ : state)
        which->setValue(1 - which->getValue());
    benchmark::DoNotOptimize(sum);
}
BENCHMARK(hookOneDependency);

void rerunByPropertyBinding(benchmark::State& state)
{
    QProperty<int> a;
    QProperty<int> b;
    QProperty<int> sum;
    sum.setBinding([&] { return a.value() + b.value(); });
    int seen = 0;
    const auto handler = sum.onValueChanged([&] { seen = sum.value(); });
    int next = 0;
    for (auto _ : state)
        a.setValue(++next);
    benchmark::DoNotOptimize(seen);
}
BENCHMARK(rerunByPropertyBinding);

void rerunMonitorOfTwo(benchmark::State& state)
{
    const Value a(new Writable);
    const Value b(new Writable);
    int seen = 0;
    iface::ObservableMonitor monitor([&] { seen = a->getValue() + b->getValue(); }, nullptr, QString(), false);
    monitor.handleObservableChanged();
    int next = 0;
    for (auto _ : state)
        a->setValue(++next);
    benchmark::DoNotOptimize(seen);
}
BENCHMARK(rerunMonitorOfTwo);

// One of many monitors runs again; the others have nothing to do with it.
void rerunOneMonitorOfMany(benchmark::State& state)
{
    std::vector<Value> values;
    std::vector<std::unique_ptr<iface::ObservableMonitor>> monitors;
    int seen = 0;
    for (int i = 0; i <= state.range(0); ++i)
        values.emplace_back(new Writable);
    for (int i = 0; i < state.range(0); ++i) {
        monitors.push_back(std::make_unique<iface::ObservableMonitor>(
            [&values, &seen, i] { seen = values[i]->getValue() + values[i + 1]->getValue(); }, nullptr, QString(),
            false));
        monitors.back()->handleObservableChanged();
    }
    int next = 0;
    for (auto _ : state)
        values[0]->setValue(++next);
    benchmark::DoNotOptimize(seen);
}
BENCHMARK(rerunOneMonitorOfMany)->Arg(1)->Arg(1000);

void readUntracked(benchmark::State& state)
{
    const Value value(new Writable(1));
    int sum = 0;
    for (auto _ : state)
        benchmark::DoNotOptimize(sum += value->getValue());
}
BENCHMARK(readUntracked);

// Bytes of one lazily loaded value with one observer of a container, contents left out.
void memoryPerValue(benchmark::State& state)
{
    using Loaded = iface::LazyLoaderValue<QString, int>;
    constexpr int Count = 1000;
    double bytes = 0;
    for (auto _ : state) {
        const auto before = mallinfo2().uordblks;
        std::vector<QExplicitlySharedDataPointer<Loaded>> values;
        values.reserve(Count);
        std::vector<Receiving> receivers(Count);
        for (int i = 0; i < Count; ++i) {
            values.emplace_back(new Loaded);
            receivers[static_cast<std::size_t>(i)].follow(*values.back());
        }
        bytes = static_cast<double>(mallinfo2().uordblks - before) / Count;
    }
    state.counters["bytes"] = bytes;
}
BENCHMARK(memoryPerValue)->Iterations(10);

} // namespace

#include "bench_observables.moc"
