// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <simulator/wire/Addressee.h>

#include <zelcore/Simulator.h>

#include <QtCore/QElapsedTimer>
#include <QtCore/QList>
#include <QtCore/QObject>
#include <QtCore/QTimer>

#include <functional>

namespace zelcore {

/// One direction of the wire, with what befalls the records on it: the mishaps that were ordered, one each, and a
/// latency that keeps their order.
class Way : public QObject
{
public:
    using Deliver = std::function<void(int client, const QByteArray& record)>;
    using UuidOf = std::function<QString(int client)>;

    /// Both are called for the applications' numbers, and must outlive it.
    Way(Deliver deliver, UuidOf uuidOf);

    /// \a type is that of the message in the record; it is only looked at when hasFaults().
    void pass(int client, const QString& type, const QByteArray& record);
    /// Without faults.
    void passAsItIs(int client, const QByteArray& record);

    bool hasFaults() const { return !m_faults.isEmpty(); }
    void addFault(Simulator::Fault fault, int amount, const QString& type, const Addressee& whose);
    /// The last that concerns an application counts.
    void setLatency(int milliseconds, const Addressee& whose);
    int latencyOf(const Addressee& whose) const;
    /// What was ordered is forgotten. What is under way stays so: for whom it was is gone, and numbers do not come
    /// again.
    void reset();

private:
    struct OrderedFault
    {
        Simulator::Fault fault;
        int amount;
        QString type; ///< Empty for any message.
        Addressee whose;
    };
    struct Latency
    {
        int milliseconds;
        Addressee whose;
    };
    struct Waiting
    {
        qint64 due;
        int client;
        QByteArray record;
    };

    void suffer(const OrderedFault& ordered, int client, const QByteArray& record);
    void deliverDue();
    void schedule();

    const Deliver m_deliver;
    const UuidOf m_uuidOf;
    QList<OrderedFault> m_faults;
    QList<Latency> m_latencies;
    QList<Waiting> m_waiting; ///< In the order in which they came.
    QElapsedTimer m_clock;
    QTimer m_timer;
};

} // namespace zelcore
