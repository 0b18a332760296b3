// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/LazyTransformedListBase.h>

#include "IndexTranslation.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>
#include <iface/detail/ListFollower.h>

#include <QtDebug>

#include <algorithm>
#include <exception>
#include <limits>
#include <utility>
#include <vector>

namespace iface::detail {

namespace {

/// A map that changes what it is being asked for is asked again this often.
constexpr int MaximumRounds = 16;

/// Mostly one.
using Indexes = QVarLengthArray<int, 8>;

} // namespace

/// One place per key, marked and with an entry if the item is kept.
///
/// Computing kept items again is a step: while it runs, no change of the key list is taken in (the step then ends with
/// everything forgotten) and changes of the map wait for the step's end. So places and entries stay put whatever the
/// map does when it is asked, and all is whole before anything is announced. A read is no step: it announces nothing,
/// and what happens while it computes is taken in at once.
struct LazyTransformedListBase::Private
{
    class Input : public ListFollower
    {
    public:
        explicit Input(Private* owner)
            : d(owner)
        {
        }

    protected:
        void heard(const ListChange& change, bool isNext) override { d->takeIn(change, isNext); }

    private:
        Private* const d;
    };

    class Mapping : public LightObserver
    {
    public:
        explicit Mapping(Private* owner)
            : d(owner)
        {
        }

    protected:
        void observableChanged() override {}
        void keysChanged(const ChangedKeys& changed) override { d->mappingChanged(changed); }

    private:
        Private* const d;
    };

    Private(LazyTransformedListBase* list, ObservableListImpl* inputList, ObservableMapImplBase* map, int limit);

    int inputCount() const { return input ? input->childCount(QVariantList()) : 0; }
    QVariant inputItem(int index) const { return input ? input->itemAt(index) : QVariant(); }
    Entry* entry(int index) const { return static_cast<Entry*>(places.item(index)); }

    QVariant read(int index);
    void registerRead(int index) const;
    bool deriveNew(Entry& entry);
    bool deriveAgain(int index, bool isKeyKept);
    void makeRoom();
    void forget(int index);
    void forgetAll();
    void destroy(Entry* entry);

    void takeIn(const ListChange& change, bool isNext);
    void added(int index);
    void updated(int index);
    void removed(int index);
    void changed(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper);
    void mappingChanged(const ChangedKeys& changed);
    void move(const IndexMapper& mapper);
    void resynchronise();

    bool isInStep(int index, int growth) const;
    Indexes keptIndexes() const;
    Indexes affectedBy(const ChangedKeys& changed) const;
    bool areKeysSure() const;
    void perform(const Indexes& indexes, bool isKeyKept);
    void finishStep(const Indexes& indexes, bool isKeyKept, std::exception_ptr& exception);
    void announceChanged(const Indexes& indexes);

    LazyTransformedListBase* const q;
    ObservableListImpl* const input;
    ObservableMapImplBase* const mapping;
    const int cacheLimit;
    IndexedSequence places;
    Input inputObserver;
    Mapping mappingObserver;
    Watch* watches = nullptr;
    bool isStepping = false;
    bool isOutOfStep = false;
    std::vector<MapChange> deferred;
};

LazyTransformedListBase::Private::Private(LazyTransformedListBase* list, ObservableListImpl* inputList,
                                          ObservableMapImplBase* map, int limit)
    : q(list)
    , input(inputList)
    , mapping(map)
    , cacheLimit(std::max(limit, 1))
    , inputObserver(this)
    , mappingObserver(this)
{
    places.reset(inputCount());
    inputObserver.follow(input);
    if (mapping)
        mappingObserver.observe(*mapping);
}

QVariant LazyTransformedListBase::Private::read(int index)
{
    // The list may change while an item is computed, and what is asked for with it.
    for (int round = 0; round < MaximumRounds && index < places.size(); ++round) {
        Entry* kept = entry(index);
        if (kept && kept->m_isDerived)
            return q->valueOf(*kept);
        if (kept)
            break; // the map reads the item that it is being asked for
        makeRoom();
        kept = q->createEntry();
        places.setItem(index, kept);
        places.setMarked(index, true);
        if (deriveNew(*kept))
            return q->valueOf(*kept);
    }
    return QVariant();
}

/// Depending on a list that forgets means depending on what it makes its items of.
void LazyTransformedListBase::Private::registerRead(int index) const
{
    if (!ObservableTracker::currentGetterCalledSet() || q->announcesEveryReadItem())
        return;
    if (mapping && cacheLimit != std::numeric_limits<int>::max())
        ObservableTracker::getterCalled(mapping);
    if (input && !input->announcesEveryReadItem())
        input->itemAt(index);
}

/// Whether the entry is still there, derived.
bool LazyTransformedListBase::Private::deriveNew(Entry& entry)
{
    const ObservableTracker::Suspension untracked;
    const Watch watch(*q, entry);
    entry.m_isBeingDerived = true;
    try {
        for (int round = 0; round < MaximumRounds; ++round) {
            entry.m_hasChangedMeanwhile = false;
            const QVariant key = inputItem(places.indexOf(entry));
            if (!watch.isThere())
                return false;
            q->derive(entry, watch, &key);
            if (!watch.isThere())
                return false;
            if (!entry.m_hasChangedMeanwhile)
                break;
        }
    } catch (...) {
        if (watch.isThere())
            forget(places.indexOf(entry));
        throw;
    }
    entry.m_isBeingDerived = false;
    entry.m_isDerived = true;
    return true;
}

/// Whether the kept item at the index is another now. Only within a step, so nothing moves meanwhile.
bool LazyTransformedListBase::Private::deriveAgain(int index, bool isKeyKept)
{
    Entry* const kept = entry(index);
    if (!kept)
        return false;
    if (!kept->m_isDerived) {
        kept->m_hasChangedMeanwhile = true;
        return false;
    }
    const Watch watch(*q, *kept);
    const bool wasBeingDerived = std::exchange(kept->m_isBeingDerived, true);
    bool isOther = false;
    try {
        if (isKeyKept) {
            isOther = q->derive(*kept, watch, nullptr);
        } else {
            const QVariant key = inputItem(index);
            isOther = q->derive(*kept, watch, &key);
        }
    } catch (...) {
        kept->m_isBeingDerived = wasBeingDerived;
        throw;
    }
    kept->m_isBeingDerived = wasBeingDerived;
    return isOther;
}

void LazyTransformedListBase::Private::makeRoom()
{
    if (places.markedCount() < cacheLimit)
        return;
    // Values that go may run anything, reads of this list included.
    for (int rank = places.markedCount() - 1; rank >= 0; rank = std::min(rank, places.markedCount()) - 1) {
        const int index = places.select(rank);
        if (!entry(index)->m_isBeingDerived)
            forget(index);
    }
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
    for (Watch* watch = watches; watch; watch = watch->m_outer) {
        if (watch->m_entry == entry)
            watch->m_entry = nullptr;
    }
    q->destroyEntry(entry);
}

/// Takes in what the key list announced.
void LazyTransformedListBase::Private::takeIn(const ListChange& change, bool isNext)
{
    const Announcement announcement(*q); // values that go, and the map when it is asked, may run anything
    if (!isNext || isStepping)
        return resynchronise();
    ListFollower::deliver(change, *this);
}

void LazyTransformedListBase::Private::added(int index)
{
    if (index > places.size() || !isInStep(index, 1))
        return resynchronise();
    places.insert(index);
    q->fireItemAdded(index);
}

void LazyTransformedListBase::Private::removed(int index)
{
    if (index >= places.size() || !isInStep(index, -1))
        return resynchronise();
    destroy(static_cast<Entry*>(places.remove(index)));
    q->fireItemRemoved(index);
}

void LazyTransformedListBase::Private::updated(int index)
{
    if (index >= places.size() || !isInStep(index, 0))
        return resynchronise();
    perform(Indexes{index}, false);
}

void LazyTransformedListBase::Private::changed(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    if (type == ChangeType::IndexesChanged && mapper) {
        move(*mapper);
    } else {
        const int count = inputCount();
        if (count == places.size())
            return perform(keptIndexes(), false);
        forgetAll();
        places.reset(count);
    }
    q->fireItemsChanged(type, mapper);
}

void LazyTransformedListBase::Private::mappingChanged(const ChangedKeys& changed)
{
    if (isStepping)
        deferred.push_back(changed.toMapChange());
    else
        perform(affectedBy(changed), areKeysSure());
}

Indexes LazyTransformedListBase::Private::keptIndexes() const
{
    Indexes indexes;
    for (int rank = 0; rank < places.markedCount(); ++rank)
        indexes.append(places.select(rank));
    return indexes;
}

/// The places of what is kept under the keys that changed, or of everything if those are not known.
Indexes LazyTransformedListBase::Private::affectedBy(const ChangedKeys& changed) const
{
    QVarLengthArray<Entry*, 8> found;
    if (!q->findEntries(changed, found))
        return keptIndexes();
    Indexes indexes;
    for (const Entry* const entry : found)
        indexes.append(places.indexOf(*entry));
    std::sort(indexes.begin(), indexes.end());
    indexes.erase(std::unique(indexes.begin(), indexes.end()), indexes.end());
    return indexes;
}

/// Whether a kept key is the key list's as long as that has not said otherwise.
bool LazyTransformedListBase::Private::areKeysSure() const
{
    return !input || input->announcesEveryReadItem();
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

/// Forgets everything: changes came in another order than they were made, or while items were computed again.
void LazyTransformedListBase::Private::resynchronise()
{
    if (isStepping) {
        isOutOfStep = true;
        return;
    }
    forgetAll();
    places.reset(inputCount());
    q->fireItemsChanged(ChangeType::Reset, nullptr);
}

bool LazyTransformedListBase::Private::isInStep(int index, int growth) const
{
    return index >= 0 && inputCount() == places.size() + growth;
}

/// Computes again what is kept at the indexes, announces what is another now, and does the same for what the map
/// announced meanwhile. The first exception, of the map or of an observer, waits until all is done.
void LazyTransformedListBase::Private::perform(const Indexes& indexes, bool isKeyKept)
{
    const Announcement announcement(*q);
    std::exception_ptr exception;
    finishStep(indexes, isKeyKept, exception);
    for (int round = 0; announcement.isAlive() && !deferred.empty(); ++round) {
        if (round == MaximumRounds) {
            qWarning("iface: a map keeps changing what it is asked for; its items stay as they were read last");
            deferred.clear();
            break;
        }
        const MapChange change = deferred.front();
        deferred.erase(deferred.begin());
        finishStep(affectedBy(ChangedKeys(change)), areKeysSure(), exception);
    }
    if (exception)
        std::rethrow_exception(exception);
}

void LazyTransformedListBase::Private::finishStep(const Indexes& indexes, bool isKeyKept, std::exception_ptr& exception)
{
    const auto keepFirst = [&exception] { exception = exception ? exception : std::current_exception(); };
    Indexes others;
    isStepping = true;
    for (const int index : indexes) {
        try {
            if (!isOutOfStep && deriveAgain(index, isKeyKept))
                others.append(index);
        } catch (...) {
            keepFirst();
        }
    }
    isStepping = false;
    try {
        if (std::exchange(isOutOfStep, false))
            resynchronise();
        else
            announceChanged(others);
    } catch (...) {
        keepFirst();
    }
}

void LazyTransformedListBase::Private::announceChanged(const Indexes& indexes)
{
    if (indexes.size() == 1)
        q->fireItemUpdated(indexes.first());
    else if (indexes.size() > 1)
        q->fireItemsChanged(ChangeType::DataChanged, nullptr);
}

LazyTransformedListBase::Watch::Watch(const LazyTransformedListBase& list, Entry& entry)
    : m_list(list)
    , m_entry(&entry)
    , m_outer(std::exchange(list.d->watches, this))
{
}

LazyTransformedListBase::Watch::~Watch()
{
    m_list.d->watches = m_outer;
}

LazyTransformedListBase::LazyTransformedListBase(ObservableListImpl* input, ObservableMapImplBase* mapping,
                                                 int cacheLimit)
    : d(std::make_unique<Private>(this, input, mapping, cacheLimit))
{
}

LazyTransformedListBase::~LazyTransformedListBase() = default;

void LazyTransformedListBase::dropEntries()
{
    d->isStepping = true; // values that go may run anything: nothing is taken in any more
    d->forgetAll();
}

int LazyTransformedListBase::childCount(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() ? d->places.size() : 0;
}

bool LazyTransformedListBase::hasChildren(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() && d->places.size() > 0;
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
    if (index < 0)
        return QVariant();
    if (index >= d->places.size()) {
        // Known under this name and number to whoever reads logs; they do not follow the source.
        ZEL_IFACE_LOG("LazyTransformedObservableList.h", 101, LogLevel::Error, LogCategory::General,
                      QStringLiteral("Index out of bounds accessing LazyTransformedObservableList!"));
        return QVariant();
    }
    d->registerRead(index);
    return d->read(index);
}

bool LazyTransformedListBase::announcesEveryReadItem() const
{
    return d->cacheLimit == std::numeric_limits<int>::max() && (!d->input || d->input->announcesEveryReadItem());
}

} // namespace iface::detail
