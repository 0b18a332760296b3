// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/BaseListImpl.h>
#include <iface/ItemMovedMapper.h>
#include <iface/ObservableList.h>
#include <iface/ObservableMap.h>
#include <iface/PrecomputedMapper.h>
#include <iface/Round.h>
#include <iface/WritableObservableValue.h>

#include <QHash>
#include <QList>
#include <QRandomGenerator>

#include <algorithm>
#include <functional>

/// A list that a test edits at will; every edit is announced as it should be.
template <class T>
class EditableList : public iface::BaseListImpl<T>
{
    using ChangeType = iface::ObservableListImpl::ChangeType;

public:
    EditableList() = default;
    explicit EditableList(const QList<T>& items) { this->m_list = items; }

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
        this->m_list.move(from, to);
        this->fireItemsChanged(ChangeType::IndexesChanged, QSharedPointer<iface::ItemMovedMapper>::create(from, to));
    }
    /// Entry i tells where item i goes, -1 drops it; what is `fresh` fills the places that stay free.
    void rearrange(const QList<int>& newIndexes, const QList<T>& fresh)
    {
        const auto kept = newIndexes.size() - newIndexes.count(-1);
        QList<T> items(kept + fresh.size());
        QList<bool> isTaken(items.size());
        for (int i = 0; i < newIndexes.size(); ++i) {
            if (newIndexes.at(i) < 0)
                continue;
            items[newIndexes.at(i)] = this->m_list.at(i);
            isTaken[newIndexes.at(i)] = true;
        }
        int next = 0;
        for (int i = 0; i < items.size(); ++i) {
            if (!isTaken.at(i))
                items[i] = fresh.at(next++);
        }
        this->m_list = items;
        this->fireItemsChanged(ChangeType::IndexesChanged,
                               QSharedPointer<iface::PrecomputedMapper>::create(newIndexes));
    }
    /// The same length, other contents.
    void replaceData(const QList<T>& items) { replace(items, ChangeType::DataChanged); }
    void reset(const QList<T>& items) { replace(items, ChangeType::Reset); }
    void changeWithoutMapper(const QList<T>& items) { replace(items, ChangeType::IndexesChanged); }

private:
    void replace(const QList<T>& items, typename ChangeType::Type type)
    {
        this->m_list = items;
        this->fireItemsChanged(type, {});
    }
};

template <class T>
using EditableListPointer = QExplicitlySharedDataPointer<EditableList<T>>;

/// Makes one random edit of any kind with items that `makeItem` gives. The list stays below about `limit` items.
template <class T>
void editAtRandom(EditableList<T>& list, QRandomGenerator& random, const std::function<T()>& makeItem, int limit = 100)
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
        // Items keep on in another order, some without a place.
        const QList<T> fresh = makeItems(random.bounded(4));
        const int dropped = random.bounded(std::min(size, 4) + 1);
        QList<int> newIndexes;
        for (int i = 0; i < size - dropped + int(fresh.size()); ++i)
            newIndexes.append(i);
        std::shuffle(newIndexes.begin(), newIndexes.end(), random);
        newIndexes.resize(size - dropped);
        for (int i = 0; i < dropped; ++i)
            newIndexes.insert(random.bounded(int(newIndexes.size()) + 1), -1);
        return list.rearrange(newIndexes, fresh);
    }
    if (kind == 10)
        return list.replaceData(makeItems(size));
    const QList<T> other = makeItems(random.bounded(std::min(2 * size, limit)));
    return random.bounded(2) ? list.reset(other) : list.changeWithoutMapper(other);
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

/// A map of plain contents that announces any set of keys, or none, and counts how often it is asked.
template <class K, class V>
class PlainMap : public iface::ObservableMapImpl<K, V>
{
public:
    V get(const K& key) const override
    {
        ++gets;
        if (whenAsked)
            whenAsked(key);
        return contents.value(key);
    }
    void set(const QHash<K, V>& changes)
    {
        for (auto it = changes.begin(); it != changes.end(); ++it)
            contents.insert(it.key(), it.value());
        this->fireMapChanged(iface::MapChange::create(changes.keys()));
    }
    void setQuietly(const K& key, const V& value)
    {
        contents.insert(key, value);
        this->fireMapChanged(iface::MapChange());
    }

    QHash<K, V> contents;
    std::function<void(const K&)> whenAsked;
    mutable int gets = 0;
};
