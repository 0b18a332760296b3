// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/DerivedList.h>

#include "rounds/MostRuns.h"
#include "rounds/RoundState.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <new>
#include <utility>

using namespace Qt::StringLiterals;

namespace iface::detail {

namespace {

/// How many derived lists are reading their inputs, each for the sake of the one before.
[[gnu::tls_model("initial-exec")]] constinit thread_local int t_inputReads = 0;
/// How often one was read in the midst of taking something in.
[[gnu::tls_model("initial-exec")]] constinit thread_local unsigned t_halfReads = 0;

struct InputRead
{
    InputRead() { ++t_inputReads; }
    ~InputRead() { --t_inputReads; }
    Q_DISABLE_COPY_MOVE(InputRead)
};

} // namespace

DerivedList::~DerivedList()
{
    Round::strikeOut(*this);
}

int DerivedList::childCount(const QVariantList& indexPath) const
{
    const Hold hold = catchUp();
    return indexPath.isEmpty() ? count() : 0;
}

QVariant DerivedList::data(const QVariantList& indexPath) const
{
    return itemAt(indexOfPath(indexPath));
}

QVariant DerivedList::itemAt(int index) const
{
    const Hold hold = catchUp();
    return index >= 0 ? item(index) : QVariant();
}

int DerivedList::inputCount() const
{
    const InputRead read;
    return m_input ? m_input->childCount(QVariantList()) : 0;
}

QVariant DerivedList::inputItem(int index) const
{
    const InputRead read;
    return m_input ? m_input->itemAt(index) : QVariant();
}

void DerivedList::follow(ObservableListImpl* input)
{
    detach();
    if (input && input->thread() != thread())
        ZEL_IFACE_LOG("DerivedList.cpp", __LINE__, LogLevel::Error, LogCategory::General,
                      u"A list is derived from one of another thread; neither is safe to use"_s);
    if (input)
        Follower::follow(*input);
    QExplicitlySharedDataPointer<ObservableListImpl> other(input);
    other.swap(m_input); // the one before goes last: that may run anything
}

void DerivedList::close()
{
    detach();
    m_isClosed = true;
}

void DerivedList::reset()
{
    Round::together([this] { mark({Change::Reset}); });
}

void DerivedList::mark(const Change& change)
{
    // A list that only said that something about it changed, without saying what of its items, has changed none.
    if (change.kind <= Change::Keys)
        return;
    m_pending = isTaking() ? Change{Change::Reset} : merged(m_pending, change);
    markBehind();
}

void DerivedList::markBehind()
{
    if (m_isClosed)
        return;
    ++m_generation;
    Round::open()->enter(*this);
}

FirstException& DerivedList::thrown()
{
    return Round::open()->m_thrown;
}

void DerivedList::itemThrew()
{
    thrown().guard([this] {
        try {
            throw;
        } catch (const std::bad_alloc&) {
            takeInAnew();
            throw;
        }
    });
}

DerivedList::Hold DerivedList::catchUp() const
{
    // It can be read while it takes a change in, if its filter or its map reads something made of it. The reader gets
    // what it was, or places that are still to move. That is noted, and whoever used it takes everything in again.
    if (m_isBusy && (m_isBehind || (isTaking() && t_inputReads >= m_takingFrom))) {
        m_isHalfRead = true;
        ++t_halfReads;
    }
    return t_behindCount > 0 && !m_isBusy ? const_cast<DerivedList*>(this)->settle() : Hold();
}

/// Whether this round has not had enough of it yet.
bool DerivedList::mayTakeAgain()
{
    const unsigned counted = Round::open()->m_countedIn;
    if (std::exchange(m_countedIn, counted) != counted)
        m_takes = 0;
    return m_takes++ < MostRuns;
}

void DerivedList::takePending()
{
    const bool isAnew = std::exchange(m_isBroken, false);
    Change change = std::exchange(m_pending, Change());
    if (isAnew)
        change = {Change::Reset};
    const unsigned halfReads = t_halfReads;
    if (!thrown().guard([&] { take(change); }) || t_halfReads != halfReads)
        takeInAnew();
    else if (isAnew)
        note({Change::Reset});
    if (m_isHalfRead && !isOvertaken()) {
        m_isHalfRead = false;
        note({Change::Reset});
    }
}

DerivedList::Hold DerivedList::settle()
{
    const ObservableTracker::Suspension untracked;
    Hold hold(*this);
    const QScopedValueRollback<bool> busy(m_isBusy, true);
    const Round::Settling settling(*Round::open());
    // What is taken in may change something further up, which has to come down first before this is up to date.
    for (;;) {
        // Mostly nothing else is behind, and what is read then need not be asked.
        if (t_behindCount > int(m_isBehind) && m_settledAt != t_timesBehind) {
            const unsigned now = t_timesBehind;
            thrown().guard([this] {
                inputCount();
                settleOthers();
            });
            m_settledAt = now;
        }
        if (!m_isBehind)
            return hold;
        m_isBehind = false;
        --t_behindCount;
        if (!mayTakeAgain()) {
            takeInAnew();
            ZEL_IFACE_LOG("DerivedList.cpp", __LINE__, LogLevel::Error, LogCategory::General,
                          u"A derived list keeps changing what it is made of; it may be incomplete"_s);
            return hold;
        }
        const QScopedValueRollback<int> taking(m_takingFrom, t_inputReads + 1);
        takePending();
    }
}

Change DerivedList::fitting(const Change& change, int before) const
{
    if (change.kind < Change::Added || change.kind > Change::Removed)
        return change;
    const int growth = change.kind == Change::Added ? 1 : change.kind == Change::Removed ? -1 : 0;
    const bool fits =
        change.index >= 0 && change.index < std::max(before, before + growth) && inputCount() == before + growth;
    return fits ? change : Change{Change::Reset};
}

} // namespace iface::detail
