// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableImpl.h>

#include "rounds/RoundState.h"

#include <iface/Change.h>
#include <iface/ObservableMapImplBase.h>
#include <iface/ObservableTracker.h>
#include <iface/ObserverImpl.h>
#include <iface/Round.h>
#include <iface/detail/FirstException.h>

#include <QtCore/QMetaMethod>
#include <QtCore/QThread>

#include <optional>

namespace iface {

namespace {

/// What announces a change of this kind, Keys to Removed, besides observableChanged().
const QMetaMethod& particularSignal(Change::Kind kind)
{
    static const QMetaMethod inOrderOfKinds[] = {QMetaMethod::fromSignal(&ObservableMapImplBase::mapChanged),
                                                 QMetaMethod::fromSignal(&ObservableListImpl::itemAdded),
                                                 QMetaMethod::fromSignal(&ObservableListImpl::itemUpdated),
                                                 QMetaMethod::fromSignal(&ObservableListImpl::itemRemoved)};
    return inOrderOfKinds[kind - Change::Keys];
}

} // namespace

Observable::~Observable() = default;

ObservableImpl::Hold::Hold(const ObservableImpl& observable)
    : m_counted(observable.ref.loadRelaxed() > 0 ? &observable : nullptr)
{
    if (!m_counted)
        m_uncounted = &observable;
}

ObservableImpl::ObservableImpl() = default;

ObservableImpl::~ObservableImpl()
{
    while (m_firstFollower)
        m_firstFollower->detach();
}

bool ObservableImpl::addObserver(const ObserverImpl* observer) const
{
    return observer &&
           connect(this, &ObservableImpl::observableChanged, observer, &ObserverImpl::handleObservableChanged);
}

bool ObservableImpl::removeObserver(const ObserverImpl* observer) const
{
    return observer &&
           disconnect(this, &ObservableImpl::observableChanged, observer, &ObserverImpl::handleObservableChanged);
}

void ObservableImpl::notifyObservers()
{
    note({Change::Plain});
}

void ObservableImpl::doEmit()
{
    Q_EMIT observableChanged();
}

void ObservableImpl::connectNotify(const QMetaMethod& signal)
{
    QObject::connectNotify(signal);
    m_isHeard.store(true, std::memory_order_relaxed);
    if (thread() == QThread::currentThread())
        Round::heedNewObserver(*this);
}

void ObservableImpl::note(const Change& change, void (*beforeTelling)(ObservableImpl&))
{
    if (Round* const open = Round::open()) {
        open->enter(*this, change, beforeTelling);
        return;
    }
    const bool isFollowed = m_firstFollower || m_untold || beforeTelling;
    if (!isFollowed && !m_isHeard)
        return;
    const ObservableTracker::Suspension untracked; // of what ends with this, too
    if (isFollowed) {
        std::optional<Hold> hold;
        Round round;
        round.m_thrown.guard([&] { hold.emplace(*this); });
        round.enter(*this, change, beforeTelling);
        round.run();
        return;
    }
    // Nothing hangs on it, so there is nothing to be taken in.
    const Hold hold(*this);
    std::vector<MapChange> keys;
    if (change.kind == Change::Keys)
        appendKeys(*change.keys, keys);
    tell(change, keys, hold);
}

/// Makes the copy of the keys that is announced, if anybody listens.
void ObservableImpl::appendKeys(const ChangedKeys& changed, std::vector<MapChange>& keys) const
{
    if (m_isHeard && isSignalConnected(particularSignal(Change::Keys)))
        keys.push_back(changed.toMapChange());
}

void ObservableImpl::tell(const Change& change, const std::vector<MapChange>& keys, const Hold& hold)
{
    if (!m_isHeard)
        return;
    if (change.kind <= Change::Keys && keys.empty())
        return doEmit();
    detail::FirstException thrown;
    thrown.guard([&] { tellInParticular(change, keys, hold); });
    thrown.guard([&] {
        if (hold.isAlive())
            doEmit();
    });
    thrown.rethrow();
}

/// Emits what only a map or only a list has to say.
void ObservableImpl::tellInParticular(const Change& change, const std::vector<MapChange>& keys, const Hold& hold)
{
    for (const MapChange& each : keys) {
        if (hold.isAlive())
            Q_EMIT static_cast<ObservableMapImplBase*>(this)->mapChanged(each);
    }
    if (change.kind <= Change::Keys)
        return;
    auto* const list = static_cast<ObservableListImpl*>(this);
    if (change.kind >= Change::Moved)
        Q_EMIT list->itemsChanged(change.type(), change.mapper);
    else if (!isSignalConnected(particularSignal(change.kind)))
        return; // the change need not be put into a signal's words
    else if (change.kind == Change::Added)
        Q_EMIT list->itemAdded(ObservableListImpl::pathOf(change.index));
    else if (change.kind == Change::Updated)
        Q_EMIT list->itemUpdated(ObservableListImpl::pathOf(change.index));
    else
        Q_EMIT list->itemRemoved(ObservableListImpl::pathOf(change.index));
}

} // namespace iface
