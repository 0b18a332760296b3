// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Simulator.h>

#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtQml/qqmlregistration.h>

namespace zeldesk {

class Service;

/// What applications must survive: latency, a service that does not read, faults of single messages, refusals. An
/// application is named by its number; an empty name means all of them.
class Weather : public QObject
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    // Milliseconds that every record takes.
    Q_PROPERTY(int latencyTo READ latencyTo WRITE setLatencyTo NOTIFY changed FINAL)
    Q_PROPERTY(int latencyFrom READ latencyFrom WRITE setLatencyFrom NOTIFY changed FINAL)
    Q_PROPERTY(bool reading READ isReading WRITE setReading NOTIFY changed FINAL)
    /// By the values of zelcore::Simulator::Fault.
    Q_PROPERTY(QStringList faults READ faults CONSTANT FINAL)

public:
    /// \a simulator and \a service, which is told what is ordered, must outlive this.
    Weather(zelcore::Simulator& simulator, Service& service, QObject* parent = nullptr);

    int latencyTo() const { return m_simulator.latency(Direction::ToApplication); }
    void setLatencyTo(int milliseconds) { setLatency(Direction::ToApplication, milliseconds); }
    int latencyFrom() const { return m_simulator.latency(Direction::FromApplication); }
    void setLatencyFrom(int milliseconds) { setLatency(Direction::FromApplication, milliseconds); }
    bool isReading() const { return m_simulator.isReading(); }
    void setReading(bool reading);
    QStringList faults() const;

    /// What the amount of a fault counts; empty for one that has none.
    Q_INVOKABLE QString unitOf(int fault) const;
    /// Orders a fault for the next message, of a \a type if one is given.
    Q_INVOKABLE bool injectFault(bool fromApplication, int fault, int amount, const QString& type,
                                 const QString& application);
    /// Has the next request of a type refused, although it is right.
    Q_INVOKABLE bool refuseNext(const QString& type, const QString& application);

Q_SIGNALS:
    void changed();

private:
    using Direction = zelcore::WireRecord::Direction;

    void setLatency(Direction direction, int milliseconds);
    bool order(bool isDone, const QString& what, const QString& type, const QString& application);

    zelcore::Simulator& m_simulator;
    Service& m_service;
};

} // namespace zeldesk
