// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/FilteredListBase.h>

#include "derived/IndexTranslation.h"
#include "observables/Dependencies.h"

#include <iface/ObservableTracker.h>
#include <iface/PrecomputedMapper.h>
#include <iface/detail/IndexedSequence.h>
#include <iface/detail/Intake.h>

#include <algorithm>
#include <exception>
#include <utility>

namespace iface::detail {

/// One place per input item, marked if the item passes, with a node if its verdict depends on anything.
struct FilteredListBase::Private : Intake
{
    using Node = Dependencies::Node;

    Private(FilteredListBase* list, ObservableListImpl* inputList);
    ~Private() override
    {
        close(); // letting go of what was read may run anything
        releaseNodes(places);
    }

    void take(const Change& change) override;
    void settleOthers() override { dependencies.settle(); }

    Change takeInput(const Change& change);
    Change added(int index);
    Change updated(int index);
    Change removed(int index);
    Change rebuilt(const Change& change);
    Change remapped(const IndexMapper& mapper);
    Change judgedAnew();

    bool judge(int index);
    void setNode(int index, Node* node);
    void releaseNodes(IndexedSequence& sequence);
    FilterFlips flips();

    FilteredListBase* const q;
    ObservableListImpl* const input;
    IndexedSequence places;
    Dependencies dependencies;
    std::vector<int> turned;
    std::exception_ptr thrown; ///< by the filter, the first time since take() began
};

FilteredListBase::Private::Private(FilteredListBase* list, ObservableListImpl* inputList)
    : Intake(*list)
    , q(list)
    , input(inputList)
    , dependencies([this] { markBehind(); }, list)
{
    follow(input);
}

void FilteredListBase::Private::take(const Change& change)
{
    Change made = takeInput(fitting(change, places.size()));
    if (!isOvertaken())
        made = merged(made, judgedAnew());
    if (made.kind != Change::None)
        q->note(made);
    if (thrown)
        std::rethrow_exception(std::exchange(thrown, nullptr));
}

Change FilteredListBase::Private::takeInput(const Change& change)
{
    switch (change.kind) {
    case Change::None:
        return change;
    case Change::Added:
        return added(change.index);
    case Change::Updated:
        return updated(change.index);
    case Change::Removed:
        return removed(change.index);
    default:
        return change.kind == Change::Moved && change.mapper ? remapped(*change.mapper) : rebuilt(change);
    }
}

Change FilteredListBase::Private::added(int index)
{
    places.insert(index);
    if (!judge(index))
        return {};
    places.setMarked(index, true);
    return {Change::Added, places.rank(index)};
}

Change FilteredListBase::Private::updated(int index)
{
    const bool passed = places.isMarked(index);
    const bool passes = judge(index);
    places.setMarked(index, passes);
    if (!passed && !passes)
        return {};
    return {!passes ? Change::Removed : passed ? Change::Updated : Change::Added, places.rank(index)};
}

Change FilteredListBase::Private::removed(int index)
{
    const bool passed = places.isMarked(index);
    const int position = places.rank(index);
    setNode(index, nullptr);
    places.remove(index);
    return passed ? Change{Change::Removed, position} : Change();
}

/// Judges every item. Old nodes go last, so that what is read again stays hooked.
Change FilteredListBase::Private::rebuilt(const Change& change)
{
    const int count = inputCount();
    dependencies.takeDirty();
    IndexedSequence before;
    if (change.kind != Change::Data || count != places.size()) {
        before.swap(places);
        places.reset(count);
    }
    for (int i = 0; i < count && !isOvertaken(); ++i)
        places.setMarked(i, judge(i));
    releaseNodes(before);
    return change;
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
    for (int i = 0; i < count && !isOvertaken(); ++i) {
        if (!isKept[i])
            places.setMarked(i, judge(i));
    }
    releaseNodes(before);
    for (int& to : movedTo)
        to = to >= 0 ? places.rank(to) : -1;
    return {Change::Moved, -1, QSharedPointer<PrecomputedMapper>::create(movedTo)};
}

/// Judges the dirty items, with all verdicts taken before any is acted upon.
Change FilteredListBase::Private::judgedAnew()
{
    turned.clear();
    for (const Node* const node : dependencies.takeDirty()) {
        if (isOvertaken())
            return {};
        const int index = places.indexOf(*node);
        if (judge(index) != places.isMarked(index))
            turned.push_back(index);
    }
    if (turned.empty() || isOvertaken())
        return {};
    return {Change::Moved, -1, q->makeMapper(flips())};
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

bool FilteredListBase::Private::judge(int index)
{
    auto* const node = static_cast<Node*>(places.item(index));
    Dependencies::Run run(dependencies, node);
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
    d->reset();
}

int FilteredListBase::childCount(const QVariantList& indexPath) const
{
    d->catchUp();
    return indexPath.isEmpty() ? d->places.markedCount() : 0;
}

QVariant FilteredListBase::data(const QVariantList& indexPath) const
{
    return itemAt(indexOfPath(indexPath));
}

QVariant FilteredListBase::itemAt(int index) const
{
    d->catchUp();
    if (index < 0 || index >= d->places.markedCount())
        return QVariant();
    return d->input->itemAt(d->places.select(index));
}

bool FilteredListBase::announcesEveryReadItem() const
{
    return !d->input || d->input->announcesEveryReadItem();
}

} // namespace iface::detail
