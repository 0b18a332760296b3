// SPDX-License-Identifier: Apache-2.0
#include <iface/ObservableImpl.h>

#include "CurrentRecorder.h"

#include <iface/ObserverImpl.h>

#include <utility>

namespace iface {

// LightObserver's part in an announcement is here too: the two share the list of light observers and the rounds
// through it that are under way.

namespace {

// The innermost announcement under way on this thread, of whatever observable.
template <class Announcement>
Announcement*& innermost()
{
    [[gnu::tls_model("initial-exec")]] static thread_local Announcement* announcement = nullptr;
    return announcement;
}

} // namespace

LightObserver::~LightObserver()
{
    detach();
}

void LightObserver::listChanged(const ListChange&) {}

void LightObserver::keysChanged(const ChangedKeys&) {}

const LightObserver* LightObserver::firstOf(const ObservableImpl& observable)
{
    return observable.m_firstLight;
}

void LightObserver::observe(const ObservableImpl& observable)
{
    detach();
    m_observable = &observable;
    m_previous = observable.m_lastLight;
    (m_previous ? m_previous->m_next : observable.m_firstLight) = this;
    observable.m_lastLight = this;
}

void LightObserver::detach()
{
    if (!m_observable)
        return;
    using Announcement = ObservableImpl::Announcement;
    for (Announcement* round = innermost<Announcement>(); round; round = round->m_outer) {
        if (round->m_observable != m_observable)
            continue;
        if (round->m_next == this)
            round->m_next = round->m_last == this ? nullptr : m_next;
        if (round->m_last == this)
            round->m_last = m_previous;
    }
    (m_previous ? m_previous->m_next : m_observable->m_firstLight) = m_next;
    (m_next ? m_next->m_previous : m_observable->m_lastLight) = m_previous;
    m_observable = nullptr;
    m_previous = nullptr;
    m_next = nullptr;
}

ObservableImpl::Announcement::Announcement(const ObservableImpl& observable)
    : m_suspended(std::exchange(t_currentRecorder, nullptr))
    , m_hold(observable.ref.loadRelaxed() > 0 ? &observable : nullptr)
    , m_observable(&observable)
    , m_outer(std::exchange(innermost<Announcement>(), this))
{
}

ObservableImpl::Announcement::~Announcement()
{
    innermost<Announcement>() = m_outer;
    // May destroy the observable, which is nobody's dependency either.
    m_hold.reset();
    t_currentRecorder = m_suspended;
}

ObservableImpl::ObservableImpl() = default;

ObservableImpl::~ObservableImpl()
{
    while (m_firstLight)
        m_firstLight->detach();
    for (Announcement* round = innermost<Announcement>(); round; round = round->m_outer) {
        if (round->m_observable == this)
            round->m_observable = nullptr;
    }
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
    doEmit();
}

void ObservableImpl::doEmit()
{
    Announcement announcement(*this);
    doEmit(announcement);
}

template <class Call>
void ObservableImpl::callLightObservers(Announcement& announcement, const Call& call)
{
    announcement.m_next = m_firstLight;
    announcement.m_last = m_lastLight;
    // Whoever detaches or attaches meanwhile repairs m_next and m_last; who attaches comes after m_last.
    while (LightObserver* const observer = announcement.m_next) {
        announcement.m_next = observer == announcement.m_last ? nullptr : observer->m_next;
        call(*observer);
    }
}

void ObservableImpl::tellLightObservers(Announcement& announcement, const ListChange& change)
{
    callLightObservers(announcement, [&change](LightObserver& observer) { observer.listChanged(change); });
}

void ObservableImpl::tellLightObservers(Announcement& announcement, const ChangedKeys& keys)
{
    callLightObservers(announcement, [&keys](LightObserver& observer) { observer.keysChanged(keys); });
}

void ObservableImpl::doEmit(Announcement& announcement)
{
    callLightObservers(announcement, [](LightObserver& observer) { observer.observableChanged(); });
    if (announcement.isAlive())
        Q_EMIT observableChanged();
}

} // namespace iface
