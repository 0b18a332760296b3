// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/BaseListImpl.h>
#include <iface/BaseMap.h>
#include <iface/CachedObservableList.h>
#include <iface/Change.h>
#include <iface/CompositeMap.h>
#include <iface/FilteredObservableList.h>
#include <iface/Follower.h>
#include <iface/ItemMovedMapper.h>
#include <iface/ListMirror.h>
#include <iface/MapObservableToValue.h>
#include <iface/ObservableMonitor.h>
#include <iface/ObservableTracker.h>
#include <iface/PrecomputedMapper.h>
#include <iface/Round.h>
#include <iface/TransformedObservableList.h>
#include <iface/WritableObservableValue.h>
#include <iface/detail/MakeShared.h>

#include <algorithm>
#include <functional>
#include <numeric>

using namespace Qt::StringLiterals;

using ChangeType = iface::ObservableListImpl::ChangeType;
using Number = iface::WritableObservableValue<int>;
using NumberPointer = QExplicitlySharedDataPointer<Number>;

/// A monitor that has run once, and how often it ran.
struct CountedMonitor
{
    explicit CountedMonitor(const std::function<void()>& read)
        : monitor(
              [this, read] {
                  ++runs;
                  read();
              },
              nullptr, QString(), false)
    {
        monitor.handleObservableChanged();
    }

    int runs = 0;
    iface::ObservableMonitor monitor;
};

/// A list that a test edits at will; every edit is announced as it should be.
template <class T>
struct EditableList : iface::BaseListImpl<T>
{
    explicit EditableList(const QList<T>& items = {}) { this->m_list = items; }

    const QList<T>& items() const { return this->m_list; }
    int size() const { return int(this->m_list.size()); }

    void insert(int index, const T& item)
    {
        this->m_list.insert(index, item);
        this->fireItemAdded(index);
    }
    void append(const T& item) { insert(size(), item); }
    void update(int index, const T& item)
    {
        this->m_list[index] = item;
        this->fireItemUpdated(index);
    }
    void remove(int index)
    {
        this->m_list.removeAt(index);
        this->fireItemRemoved(index);
    }
    void move(int from, int to)
    {
        const auto mapper = iface::detail::makeShared<iface::ItemMovedMapper>(from, to);
        this->m_list.move(from, to);
        this->fireItemsChanged(ChangeType::IndexesChanged, mapper);
    }
    /// Entry i tells where in `items` the item i goes, -1 drops it; the other ones are new.
    void rearrange(const QList<int>& newIndexes, QList<T> items)
    {
        const auto mapper = iface::detail::makeShared<iface::PrecomputedMapper>(newIndexes);
        for (int i = 0; i < newIndexes.size(); ++i) {
            if (newIndexes.at(i) >= 0)
                items[newIndexes.at(i)] = this->m_list.at(i);
        }
        this->m_list = items;
        this->fireItemsChanged(ChangeType::IndexesChanged, mapper);
    }
    void replace(const QList<T>& items, ChangeType::Type type = ChangeType::Reset)
    {
        this->m_list = items;
        this->fireItemsChanged(type, {});
    }
};

/// One that is made at once, of these contents, and goes wherever its handle does.
template <class Made, class Handle, class Contents>
struct MadePointer : QExplicitlySharedDataPointer<Made>
{
    explicit MadePointer(const Contents& contents = {})
        : QExplicitlySharedDataPointer<Made>(new Made(contents))
    {
    }
    operator Handle() const { return Handle(this->data()); }
};
template <class T>
using EditableListPointer = MadePointer<EditableList<T>, iface::ObservableList<T>, QList<T>>;

/// A list as somebody else derives one: each item is one more, below a limit.
struct NextNumbers : iface::ObservableListImpl, iface::Follower
{
    NextNumbers(const iface::ObservableList<int>& input, int limit)
        : m_input(input)
        , m_limit(limit)
    {
        follow(*input.impl());
    }

    int childCount(const QVariantList& indexPath) const override { return m_input.impl()->childCount(indexPath); }
    QVariant data(const QVariantList& indexPath) const override
    {
        const QVariant number = m_input.impl()->data(indexPath);
        return number.isValid() ? QVariant((number.toInt() + 1) % m_limit) : number;
    }
    void mark(const iface::Change& change) override { note(change); }

    const iface::ObservableList<int> m_input;
    const int m_limit;
};

/// Makes one edit of any kind, as `random` decides, with items that `makeItem` gives. The list stays below about
/// `limit` items.
template <class T, class Random>
void editAtRandom(EditableList<T>& list, Random& random, const std::function<T()>& makeItem, int limit = 100)
{
    const auto makeItems = [&](int count) {
        QList<T> items;
        while (items.size() < count)
            items.append(makeItem());
        return items;
    };
    const int size = list.size();
    int kind = random.bounded(12);
    if (kind < 4 && size >= limit)
        kind = 6;
    if (kind < 3 || size == 0)
        return list.insert(random.bounded(size + 1), makeItem());
    if (kind == 3)
        return list.append(makeItem());
    if (kind < 6)
        return list.update(random.bounded(size), makeItem());
    if (kind < 8)
        return list.remove(random.bounded(size));
    if (kind == 8)
        return list.move(random.bounded(size), random.bounded(size));
    if (kind == 9) {
        // Items go on in another order among new ones, some without a place.
        const int dropped = random.bounded(std::min(size, 4) + 1);
        const QList<T> items = makeItems(size - dropped + random.bounded(4));
        QList<int> newIndexes(items.size());
        std::iota(newIndexes.begin(), newIndexes.end(), 0);
        for (int i = int(newIndexes.size()) - 1; i > 0; --i)
            std::swap(newIndexes[i], newIndexes[random.bounded(i + 1)]);
        newIndexes.resize(size - dropped);
        for (int i = 0; i < dropped; ++i)
            newIndexes.insert(random.bounded(int(newIndexes.size()) + 1), -1);
        return list.rearrange(newIndexes, items);
    }
    if (kind == 10)
        return list.replace(makeItems(size), ChangeType::DataChanged);
    const QList<T> other = makeItems(random.bounded(std::min(2 * size, limit)));
    list.replace(other, random.bounded(2) ? ChangeType::Reset : ChangeType::IndexesChanged);
}

/// A map that keeps an observable value for every key, and changes as a mirror of a remote list does: the value and
/// what the map has under the key are one change.
template <class K, class V>
class RecordMap : public iface::ObservableMapImpl<K, iface::ObservableValue<V>>
{
    using Value = iface::WritableObservableValue<V>;

public:
    iface::ObservableValue<V> get(const K& key) const override { return iface::ObservableValue<V>(value(key)); }

    void set(const K& key, const V& contents)
    {
        iface::Round::together([&] {
            if (value(key)->setValue(contents))
                this->fireMapChanged(iface::MapChange::createSingle(key));
        });
    }
    /// What is held, without asking as a reader would.
    V peek(const K& key) const { return m_values.contains(key) ? m_values.value(key)->getValue() : V(); }

private:
    Value* value(const K& key) const
    {
        auto& held = m_values[key];
        if (!held)
            held = QExplicitlySharedDataPointer<Value>(new Value);
        return held.data();
    }

    mutable QHash<K, QExplicitlySharedDataPointer<Value>> m_values;
};

/// A map of plain contents that announces any set of keys, and counts how often it is asked.
template <class K, class V>
struct PlainMap : iface::BaseMap<K, V>
{
    explicit PlainMap(const QHash<K, V>& firstContents = {}) { contents = firstContents; }

    void set(const QHash<K, V>& changes)
    {
        contents.insert(changes);
        this->fireMapChanged(iface::MapChange::create(changes.keys()));
    }

    QHash<K, V> contents;
    std::function<void(const K&)> whenAsked;
    mutable int gets = 0;

    V doGet(const K& key) const override
    {
        ++gets;
        const V answer = contents.value(key);
        if (whenAsked)
            whenAsked(key);
        return answer;
    }
};

template <class K, class V>
using PlainMapPointer = MadePointer<PlainMap<K, V>, iface::ObservableMap<K, V>, QHash<K, V>>;

/// The contents of a map's values, as a map.
template <class K, class V>
iface::ObservableMap<K, V> contentsOf(const QExplicitlySharedDataPointer<RecordMap<K, V>>& records)
{
    using Value = iface::ObservableValue<V>;
    return iface::CompositeMap<K, Value, V>::create(iface::ObservableMap<K, Value>(records.data()),
                                                    iface::MapObservableToValue<V>::create());
}
