// SPDX-License-Identifier: Apache-2.0
#include "WireModel.h"

#include <common/WireText.h>

#include <QtCore/QDateTime>

#include <algorithm>
#include <chrono>
#include <utility>

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace zeldesk {

using zelcore::WireRecord;

namespace {

constexpr qsizetype summaryLength = 240;
/// Garbled records may name any type.
constexpr size_t mostTypes = 200;

} // namespace

WireModel::WireModel(zelcore::Simulator& simulator, QObject* parent)
    : QAbstractListModel(parent)
{
    m_turn.setSingleShot(true);
    m_turn.setInterval(100ms);
    connect(&m_turn, &QTimer::timeout, this, &WireModel::takeTurn);
    connect(&simulator, &zelcore::Simulator::recordPassed, this, &WireModel::take);
}

void WireModel::setHeld(bool held)
{
    if (std::exchange(m_isHeld, held) == held)
        return;
    m_turn.start();
    Q_EMIT heldChanged();
}

QStringList WireModel::types() const
{
    return {m_types.cbegin(), m_types.cend()};
}

QStringList WireModel::applications() const
{
    QStringList numbers;
    for (const int number : m_applications)
        numbers.append(QString::number(number));
    return numbers;
}

QVariant WireModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const WireLog::Entry& entry = m_log.at(m_shown[size_t(index.row())]);
    const WireRecord& record = entry.record;
    switch (role) {
    case TimeRole:
        return QDateTime::fromMSecsSinceEpoch(record.time).toString(u"HH:mm:ss.zzz"_s);
    case ApplicationRole:
        return record.client;
    case FromApplicationRole:
        return record.direction == WireRecord::Direction::FromApplication;
    case Qt::DisplayRole:
    case TypeRole:
        return entry.type;
    case SummaryRole:
        return zeltools::summaryOf(record, summaryLength);
    case SizeRole:
        return record.bytes.size();
    default:
        return {};
    }
}

QHash<int, QByteArray> WireModel::roleNames() const
{
    return {{TimeRole, "time"}, {ApplicationRole, "application"}, {FromApplicationRole, "fromApplication"},
            {TypeRole, "type"}, {SummaryRole, "summary"},         {SizeRole, "size"}};
}

QString WireModel::pretty(int row) const
{
    return row >= 0 && row < count() ? zeltools::prettyOf(m_log.at(m_shown[size_t(row)]).record) : QString();
}

int WireModel::lastOfType(const QString& type) const
{
    const auto isOfType = [&](quint64 number) { return m_log.at(number).type == type; };
    return int(std::find_if(m_shown.crbegin(), m_shown.crend(), isOfType).base() - m_shown.cbegin()) - 1;
}

void WireModel::clear()
{
    m_waiting.dropBefore(m_waiting.end());
    dropOldest(m_log.end());
    Q_EMIT countsChanged();
}

void WireModel::take(const WireRecord& record)
{
    m_waiting.append({record, zeltools::typeOf(record)});
    m_waiting.dropBefore(m_waiting.keptFrom());
    if (!m_turn.isActive())
        m_turn.start();
}

void WireModel::takeTurn()
{
    const auto choices = m_types.size() + m_applications.size();
    if (!m_isHeld) {
        for (quint64 number = m_waiting.begin(); number < m_waiting.end(); ++number) {
            const WireLog::Entry& entry = m_waiting.at(number);
            m_log.append(entry);
            m_applications.insert(entry.record.client);
            if (m_types.size() < mostTypes)
                m_types.insert(entry.type);
        }
        m_waiting.dropBefore(m_waiting.end());
        dropOldest(m_log.keptFrom());
        showNew();
    }
    Q_EMIT countsChanged();
    if (m_types.size() + m_applications.size() != choices)
        Q_EMIT choicesChanged();
}

void WireModel::dropOldest(quint64 before)
{
    const auto end = std::lower_bound(m_shown.cbegin(), m_shown.cend(), before);
    const auto rows = int(end - m_shown.cbegin());
    if (rows > 0) {
        beginRemoveRows({}, 0, rows - 1);
        m_shown.erase(m_shown.cbegin(), end);
        endRemoveRows();
    }
    m_log.dropBefore(before);
    m_looked = std::max(m_looked, before);
}

/// Those that nobody has looked at yet, as far as they are asked for.
std::deque<quint64> WireModel::lookOn()
{
    std::deque<quint64> found;
    for (; m_looked < m_log.end(); ++m_looked) {
        if (m_filter.accepts(m_log.at(m_looked)))
            found.push_back(m_looked);
    }
    return found;
}

void WireModel::showNew()
{
    const std::deque<quint64> found = lookOn();
    if (found.empty())
        return;
    beginInsertRows({}, count(), count() + int(found.size()) - 1);
    m_shown.insert(m_shown.cend(), found.cbegin(), found.cend());
    endInsertRows();
}

void WireModel::ask(const Filter& filter)
{
    if (filter == m_filter)
        return;
    beginResetModel();
    m_filter = filter;
    m_looked = m_log.begin();
    m_shown = lookOn();
    endResetModel();
    Q_EMIT filterChanged();
    Q_EMIT countsChanged();
}

bool WireModel::Filter::accepts(const WireLog::Entry& entry) const
{
    const WireRecord& record = entry.record;
    const bool isFrom = record.direction == WireRecord::Direction::FromApplication;
    return (direction == BothDirections || isFrom == (direction == FromApplications)) &&
           (type.isEmpty() || type == entry.type) &&
           (application.isEmpty() || application == QString::number(record.client)) &&
           (text.isEmpty() || record.bytes.contains(text.toUtf8()));
}

} // namespace zeldesk
