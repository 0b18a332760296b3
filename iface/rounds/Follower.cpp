// SPDX-License-Identifier: Apache-2.0
#include <iface/Follower.h>

#include <iface/ObservableImpl.h>

namespace iface {

Follower::~Follower()
{
    detach();
}

void Follower::follow(const ObservableImpl& observable)
{
    detach();
    m_observable = &observable;
    m_previous = observable.m_lastFollower;
    (m_previous ? m_previous->m_next : observable.m_firstFollower) = this;
    observable.m_lastFollower = this;
}

void Follower::detach()
{
    if (!m_observable)
        return;
    (m_previous ? m_previous->m_next : m_observable->m_firstFollower) = m_next;
    (m_next ? m_next->m_previous : m_observable->m_lastFollower) = m_previous;
    m_observable = nullptr;
    m_previous = nullptr;
    m_next = nullptr;
}

} // namespace iface
