// SPDX-License-Identifier: Apache-2.0
#include <iface/QApplicationRealm.h>

#include <iface/ObservableTracker.h>

#include <QtCore/QScopeGuard>

#include <algorithm>
#include <atomic>

namespace iface {

namespace {

// Shared by all realms, and each thread may have one.
std::atomic<int> idCounter{0};

} // namespace

QApplicationRealm::QApplicationRealm()
{
    connect(this, &QApplicationRealm::itemQueued, this, &QApplicationRealm::execute, Qt::QueuedConnection);
}

QApplicationRealm::~QApplicationRealm()
{
    // Out of the queue: what goes with a function may queue another, or spin an event loop.
    while (!m_queue.isEmpty())
        QList<AsyncEntry>().swap(m_queue);
}

int QApplicationRealm::asyncExec(const boost::function<void()>& function)
{
    const int id = ++idCounter;
    m_queue.append(AsyncEntry{id, function});
    auto forget = qScopeGuard([this] { m_queue.removeLast(); });
    Q_EMIT itemQueued();
    forget.dismiss();
    return id;
}

void QApplicationRealm::remove(int id)
{
    const auto found = std::find(m_queue.cbegin(), m_queue.cend(), AsyncEntry{id, {}});
    if (found != m_queue.cend())
        m_queue.takeAt(found - m_queue.cbegin()); // goes when it is out of the queue: that may run anything
}

void QApplicationRealm::execute()
{
    // Empty when something was removed: then the turns of those that were left came early.
    if (m_queue.isEmpty())
        return;
    const ObservableTracker::Suspension untracked;
    const boost::function<void()> function = m_queue.takeFirst().function;
    function();
}

} // namespace iface
