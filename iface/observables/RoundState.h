// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Change.h>
#include <iface/MapChange.h>
#include <iface/ObservableImpl.h>
#include <iface/Round.h>

#include <vector>

namespace iface {

/// What a round has yet to announce of one observable.
struct Round::Untold
{
    ObservableImpl::Hold hold;
    ObservableImpl* observable = nullptr; ///< null once it was told or has gone over to an inner round
    Change change;
    std::vector<MapChange> keys; ///< copies, each of them announced; none if nobody listens
    BeforeTelling beforeTelling = nullptr;
};

/// What the rounds under way on one thread have to do. Inner rounds stand behind outer ones in the same lists, and are
/// gone before the outer ones go on.
struct Round::State
{
    Round* innermost = nullptr;
    unsigned lastNumber = 0;
    std::vector<Untold> untold;
    std::vector<MonitoredRun*> monitors;
    /// Only the innermost round can be open, so these are its own.
    std::vector<detail::Intake*> behind;
    std::size_t nextBehind = 0;
    int behindCount = 0; ///< how many really are; who was read has taken in already
};

} // namespace iface
