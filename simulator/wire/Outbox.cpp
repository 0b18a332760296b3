// SPDX-License-Identifier: Apache-2.0
#include <simulator/wire/Outbox.h>

#include <simulator/wire/Wire.h>

#include <vx/system/ObjectServer.h>

#include <QtCore/QTimer>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zelcore {

namespace {

/// Unreadable as JSON for certain, and as long as before.
QByteArray garbled(QByteArray record)
{
    for (qsizetype i = record.size() / 2; i < record.size(); i += 3)
        record[i] = '#';
    const qsizetype end = record.lastIndexOf('}');
    if (end >= 0)
        record[end] = '#';
    return record;
}

} // namespace

Outbox::Outbox(vx::system::ObjectServer& server, QObject* parent)
    : QObject(parent)
    , m_server(server)
{
}

void Outbox::send(int client, QLatin1String type, const QByteArray& body)
{
    sendJson(client, QString(type), wire::envelope(type, body));
}

void Outbox::sendJson(int client, const QString& type, const QByteArray& json)
{
    Q_EMIT sent(client, type, json);
    const QByteArray record = wire::record(json);
    const auto ordered = std::find_if(m_faults.cbegin(), m_faults.cend(), [&](const OrderedFault& fault) {
        return fault.type.isEmpty() || fault.type == type;
    });
    if (ordered == m_faults.cend()) {
        sendRecord(client, record);
        return;
    }
    const OrderedFault fault = *ordered;
    m_faults.erase(ordered);
    suffer(fault, client, record);
}

void Outbox::sendRecord(int client, const QByteArray& record)
{
    if (m_server.send(client, record))
        Q_EMIT passed(client, record);
    else if (m_server.clients().contains(client))
        Q_EMIT lost(client, u"a record of %1 bytes could not be sent"_s.arg(record.size()));
}

void Outbox::addFault(Simulator::Fault fault, int amount, const QString& type)
{
    m_faults.append({fault, amount, type});
}

void Outbox::suffer(const OrderedFault& ordered, int client, const QByteArray& record)
{
    switch (ordered.fault) {
    case Simulator::Fault::Drop:
        return;
    case Simulator::Fault::Delay:
        QTimer::singleShot(qMax(0, ordered.amount), this, [=, this] { sendRecord(client, record); });
        return;
    case Simulator::Fault::Duplicate:
        sendRecord(client, record);
        sendRecord(client, record);
        return;
    case Simulator::Fault::Truncate:
        // A record without a byte cannot be sent.
        sendRecord(client, record.left(qMax(1, ordered.amount)));
        return;
    case Simulator::Fault::Garble:
        sendRecord(client, garbled(record));
        return;
    }
}

} // namespace zelcore
