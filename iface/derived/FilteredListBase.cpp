// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/FilteredListBase.h>

#include "derived/IndexTranslation.h"
#include "tracking/Dependencies.h"

#include <iface/ObservableTracker.h>
#include <iface/PrecomputedMapper.h>
#include <iface/detail/FlipMapper.h>
#include <iface/detail/MakeShared.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <utility>

namespace iface::detail {

using Node = Dependencies::Node;

FilteredListBase::FilteredListBase(ObservableListImpl* input)
    : m_dependencies(std::make_unique<Dependencies>([this] { markBehind(); }, this))
{
    follow(input);
}

FilteredListBase::~FilteredListBase()
{
    releaseNodes(m_places);
}

bool FilteredListBase::announcesEveryReadItem() const
{
    return !input() || input()->announcesEveryReadItem();
}

int FilteredListBase::count() const
{
    return m_places.markedCount();
}

QVariant FilteredListBase::item(int index) const
{
    return index < count() ? inputItem(m_places.select(index)) : QVariant();
}

void FilteredListBase::settleOthers()
{
    m_dependencies->settle();
}

void FilteredListBase::take(const Change& change)
{
    Change made = takeInput(fitting(change, m_places.size()));
    if (!isOvertaken())
        made = merged(made, judgedAnew());
    if (made.kind != Change::None)
        note(made);
}

Change FilteredListBase::takeInput(const Change& change)
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

Change FilteredListBase::added(int index)
{
    m_places.insert(index);
    if (!judge(index))
        return {};
    m_places.setMarked(index, true);
    return {Change::Added, m_places.rank(index)};
}

Change FilteredListBase::updated(int index)
{
    const bool passed = m_places.isMarked(index);
    const bool passes = judge(index);
    m_places.setMarked(index, passes);
    if (!passed && !passes)
        return {};
    return {!passes ? Change::Removed : passed ? Change::Updated : Change::Added, m_places.rank(index)};
}

Change FilteredListBase::removed(int index)
{
    const bool passed = m_places.isMarked(index);
    const int position = m_places.rank(index);
    setNode(index, nullptr);
    m_places.remove(index);
    return passed ? Change{Change::Removed, position} : Change();
}

/// Judges every item. Old nodes go last, so that what is read again stays hooked.
Change FilteredListBase::rebuilt(const Change& change)
{
    const int count = inputCount();
    m_dependencies->forgetDirty();
    IndexedSequence before;
    const auto release = qScopeGuard([&] { releaseNodes(before); });
    if (change.kind != Change::Data || count != m_places.size()) {
        before.reset(count);
        before.swap(m_places);
    }
    for (int i = 0; i < count && !isOvertaken(); ++i)
        m_places.setMarked(i, judge(i));
    return change;
}

/// Items that the input kept are as they were: their verdicts move along, and only new items are judged.
Change FilteredListBase::remapped(const IndexMapper& mapper)
{
    const int count = inputCount();
    if (const auto* const move = moveWithin(count, mapper); move && count == m_places.size()) {
        const bool passes = m_places.isMarked(move->from());
        const int from = passes ? m_places.rank(move->from()) : 0;
        m_places.move(move->from(), move->to());
        return {Change::Moved, -1, detail::makeShared<ItemMovedMapper>(from, passes ? m_places.rank(move->to()) : 0)};
    }
    std::vector<int> translated(m_places.size());
    IndexTranslation translate(mapper);
    for (int i = 0; i < m_places.size(); ++i)
        translated[i] = translate(i, count);

    std::vector<bool> isKept(count);
    QList<int> movedTo;
    movedTo.reserve(m_places.markedCount());
    IndexedSequence before;
    const auto release = qScopeGuard([&] { releaseNodes(before); });
    before.reset(count);
    before.swap(m_places);
    for (int i = 0; i < before.size(); ++i) {
        int& to = translated[i];
        if (to >= 0 && isKept[to])
            to = -1;
        if (to >= 0) {
            isKept[to] = true;
            setNode(to, before.setItem(i, nullptr));
            m_places.setMarked(to, before.isMarked(i));
        }
        if (before.isMarked(i))
            movedTo.append(to);
    }
    for (int i = 0; i < count && !isOvertaken(); ++i) {
        if (!isKept[i])
            m_places.setMarked(i, judge(i));
    }
    for (int& to : movedTo)
        to = to >= 0 ? m_places.rank(to) : -1;
    return {Change::Moved, -1, detail::makeShared<PrecomputedMapper>(movedTo)};
}

/// Judges the dirty items, with all verdicts taken before any is acted upon.
Change FilteredListBase::judgedAnew()
{
    m_turned.clear();
    m_dependencies->takeDirty();
    while (const Node* const node = m_dependencies->nextTaken()) {
        if (isOvertaken())
            return {};
        const int index = m_places.indexOf(*node);
        if (judge(index) != m_places.isMarked(index))
            m_turned.push_back(index);
    }
    if (m_turned.empty() || isOvertaken())
        return {};
    return {Change::Moved, -1, turn()};
}

/// Turns the verdicts of the items in `m_turned`.
QSharedPointer<ObservableListImpl::IndexMapper> FilteredListBase::turn()
{
    std::sort(m_turned.begin(), m_turned.end());
    const int oldCount = count();
    std::vector<int> dropped;
    std::vector<int> taken;
    int grownBy = 0; // by the turns before the one at hand, which are in its rank
    for (const int index : m_turned) {
        const bool passes = !m_places.isMarked(index);
        const int position = m_places.rank(index);
        if (passes)
            taken.push_back(position);
        else
            dropped.push_back(position - grownBy);
        grownBy += passes ? 1 : -1;
        m_places.setMarked(index, passes);
    }
    return detail::makeShared<FlipMapper>(std::move(dropped), std::move(taken), oldCount);
}

bool FilteredListBase::judge(int index)
{
    auto* const node = static_cast<Node*>(m_places.item(index));
    Dependencies::Run run(*m_dependencies, node);
    bool isPassing = false;
    try {
        ObservableTracker::runInto(&run, [&] { isPassing = passes(inputItem(index)); });
    } catch (...) {
        itemThrew();
    }
    if (Node* const now = run.finish(); now != node)
        setNode(index, now);
    return isPassing;
}

void FilteredListBase::setNode(int index, Item* node)
{
    auto release = qScopeGuard([&] { m_dependencies->release(static_cast<Node*>(node)); }); // there is no place for it
    auto* const before = static_cast<Node*>(m_places.setItem(index, node));
    release.dismiss();
    if (before)
        m_dependencies->release(before);
}

void FilteredListBase::releaseNodes(IndexedSequence& places)
{
    for (int i = 0; i < places.size(); ++i) {
        if (auto* const node = static_cast<Node*>(places.setItem(i, nullptr)))
            m_dependencies->release(node);
    }
}

} // namespace iface::detail
