// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/LazyTransformedListBase.h>

#include "derived/IndexTranslation.h"
#include "rounds/MostRuns.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QScopeGuard>
#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <limits>
#include <memory>
#include <new>
#include <utility>

using namespace Qt::StringLiterals;

namespace iface::detail {

/// How many items may be made for the sake of each other, in a row.
constexpr int MostDepth = 200;

LazyTransformedListBase::LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping,
                                                 int cacheLimit)
    : m_cacheLimit(std::max(cacheLimit, 1))
{
    follow(input);
    m_places.reset(inputCount());
    if (mapping)
        m_mapping.follow(*mapping);
}

void LazyTransformedListBase::Mapping::mark(const Change& change)
{
    try {
        m_owner->mappingChanged(change);
    } catch (...) {
        m_owner->takeInAnew();
        m_owner->markBehind();
        throw;
    }
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
    if (ObservableTracker::currentGetterCalledSet()) {
        registerRead();
        if (!announcesKeys()) {
            const Hold hold(*this);
            static_cast<void>(inputItem(index)); // which may run anything
            return ObservableTracker::runUntracked([&] { return itemAt(index); });
        }
    }
    auto* const self = const_cast<LazyTransformedListBase*>(this);
    Entry* const kept = entry(index);
    if (!kept || kept->m_isUnmade)
        return self->compute(index);
    // The map that is being asked finds one that is dirty. Before the list's turn all may be forgotten meanwhile.
    if (kept->isDirty() && m_depth > 0 && isTaking() && !isTooDeep()) {
        self->deriveAnew(*kept);
        return self->compute(index);
    }
    return valueOf(*kept);
}

/// Whether an item hangs on itself, or on too many others in a row for the stack.
bool LazyTransformedListBase::isTooDeep() const
{
    if (m_depth < MostDepth)
        return false;
    ZEL_IFACE_LOG("LazyTransformedListBase.cpp", __LINE__, LogLevel::Error, LogCategory::General,
                  u"An item is made of too many others of its list; it may be incomplete"_s);
    return true;
}

/// Of an item that is not kept.
QVariant LazyTransformedListBase::compute(int index)
{
    if (isTooDeep())
        return QVariant();
    const Hold hold(*this);
    const QScopedValueRollback<int> reading(m_depth, m_depth + 1);
    // The list may change while an item is computed, and what is asked for with it.
    QVariant value;
    for (int run = 0; run < MostRuns && index < m_places.size(); ++run) {
        if (const Entry* const kept = entry(index); kept && !kept->m_isUnmade)
            return valueOf(*kept);
        const unsigned before = generation();
        const ObservableTracker::Suspension untracked;
        QVariant inputItem;
        const auto destroy = [this](Entry* entry) { destroyEntry(entry); };
        std::unique_ptr<Entry, decltype(destroy)> made(nullptr, destroy);
        auto takeAnew = qScopeGuard([this] { takeInAnew(); }); // whoever got nothing has to hear in the end
        try {
            inputItem = this->inputItem(index);
            made.reset(createEntry(inputItem, true));
        } catch (...) {
            // Once it can be had the list says so, to whoever has tried to read it.
            made.reset(createEntry(inputItem, false));
            made->m_isUnmade = true;
            made->m_isKeyDirty = !inputItem.isValid();
            if (before == generation() && keep(index, made.get())) {
                static_cast<void>(made.release());
                takeAnew.dismiss();
            }
            throw;
        }
        value = valueOf(*made);
        const bool isCurrent = before == generation();
        if (isCurrent && keep(index, made.get()))
            static_cast<void>(made.release());
        made.reset();
        takeAnew.dismiss();
        if (isCurrent)
            return value;
        catchUp();
    }
    return index < m_places.size() ? value : QVariant();
}

/// Not while the list takes something in, nor if the item is there meanwhile, nor where a call below this one on the
/// stack may be deriving it.
bool LazyTransformedListBase::keep(int index, Entry* made)
{
    if (isTaking())
        return false;
    if (m_places.markedCount() >= m_cacheLimit) {
        const unsigned before = generation();
        forgetAll(); // values that go may run anything, reads of this list included
        if (before != generation())
            return false;
    }
    Entry* const other = entry(index);
    if (other && (!other->m_isUnmade || m_depth > 1))
        return false;
    made->m_isUntold = other != nullptr;
    enterKey(*made);
    m_places.setItem(index, made);
    m_places.setMarked(index, true);
    destroy(other); // last: that may run anything
    return true;
}

/// Depending on a list that forgets means depending on what it makes its items of.
void LazyTransformedListBase::registerRead() const
{
    if (m_cacheLimit == std::numeric_limits<int>::max())
        return;
    if (const Observable* const mapping = m_mapping.observable())
        ObservableTracker::getterCalled(mapping);
    ObservableTracker::getterCalled(input().data());
}

void LazyTransformedListBase::forgetAll()
{
    while (m_places.markedCount() > 0) {
        const int index = m_places.select(m_places.markedCount() - 1);
        m_places.setMarked(index, false);
        destroy(static_cast<Entry*>(m_places.setItem(index, nullptr)));
    }
}

void LazyTransformedListBase::destroy(Entry* entry)
{
    if (entry)
        destroyEntry(entry);
}

void LazyTransformedListBase::take(const Change& change)
{
    // What is not derived for want of memory is made when it is read.
    auto forgetThem = qScopeGuard([this] { forgetAll(); });
    m_made = takeInput(fitting(change, m_places.size()));
    // While the map is asked more may become dirty, or even this again: that is for another take.
    m_asked.swap(m_dirty);
    while (!m_asked.empty() && !isOvertaken())
        deriveAnew(m_asked.front());
    for (Entry& each : m_asked)
        each.m_isKeyDirty = true;
    m_dirty.splice(m_dirty.end(), m_asked);
    if (m_made.kind != Change::None)
        note(std::exchange(m_made, Change()));
    forgetThem.dismiss();
}

void LazyTransformedListBase::deriveAnew(Entry& entry)
{
    const QScopedValueRollback<int> deriving(m_depth, m_depth + 1);
    const int index = m_places.indexOf(entry);
    entry.m_dirtyHook.unlink();
    const bool wasUnmade = entry.m_isUnmade;
    bool isOther = true;
    thrown().guard([&] {
        try {
            isOther = deriveParts(entry, index);
        } catch (const std::bad_alloc&) {
            entry.m_isUnmade = true; // until it is read; it stays, for it may be derived further down as well
            throw;
        } catch (...) {
            isOther = entry.m_isUnmade && !wasUnmade;
            throw;
        }
    });
    if (isOther)
        m_made = merged(m_made, {Change::Updated, index});
}

/// Tells whether whoever has read the entry has to hear of it.
bool LazyTransformedListBase::deriveParts(Entry& entry, int index)
{
    if (entry.m_isKeyDirty) {
        // What was made of another key says nothing of this one, nor of one that cannot be read.
        const bool wasUnmade = std::exchange(entry.m_isUnmade, true);
        const QVariant inputItem = this->inputItem(index);
        entry.m_isKeyDirty = false;
        entry.m_isUnmade = deriveKey(entry, inputItem) || wasUnmade;
    }
    const bool isOther = derive(entry);
    const bool wasUnmade = std::exchange(entry.m_isUnmade, false);
    return std::exchange(entry.m_isUntold, false) || wasUnmade || isOther;
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
        if (Entry* const kept = entry(change.index))
            setDirty(*kept, true);
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
            setDirty(*each, !announcesKeys());
    } else {
        setAllDirty(!announcesKeys());
    }
    if (!m_dirty.empty() || m_depth > 0)
        markBehind();
}

/// A kept key is the key list's as long as that has not said otherwise, if it is one that says so.
void LazyTransformedListBase::setDirty(Entry& entry, bool withKey)
{
    entry.m_isKeyDirty |= withKey;
    if (!entry.isDirty())
        m_dirty.push_back(entry);
}

void LazyTransformedListBase::setAllDirty(bool withKeys)
{
    for (int rank = 0; rank < m_places.markedCount(); ++rank)
        setDirty(*entry(m_places.select(rank)), withKeys);
}

void LazyTransformedListBase::move(const IndexMapper& mapper, int countNow)
{
    if (const auto* const move = moveWithin(countNow, mapper); move && countNow == count())
        return m_places.move(move->from(), move->to());
    IndexTranslation translate(mapper);
    std::vector<int> translated(m_places.markedCount());
    for (int rank = 0; rank < m_places.markedCount(); ++rank)
        translated[rank] = translate(m_places.select(rank), countNow);

    IndexedSequence before;
    before.reset(countNow);
    before.swap(m_places);
    int rank = 0;
    const auto destroyOthers = qScopeGuard([&] { // which there was no memory to move
        for (; rank < before.markedCount(); ++rank)
            destroy(static_cast<Entry*>(before.setItem(before.select(rank), nullptr)));
    });
    while (rank < before.markedCount()) {
        const int to = translated[rank];
        auto* const entry = static_cast<Entry*>(before.setItem(before.select(rank++), nullptr));
        auto destroyIt = qScopeGuard([this, entry] { destroy(entry); });
        if (to < 0 || m_places.isMarked(to))
            continue;
        m_places.setItem(to, entry);
        destroyIt.dismiss();
        m_places.setMarked(to, true);
    }
}

} // namespace iface::detail
