// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Way.h>

#include <algorithm>
#include <utility>

namespace zelcore {

Way::Way(Deliver deliver, UuidOf uuidOf)
    : m_deliver(std::move(deliver))
    , m_uuidOf(std::move(uuidOf))
{
    m_clock.start();
    m_timer.setSingleShot(true);
    m_timer.setTimerType(Qt::PreciseTimer);
    connect(&m_timer, &QTimer::timeout, this, [this] { deliverDue(); });
}

void Way::pass(int client, const QString& type, const QByteArray& record)
{
    const QString uuid = hasFaults() ? m_uuidOf(client) : QString();
    const auto ordered = std::find_if(m_faults.cbegin(), m_faults.cend(), [&](const OrderedFault& fault) {
        return (fault.type.isEmpty() || fault.type == type) && fault.whose.isMeant(client, uuid);
    });
    if (ordered == m_faults.cend()) {
        passAsItIs(client, record);
        return;
    }
    const OrderedFault fault = *ordered;
    m_faults.erase(ordered);
    suffer(fault, client, record);
}

void Way::passAsItIs(int client, const QByteArray& record)
{
    const int latency = latencyOf({client, QString()});
    qint64 due = m_clock.elapsed() + latency;
    bool mustWait = latency > 0;
    for (const Waiting& before : std::as_const(m_waiting)) {
        if (before.client == client) {
            due = qMax(due, before.due);
            mustWait = true;
        }
    }
    if (!mustWait) {
        m_deliver(client, record);
        return;
    }
    m_waiting.append({due, client, record});
    schedule();
}

void Way::addFault(Simulator::Fault fault, int amount, const QString& type, const Addressee& whose)
{
    m_faults.append({fault, amount, type, whose});
}

void Way::setLatency(int milliseconds, const Addressee& whose)
{
    if (whose.isEverybody())
        m_latencies.clear();
    m_latencies.append({qMax(0, milliseconds), whose});
}

int Way::latencyOf(const Addressee& whose) const
{
    const QString uuid = whose.uuid.isEmpty() ? m_uuidOf(whose.client) : whose.uuid;
    const auto last = std::find_if(m_latencies.crbegin(), m_latencies.crend(),
                                   [&](const Latency& latency) { return latency.whose.isMeant(whose.client, uuid); });
    return last == m_latencies.crend() ? 0 : last->milliseconds;
}

void Way::reset()
{
    m_faults.clear();
    m_latencies.clear();
}

void Way::suffer(const OrderedFault& ordered, int client, const QByteArray& record)
{
    switch (ordered.fault) {
    case Simulator::Fault::Drop:
        return;
    case Simulator::Fault::Delay:
        QTimer::singleShot(qMax(0, ordered.amount), this, [=, this] { passAsItIs(client, record); });
        return;
    case Simulator::Fault::Duplicate:
        passAsItIs(client, record);
        passAsItIs(client, record);
        return;
    case Simulator::Fault::Truncate:
        // A record without a byte cannot be sent.
        passAsItIs(client, record.left(qMax(1, ordered.amount)));
        return;
    case Simulator::Fault::Garble:
        // Unreadable as JSON for certain, and as long as before.
        passAsItIs(client, record.left(record.size() / 2).leftJustified(record.size(), '#'));
        return;
    }
}

/// Whoever gets one may do anything here.
void Way::deliverDue()
{
    const qint64 now = m_clock.elapsed();
    const auto isDue = [now](const Waiting& waiting) { return waiting.due <= now; };
    for (auto next = std::find_if(m_waiting.cbegin(), m_waiting.cend(), isDue); next != m_waiting.cend();
         next = std::find_if(m_waiting.cbegin(), m_waiting.cend(), isDue)) {
        const Waiting record = *next;
        m_waiting.erase(next);
        m_deliver(record.client, record.record);
    }
    schedule();
}

void Way::schedule()
{
    const auto next = std::min_element(m_waiting.cbegin(), m_waiting.cend(),
                                       [](const Waiting& one, const Waiting& other) { return one.due < other.due; });
    if (next != m_waiting.cend())
        m_timer.start(int(qMax<qint64>(0, next->due - m_clock.elapsed())));
}

} // namespace zelcore
