// SPDX-License-Identifier: Apache-2.0
#include "Weather.h"

#include "Service.h"

#include <QtCore/QMetaEnum>

using namespace Qt::StringLiterals;

namespace zeldesk {

using zelcore::Simulator;

Weather::Weather(Simulator& simulator, Service& service, QObject* parent)
    : QObject(parent)
    , m_simulator(simulator)
    , m_service(service)
{
    connect(&service, &Service::ordersChanged, this, &Weather::changed);
}

void Weather::setReading(bool reading)
{
    m_simulator.setReading(reading);
    Q_EMIT changed();
}

void Weather::setLatency(Direction direction, int milliseconds)
{
    m_simulator.setLatency(direction, milliseconds);
    Q_EMIT changed();
}

QStringList Weather::faults() const
{
    QStringList names;
    const auto all = QMetaEnum::fromType<Simulator::Fault>();
    for (int i = 0; i < all.keyCount(); ++i)
        names.append(QString::fromLatin1(all.key(i)));
    return names;
}

QString Weather::unitOf(int fault) const
{
    switch (Simulator::Fault(fault)) {
    case Simulator::Fault::Delay:
        return u"ms"_s;
    case Simulator::Fault::Truncate:
        return u"bytes"_s;
    default:
        return {};
    }
}

bool Weather::injectFault(bool fromApplication, int fault, int amount, const QString& type, const QString& application)
{
    const Direction direction = fromApplication ? Direction::FromApplication : Direction::ToApplication;
    return order(m_simulator.injectFault(Simulator::Fault(fault), amount, type, application, direction),
                 faults().value(fault) + (fromApplication ? u" from"_s : u" to"_s), type, application);
}

bool Weather::refuseNext(const QString& type, const QString& application)
{
    return order(m_simulator.refuseNext(type, {}, application), u"Refuse of"_s, type, application);
}

/// What was refused has been said.
bool Weather::order(bool isDone, const QString& what, const QString& type, const QString& application)
{
    if (isDone)
        m_service.note(u"%1 %2: the next %3"_s.arg(
            what, application.isEmpty() ? u"any application"_s : u"application "_s + application,
            type.isEmpty() ? u"message"_s : type));
    return isDone;
}

} // namespace zeldesk
