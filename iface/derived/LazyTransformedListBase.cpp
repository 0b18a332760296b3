// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/LazyTransformedListBase.h>

#include "derived/IndexTranslation.h"
#include "observables/MostRuns.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/Intake.h>

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>
#include <vector>

using namespace Qt::StringLiterals;

namespace iface::detail {

/// One place per key, marked and with an entry if the item is kept.
struct LazyTransformedListBase::Private : Intake
{
    class Mapping : public Follower
    {
    public:
        explicit Mapping(Private* owner)
            : d(owner)
        {
        }

    protected:
        void mark(const Change& change) override
        {
            if (change.kind == Change::Keys)
                d->mappingChanged(*change.keys);
        }

    private:
        Private* const d;
    };

    Private(LazyTransformedListBase* list, ObservableListImpl* inputList, ObservableMapImplBase* map, int limit);

    Entry* entry(int index) const { return static_cast<Entry*>(places.item(index)); }

    QVariant compute(int index);
    void registerRead(int index) const;
    bool keep(int index, Entry* made);
    void makeRoom();
    void forget(int index);
    void forgetAll();
    void destroy(Entry* entry);

    void take(const Change& change) override;
    Change takeInput(const Change& change);
    void mappingChanged(const ChangedKeys& changed);
    void setDirty(Entry* entry, bool withKey);
    void setAllDirty(bool withKeys);
    void move(const IndexMapper& mapper);

    bool announcesKeys() const { return !input || input->announcesEveryReadItem(); }

    LazyTransformedListBase* const q;
    ObservableListImpl* const input;
    ObservableMapImplBase* const mapping;
    const int cacheLimit;
    IndexedSequence places;
    std::vector<Entry*> dirty; ///< null for those that are gone
    std::vector<Entry*> asked; ///< to be used again
    Mapping mappingFollower;
    int reads = 0; ///< under way
};

LazyTransformedListBase::Private::Private(LazyTransformedListBase* list, ObservableListImpl* inputList,
                                          ObservableMapImplBase* map, int limit)
    : Intake(*list)
    , q(list)
    , input(inputList)
    , mapping(map)
    , cacheLimit(std::max(limit, 1))
    , mappingFollower(this)
{
    follow(input);
    places.reset(inputCount());
    if (mapping)
        mappingFollower.follow(*mapping);
}

/// Of an item that is not kept.
QVariant LazyTransformedListBase::Private::compute(int index)
{
    if (reads == MostRuns)
        return QVariant(); // the map reads the item that it is being asked for
    const QScopedValueRollback<int> reading(reads, reads + 1);
    // The list may change while an item is computed, and what is asked for with it.
    QVariant value;
    for (int run = 0; run < MostRuns && index < places.size(); ++run) {
        if (const Entry* const kept = entry(index))
            return q->valueOf(*kept);
        const unsigned before = generation();
        const ObservableTracker::Suspension untracked;
        Entry* const made = q->createEntry(input->itemAt(index));
        value = q->valueOf(*made);
        const bool isCurrent = before == generation();
        if (!isCurrent || !keep(index, made))
            q->destroyEntry(made);
        if (isCurrent)
            return value;
        catchUp();
    }
    return index < places.size() ? value : QVariant();
}

/// Not while the list takes something in, or if the item is kept meanwhile.
bool LazyTransformedListBase::Private::keep(int index, Entry* made)
{
    if (isTaking())
        return false;
    const unsigned before = generation();
    makeRoom(); // values that go may run anything, reads of this list included
    if (before != generation() || entry(index))
        return false;
    places.setItem(index, made);
    places.setMarked(index, true);
    q->enterKey(*made);
    return true;
}

/// Depending on a list that forgets means depending on what it makes its items of.
void LazyTransformedListBase::Private::registerRead(int index) const
{
    if (q->announcesEveryReadItem())
        return;
    if (cacheLimit != std::numeric_limits<int>::max()) {
        for (const Observable* const madeOf :
             {static_cast<const Observable*>(mapping), static_cast<const Observable*>(input)}) {
            if (madeOf)
                ObservableTracker::getterCalled(madeOf);
        }
    }
    if (!announcesKeys())
        input->itemAt(index);
}

void LazyTransformedListBase::Private::makeRoom()
{
    if (places.markedCount() >= cacheLimit)
        forgetAll();
}

void LazyTransformedListBase::Private::forget(int index)
{
    places.setMarked(index, false);
    destroy(static_cast<Entry*>(places.setItem(index, nullptr)));
}

void LazyTransformedListBase::Private::forgetAll()
{
    while (places.markedCount() > 0)
        forget(places.select(places.markedCount() - 1));
}

void LazyTransformedListBase::Private::destroy(Entry* entry)
{
    if (!entry)
        return;
    if (entry->m_isDirty)
        std::replace(dirty.begin(), dirty.end(), entry, static_cast<Entry*>(nullptr));
    q->destroyEntry(entry);
}

void LazyTransformedListBase::Private::take(const Change& change)
{
    Change made = takeInput(fitting(change, places.size()));
    std::exception_ptr thrown;
    QVarLengthArray<int, 8> others;
    // While the map is asked more may become dirty, or even this again: that is for another take.
    asked.clear();
    asked.swap(dirty);
    for (Entry* const each : asked) {
        if (!each)
            continue;
        each->m_isDirty = false;
        if (isOvertaken()) {
            setDirty(each, true);
            continue;
        }
        const int index = places.indexOf(*each);
        try {
            const bool isKeyDirty = std::exchange(each->m_isKeyDirty, false);
            const QVariant item = isKeyDirty ? input->itemAt(index) : QVariant();
            if (q->derive(*each, isKeyDirty ? &item : nullptr))
                others.append(index);
        } catch (...) {
            thrown = thrown ? thrown : std::current_exception();
        }
    }
    if (others.size() == 1)
        made = merged(made, {Change::Updated, others.first()});
    else if (others.size() > 1)
        made = merged(made, {Change::Data});
    if (made.kind != Change::None)
        q->note(made);
    if (thrown)
        std::rethrow_exception(thrown);
}

/// Takes in what makes the list another as a whole, and has the rest derived anew.
Change LazyTransformedListBase::Private::takeInput(const Change& change)
{
    const int count = inputCount();
    switch (change.kind) {
    case Change::None:
        return change;
    case Change::Added:
        places.insert(change.index);
        return change;
    case Change::Removed:
        destroy(static_cast<Entry*>(places.remove(change.index)));
        return change;
    case Change::Updated:
        setDirty(entry(change.index), true);
        return {};
    default:
        break;
    }
    if (change.kind == Change::Moved && change.mapper) {
        move(*change.mapper);
    } else if (count == places.size()) {
        setAllDirty(true);
        return {};
    } else {
        forgetAll();
        places.reset(count);
    }
    return change;
}

void LazyTransformedListBase::Private::mappingChanged(const ChangedKeys& changed)
{
    QVarLengthArray<Entry*, 8> found;
    if (q->findEntries(changed, found)) {
        for (Entry* const each : found)
            setDirty(each, !announcesKeys());
    } else {
        setAllDirty(!announcesKeys());
    }
    if (!dirty.empty() || reads > 0)
        markBehind();
}

/// A kept key is the key list's as long as that has not said otherwise, if it is one that says so.
void LazyTransformedListBase::Private::setDirty(Entry* entry, bool withKey)
{
    if (!entry)
        return;
    entry->m_isKeyDirty |= withKey;
    if (!std::exchange(entry->m_isDirty, true))
        dirty.push_back(entry);
}

void LazyTransformedListBase::Private::setAllDirty(bool withKeys)
{
    for (int rank = 0; rank < places.markedCount(); ++rank)
        setDirty(entry(places.select(rank)), withKeys);
}

void LazyTransformedListBase::Private::move(const IndexMapper& mapper)
{
    const int count = inputCount();
    IndexTranslation translate(mapper);
    std::vector<int> translated(places.markedCount());
    for (int rank = 0; rank < places.markedCount(); ++rank)
        translated[rank] = translate(places.select(rank), count);

    IndexedSequence before;
    before.swap(places);
    places.reset(count);
    int rank = 0;
    for (const int to : translated) {
        auto* const entry = static_cast<Entry*>(before.setItem(before.select(rank++), nullptr));
        if (to < 0 || places.isMarked(to)) {
            destroy(entry);
            continue;
        }
        places.setItem(to, entry);
        places.setMarked(to, true);
    }
}

LazyTransformedListBase::LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping,
                                                 int cacheLimit)
    : d(std::make_unique<Private>(this, input, mapping, cacheLimit))
{
}

LazyTransformedListBase::~LazyTransformedListBase() = default;

void LazyTransformedListBase::dropEntries()
{
    d->close(); // values that go may run anything
    d->mappingFollower.detach();
    d->forgetAll();
}

int LazyTransformedListBase::childCount(const QVariantList& indexPath) const
{
    d->catchUp();
    return indexPath.isEmpty() ? d->places.size() : 0;
}

QVariant LazyTransformedListBase::data(const QVariantList& indexPath) const
{
    return itemAt(indexOfPath(indexPath));
}

int LazyTransformedListBase::mostEntries() const
{
    return std::min(d->cacheLimit, d->places.size());
}

QVariant LazyTransformedListBase::itemAt(int index) const
{
    d->catchUp();
    if (index < 0)
        return QVariant();
    if (index >= d->places.size()) {
        // Known under this name and number to whoever reads logs; they do not follow the source.
        ZEL_IFACE_LOG("LazyTransformedObservableList.h", 101, LogLevel::Error, LogCategory::General,
                      u"Index out of bounds accessing LazyTransformedObservableList!"_s);
        return QVariant();
    }
    if (ObservableTracker::currentGetterCalledSet())
        d->registerRead(index);
    const Entry* const kept = d->entry(index);
    return kept ? valueOf(*kept) : d->compute(index);
}

bool LazyTransformedListBase::announcesEveryReadItem() const
{
    return d->cacheLimit == std::numeric_limits<int>::max() && d->announcesKeys();
}

} // namespace iface::detail
