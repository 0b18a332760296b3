// SPDX-License-Identifier: Apache-2.0
#include <iface/detail/Intake.h>

#include "observables/MostRuns.h"
#include "observables/RoundState.h"

#include <iface/Logging.h>
#include <iface/ObservableTracker.h>

#include <QtCore/QScopedValueRollback>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace iface::detail {

Intake::~Intake()
{
    Round::strikeOut(*this);
}

bool Intake::isAnyBehind()
{
    return t_behindCount > 0;
}

void Intake::follow(ObservableListImpl* input)
{
    detach();
    m_input = input;
    if (input)
        Follower::follow(*input);
}

void Intake::close()
{
    detach();
    m_isClosed = true;
}

void Intake::reset()
{
    Round::together([this] { mark({Change::Reset}); });
}

int Intake::inputCount() const
{
    return m_input ? m_input->childCount(QVariantList()) : 0;
}

void Intake::mark(const Change& change)
{
    // A list that only said that something about it changed, without saying what of its items, has changed none.
    if (change.kind <= Change::Keys)
        return;
    m_pending = m_isTaking ? Change{Change::Reset} : merged(m_pending, change);
    markBehind();
}

void Intake::markBehind()
{
    if (m_isClosed)
        return;
    ++m_generation;
    Round::open()->enter(*this);
}

void Intake::settleOthers() {}

/// Whether this round has not had enough of it yet. Reads of a function that makes changes do not count.
bool Intake::mayTakeAgain()
{
    const Round& round = *Round::open();
    if (std::exchange(m_round, round.m_number) != round.m_number || round.m_isBeingMade)
        m_takes = 0;
    return m_takes++ < MostRuns;
}

void Intake::settle()
{
    if (m_isBusy)
        return; // it reads what hangs on itself
    Round& round = *Round::open();
    const ObservableTracker::Suspension untracked;
    const ObservablePointer hold(m_list.ref.loadRelaxed() > 0 ? &m_list : nullptr);
    const QScopedValueRollback<bool> busy(m_isBusy, true);
    const auto guarded = [&round](const auto& call) {
        try {
            call();
        } catch (...) {
            round.keepException();
        }
    };
    // What is taken in may change something further up, which has to come down first before this is up to date.
    do {
        // Mostly nothing else is behind, and what is read then need not be asked.
        if (t_behindCount > int(m_isBehind))
            guarded([this] {
                inputCount();
                settleOthers();
            });
        if (!m_isBehind)
            return;
        m_isBehind = false;
        --t_behindCount;
        if (!mayTakeAgain()) {
            ZEL_IFACE_LOG("Intake.cpp", __LINE__, LogLevel::Error, LogCategory::General,
                          u"A derived list keeps changing what it is made of; it may be incomplete"_s);
            m_pending = {Change::Reset}; // the next change has everything taken in anew
            return;
        }
        const QScopedValueRollback<bool> taking(m_isTaking, true);
        guarded([this] { take(std::exchange(m_pending, Change())); });
    } while (isAnyBehind());
}

Change Intake::fitting(const Change& change, int count) const
{
    if (change.kind < Change::Added || change.kind > Change::Removed)
        return change;
    const int growth = change.kind == Change::Added ? 1 : change.kind == Change::Removed ? -1 : 0;
    const bool fits =
        change.index >= 0 && change.index < std::max(count, count + growth) && inputCount() == count + growth;
    return fits ? change : Change{Change::Reset};
}

} // namespace iface::detail
