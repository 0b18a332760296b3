// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/LazyTransformedListBase.h>

#include "derived/IndexTranslation.h"
#include "observables/MostRuns.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <limits>
#include <utility>

using namespace Qt::StringLiterals;

namespace iface::detail {

LazyTransformedListBase::LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping,
                                                 int cacheLimit)
    : m_cacheLimit(std::max(cacheLimit, 1))
{
    follow(input);
    m_places.reset(inputCount());
    if (mapping)
        m_mapping.follow(*mapping);
}

void LazyTransformedListBase::dropEntries()
{
    close();
    m_mapping.detach();
    forgetAll();
}

bool LazyTransformedListBase::announcesEveryReadItem() const
{
    return m_cacheLimit == std::numeric_limits<int>::max() && announcesKeys();
}

QVariant LazyTransformedListBase::item(int index) const
{
    if (index >= count()) {
        // Known under this name and number to whoever reads logs; they do not follow the source.
        ZEL_IFACE_LOG("LazyTransformedObservableList.h", 101, LogLevel::Error, LogCategory::General,
                      u"Index out of bounds accessing LazyTransformedObservableList!"_s);
        return QVariant();
    }
    if (ObservableTracker::currentGetterCalledSet())
        registerRead(index);
    const Entry* const kept = entry(index);
    return kept ? valueOf(*kept) : const_cast<LazyTransformedListBase*>(this)->compute(index);
}

/// Of an item that is not kept.
QVariant LazyTransformedListBase::compute(int index)
{
    if (m_reads == MostRuns)
        return QVariant(); // the map reads the item that it is being asked for
    const Hold hold(*this);
    const QScopedValueRollback<int> reading(m_reads, m_reads + 1);
    // The list may change while an item is computed, and what is asked for with it.
    QVariant value;
    for (int run = 0; run < MostRuns && index < m_places.size(); ++run) {
        if (const Entry* const kept = entry(index))
            return valueOf(*kept);
        const unsigned before = generation();
        const ObservableTracker::Suspension untracked;
        Entry* const made = createEntry(input()->itemAt(index));
        value = valueOf(*made);
        const bool isCurrent = before == generation();
        if (!isCurrent || !keep(index, made))
            destroyEntry(made);
        if (isCurrent)
            return value;
        catchUp();
    }
    return index < m_places.size() ? value : QVariant();
}

/// Not while the list takes something in, or if the item is kept meanwhile.
bool LazyTransformedListBase::keep(int index, Entry* made)
{
    if (isTaking())
        return false;
    const unsigned before = generation();
    if (m_places.markedCount() >= m_cacheLimit)
        forgetAll(); // values that go may run anything, reads of this list included
    if (before != generation() || entry(index))
        return false;
    m_places.setItem(index, made);
    m_places.setMarked(index, true);
    enterKey(*made);
    return true;
}

/// Depending on a list that forgets means depending on what it makes its items of.
void LazyTransformedListBase::registerRead(int index) const
{
    if (m_cacheLimit != std::numeric_limits<int>::max()) {
        if (const Observable* const mapping = m_mapping.observable())
            ObservableTracker::getterCalled(mapping);
        ObservableTracker::getterCalled(input().data());
    }
    if (!announcesKeys())
        input()->itemAt(index);
}

void LazyTransformedListBase::forgetAll()
{
    while (m_places.markedCount() > 0) {
        const int last = m_places.select(m_places.markedCount() - 1);
        m_places.setMarked(last, false);
        destroy(static_cast<Entry*>(m_places.setItem(last, nullptr)));
    }
}

void LazyTransformedListBase::destroy(Entry* entry)
{
    if (!entry)
        return;
    if (entry->m_isDirty)
        std::replace(m_dirty.begin(), m_dirty.end(), entry, static_cast<Entry*>(nullptr));
    destroyEntry(entry);
}

void LazyTransformedListBase::take(const Change& change)
{
    Change made = takeInput(fitting(change, m_places.size()));
    // While the map is asked more may become dirty, or even this again: that is for another take.
    m_asked.clear();
    m_asked.swap(m_dirty);
    for (Entry* const each : m_asked) {
        if (!each)
            continue;
        each->m_isDirty = false;
        if (isOvertaken()) {
            setDirty(each, true);
            continue;
        }
        const int index = m_places.indexOf(*each);
        thrown().guard([&] {
            const bool isKeyDirty = std::exchange(each->m_isKeyDirty, false);
            const QVariant item = isKeyDirty ? input()->itemAt(index) : QVariant();
            if (derive(*each, isKeyDirty ? &item : nullptr))
                made = merged(made, {Change::Updated, index});
        });
    }
    if (made.kind != Change::None)
        note(made);
}

/// Takes in what makes the list another as a whole, and has the rest derived anew.
Change LazyTransformedListBase::takeInput(const Change& change)
{
    switch (change.kind) {
    case Change::None:
        return change;
    case Change::Added:
        m_places.insert(change.index);
        return change;
    case Change::Removed:
        destroy(static_cast<Entry*>(m_places.remove(change.index)));
        return change;
    case Change::Updated:
        setDirty(entry(change.index), true);
        return {};
    default:
        break;
    }
    const int countNow = inputCount();
    if (change.kind == Change::Moved && change.mapper) {
        move(*change.mapper, countNow);
    } else if (countNow == count()) {
        setAllDirty(true);
        return {};
    } else {
        forgetAll();
        m_places.reset(countNow);
    }
    return change;
}

void LazyTransformedListBase::mappingChanged(const Change& change)
{
    if (change.kind != Change::Keys)
        return;
    QVarLengthArray<Entry*, 8> found;
    if (findEntries(*change.keys, found)) {
        for (Entry* const each : found)
            setDirty(each, !announcesKeys());
    } else {
        setAllDirty(!announcesKeys());
    }
    if (!m_dirty.empty() || m_reads > 0)
        markBehind();
}

/// A kept key is the key list's as long as that has not said otherwise, if it is one that says so.
void LazyTransformedListBase::setDirty(Entry* entry, bool withKey)
{
    if (!entry)
        return;
    entry->m_isKeyDirty |= withKey;
    if (!std::exchange(entry->m_isDirty, true))
        m_dirty.push_back(entry);
}

void LazyTransformedListBase::setAllDirty(bool withKeys)
{
    for (int rank = 0; rank < m_places.markedCount(); ++rank)
        setDirty(entry(m_places.select(rank)), withKeys);
}

void LazyTransformedListBase::move(const IndexMapper& mapper, int countNow)
{
    IndexTranslation translate(mapper);
    std::vector<int> translated(m_places.markedCount());
    for (int rank = 0; rank < m_places.markedCount(); ++rank)
        translated[rank] = translate(m_places.select(rank), countNow);

    IndexedSequence before;
    before.swap(m_places);
    m_places.reset(countNow);
    int rank = 0;
    for (const int to : translated) {
        auto* const entry = static_cast<Entry*>(before.setItem(before.select(rank++), nullptr));
        if (to < 0 || m_places.isMarked(to)) {
            destroy(entry);
            continue;
        }
        m_places.setItem(to, entry);
        m_places.setMarked(to, true);
    }
}

} // namespace iface::detail
