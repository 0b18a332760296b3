// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/FilteredListBase.h>

#include "IndexTranslation.h"
#include "ItemDependencies.h"

#include <iface/ObservableTracker.h>
#include <iface/PrecomputedMapper.h>
#include <iface/detail/IndexedSequence.h>
#include <iface/detail/ListFollower.h>

#include <QtDebug>

#include <algorithm>
#include <exception>
#include <utility>

namespace iface::detail {

namespace {

/// A filter that changes what it reads, or the input, is given this many runs to settle.
constexpr int MaximumRounds = 16;

/// What is to be announced.
struct Change
{
    enum Kind { None, Added, Updated, Removed, Wholesale };
    using Type = ObservableListImpl::ChangeType::Type;

    static Change item(Kind kind, int index) { return {kind, index, Type(), nullptr}; }
    static Change wholesale(Type type, const QSharedPointer<ObservableListImpl::IndexMapper>& mapper)
    {
        return {Wholesale, -1, type, mapper};
    }

    Kind kind = None;
    int index = -1;
    Type type = ObservableListImpl::ChangeType::Reset;
    QSharedPointer<ObservableListImpl::IndexMapper> mapper;
};

} // namespace

/// One place per input item, marked if the item passes, with a node if its verdict depends on anything.
///
/// Everything that calls the filter is a step: while it runs, no change of the input is taken in (the step then ends
/// with the list made anew) and items that become dirty wait for the step's end. So places and nodes stay put for as
/// long as the filter runs, whatever it does, and all is whole before anything is announced.
struct FilteredListBase::Private
{
    using Node = ItemDependencies::Node;

    class Input : public ListFollower
    {
    public:
        explicit Input(Private* owner)
            : d(owner)
        {
        }

    protected:
        void heard(const ListChange& change, bool isNext) override
        {
            d->perform([&] { return isNext ? deliver(change, *d) : d->outOfStep(); });
        }

    private:
        Private* const d;
    };

    Private(FilteredListBase* list, ObservableListImpl* inputList);
    ~Private()
    {
        isStepping = true; // letting go of what was read may run anything: nothing is taken in any more
        releaseNodes(places);
    }

    int inputCount() const { return input ? input->childCount(QVariantList()) : 0; }

    Change added(int index);
    Change updated(int index);
    Change removed(int index);
    Change changed(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper);
    Change rebuilt(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper);
    Change remapped(const IndexMapper& mapper);
    Change judgedAnew();
    Change outOfStep();

    bool isInStep(int index, int growth) const;
    bool judge(int index);
    void setNode(int index, Node* node);
    void releaseNodes(IndexedSequence& sequence);
    FilterFlips flips();

    template <class Step>
    void perform(Step step);
    template <class Step>
    void finishStep(Step step, std::exception_ptr& exception);
    template <class Step>
    Change takeStep(Step step, std::exception_ptr& exception);
    void announce(const Change& change);

    FilteredListBase* const q;
    ObservableListImpl* const input;
    IndexedSequence places;
    ItemDependencies dependencies;
    Input follower;
    std::vector<int> turned;
    bool isStepping = false;
    bool isOutOfStep = false;
    std::exception_ptr thrown; ///< by the filter in the step under way
};

FilteredListBase::Private::Private(FilteredListBase* list, ObservableListImpl* inputList)
    : q(list)
    , input(inputList)
    , dependencies([this] { isStepping ? void() : perform([this] { return judgedAnew(); }); })
    , follower(this)
{
    follower.follow(input);
}

template <class Step>
void FilteredListBase::Private::perform(Step step)
{
    if (isStepping) {
        isOutOfStep = true;
        return;
    }
    const Announcement announcement(*q);
    std::exception_ptr exception;
    finishStep(step, exception);
    for (int round = 0; announcement.isAlive() && dependencies.hasDirty(); ++round) {
        if (round == MaximumRounds) {
            qWarning("iface: a filter keeps changing what it reads; its items stay as they were judged last");
            dependencies.takeDirty();
            break;
        }
        finishStep([this] { return judgedAnew(); }, exception);
    }
    if (exception)
        std::rethrow_exception(exception);
}

/// Takes the step and announces it. The first exception, of the filter or of an observer, waits in `exception` until
/// all is done.
template <class Step>
void FilteredListBase::Private::finishStep(Step step, std::exception_ptr& exception)
{
    try {
        const Change change = takeStep(step, exception);
        announce(change);
    } catch (...) {
        exception = exception ? exception : std::current_exception();
    }
}

template <class Step>
Change FilteredListBase::Private::takeStep(Step step, std::exception_ptr& exception)
{
    isStepping = true;
    Change change;
    try {
        change = step();
    } catch (...) {
        exception = std::current_exception();
        isOutOfStep = true;
    }
    for (int round = 0; std::exchange(isOutOfStep, false); ++round) {
        if (round == MaximumRounds) {
            qWarning("iface: a filter keeps changing its input; the filtered list may be incomplete");
            break;
        }
        change = rebuilt(ChangeType::Reset, nullptr);
    }
    isStepping = false;
    if (thrown)
        exception = std::exchange(thrown, nullptr);
    return change;
}

void FilteredListBase::Private::announce(const Change& change)
{
    switch (change.kind) {
    case Change::None:
        break;
    case Change::Added:
        q->fireItemAdded(change.index);
        break;
    case Change::Updated:
        q->fireItemUpdated(change.index);
        break;
    case Change::Removed:
        q->fireItemRemoved(change.index);
        break;
    case Change::Wholesale:
        q->fireItemsChanged(change.type, change.mapper);
        break;
    }
}

Change FilteredListBase::Private::added(int index)
{
    if (index > places.size() || !isInStep(index, 1))
        return outOfStep();
    places.insert(index);
    if (!judge(index))
        return {};
    places.setMarked(index, true);
    return Change::item(Change::Added, places.rank(index));
}

Change FilteredListBase::Private::updated(int index)
{
    if (index >= places.size() || !isInStep(index, 0))
        return outOfStep();
    const bool passed = places.isMarked(index);
    const bool passes = judge(index);
    places.setMarked(index, passes);
    if (!passed && !passes)
        return {};
    return Change::item(!passes ? Change::Removed : passed ? Change::Updated : Change::Added, places.rank(index));
}

Change FilteredListBase::Private::removed(int index)
{
    if (index >= places.size() || !isInStep(index, -1))
        return outOfStep();
    const bool passed = places.isMarked(index);
    const int position = places.rank(index);
    setNode(index, nullptr);
    places.remove(index);
    return passed ? Change::item(Change::Removed, position) : Change();
}

Change FilteredListBase::Private::changed(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    if (type == ChangeType::IndexesChanged && mapper)
        return remapped(*mapper);
    return rebuilt(type, mapper);
}

/// Judges every item. Old nodes go last, so that what is read again stays hooked.
Change FilteredListBase::Private::rebuilt(ChangeType::Type type, const QSharedPointer<IndexMapper>& mapper)
{
    const int count = inputCount();
    IndexedSequence before;
    if (type != ChangeType::DataChanged || count != places.size()) {
        before.swap(places);
        places.reset(count);
    }
    for (int i = 0; i < count && !isOutOfStep; ++i)
        places.setMarked(i, judge(i));
    releaseNodes(before);
    return Change::wholesale(type, mapper);
}

/// Items that the input kept are as they were: their verdicts move along, and only new items are judged.
Change FilteredListBase::Private::remapped(const IndexMapper& mapper)
{
    const int count = inputCount();
    std::vector<int> translated(places.size());
    IndexTranslation translate(mapper);
    for (int i = 0; i < places.size(); ++i)
        translated[i] = translate(i, count);

    IndexedSequence before;
    before.swap(places);
    places.reset(count);
    std::vector<bool> isKept(count);
    QList<int> movedTo;
    movedTo.reserve(before.markedCount());
    for (int i = 0; i < before.size(); ++i) {
        int& to = translated[i];
        if (to >= 0 && isKept[to])
            to = -1;
        if (to >= 0) {
            isKept[to] = true;
            places.setItem(to, before.setItem(i, nullptr));
            places.setMarked(to, before.isMarked(i));
        }
        if (before.isMarked(i))
            movedTo.append(to);
    }
    for (int i = 0; i < count && !isOutOfStep; ++i) {
        if (!isKept[i])
            places.setMarked(i, judge(i));
    }
    releaseNodes(before);
    for (int& to : movedTo)
        to = to >= 0 ? places.rank(to) : -1;
    return Change::wholesale(ChangeType::IndexesChanged, QSharedPointer<PrecomputedMapper>::create(movedTo));
}

/// Judges the dirty items, with all verdicts taken before any is acted upon.
Change FilteredListBase::Private::judgedAnew()
{
    turned.clear();
    for (const Node* const node : dependencies.takeDirty()) {
        const int index = places.indexOf(*node);
        if (judge(index) != places.isMarked(index))
            turned.push_back(index);
    }
    if (turned.empty() || isOutOfStep)
        return {};
    return Change::wholesale(ChangeType::IndexesChanged, q->makeMapper(flips()));
}

/// Turns the verdicts of the items in `turned`.
FilterFlips FilteredListBase::Private::flips()
{
    std::sort(turned.begin(), turned.end());
    FilterFlips result;
    result.oldCount = places.markedCount();
    int grownBy = 0; // by the turns before the one at hand, which are in its rank
    for (const int index : turned) {
        const bool passes = !places.isMarked(index);
        const int position = places.rank(index);
        if (passes)
            result.taken.push_back(position);
        else
            result.dropped.push_back(position - grownBy);
        grownBy += passes ? 1 : -1;
        places.setMarked(index, passes);
    }
    return result;
}

/// A change that does not fit what is known: another one, which an observer made in answer to it, was heard of first.
Change FilteredListBase::Private::outOfStep()
{
    isOutOfStep = true;
    return {};
}

bool FilteredListBase::Private::isInStep(int index, int growth) const
{
    return index >= 0 && inputCount() == places.size() + growth;
}

bool FilteredListBase::Private::judge(int index)
{
    auto* const node = static_cast<Node*>(places.item(index));
    ItemDependencies::Run run(dependencies, node);
    bool passes = false;
    try {
        ObservableTracker::runInto(&run, [&] { passes = q->passes(input->itemAt(index)); });
    } catch (...) {
        if (!thrown)
            thrown = std::current_exception();
    }
    if (Node* const now = run.finish(); now != node)
        setNode(index, now);
    return passes;
}

void FilteredListBase::Private::setNode(int index, Node* node)
{
    if (auto* const before = static_cast<Node*>(places.setItem(index, node)))
        dependencies.release(before);
}

void FilteredListBase::Private::releaseNodes(IndexedSequence& sequence)
{
    for (int i = 0; i < sequence.size(); ++i) {
        if (auto* const node = static_cast<Node*>(sequence.setItem(i, nullptr)))
            dependencies.release(node);
    }
}

FilteredListBase::FilteredListBase(ObservableListImpl* input)
    : d(std::make_unique<Private>(this, input))
{
}

FilteredListBase::~FilteredListBase() = default;

void FilteredListBase::build()
{
    d->perform([this] {
        d->rebuilt(ChangeType::Reset, nullptr);
        return Change();
    });
}

int FilteredListBase::childCount(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() ? d->places.markedCount() : 0;
}

bool FilteredListBase::hasChildren(const QVariantList& indexPath) const
{
    return indexPath.isEmpty() && d->places.markedCount() > 0;
}

QVariant FilteredListBase::data(const QVariantList& indexPath) const
{
    return itemAt(indexOfPath(indexPath));
}

QVariant FilteredListBase::itemAt(int index) const
{
    if (index < 0 || index >= d->places.markedCount())
        return QVariant();
    return d->input->itemAt(d->places.select(index));
}

bool FilteredListBase::announcesEveryReadItem() const
{
    return !d->input || d->input->announcesEveryReadItem();
}

} // namespace iface::detail
