// SPDX-License-Identifier: Apache-2.0
#include "KeyedListModel.h"

#include <utility>

namespace zeldesk {

KeyedListModel::KeyedListModel(QObject* parent)
    : QAbstractListModel(parent)
{
    m_turn.setSingleShot(true);
    connect(&m_turn, &QTimer::timeout, this, &KeyedListModel::takeTurn);
    m_turn.start(0); // what is there already
}

void KeyedListModel::change(const QString& key)
{
    m_changed.insert(key);
    if (!m_turn.isActive())
        m_turn.start(turn);
}

void KeyedListModel::changeAll()
{
    m_changed.unite({m_keys.cbegin(), m_keys.cend()});
    change({});
}

void KeyedListModel::takeTurn()
{
    const int before = count();
    const QStringList wanted = wantedKeys();
    removeAllBut(wanted);
    tellChanged(std::exchange(m_changed, {}));
    if (wanted.size() > m_keys.size()) {
        beginInsertRows({}, count(), int(wanted.size()) - 1);
        m_keys = wanted;
        endInsertRows();
    }
    if (count() != before)
        Q_EMIT countChanged();
}

/// Leaves what \a wanted begins with.
void KeyedListModel::removeAllBut(const QStringList& wanted)
{
    for (int row = 0; row < count();) {
        const auto isKept = [&](int candidate) {
            return row < wanted.size() && m_keys.at(candidate) == wanted.at(row);
        };
        int end = row;
        while (end < count() && !isKept(end))
            ++end;
        if (end > row) {
            beginRemoveRows({}, row, end - 1);
            m_keys.remove(row, end - row);
            endRemoveRows();
        } else {
            ++row;
        }
    }
}

void KeyedListModel::tellChanged(const QSet<QString>& changed)
{
    for (int row = 0; row < count() && !changed.isEmpty(); ++row) {
        const int first = row;
        while (row < count() && changed.contains(m_keys.at(row)))
            ++row;
        if (row > first)
            Q_EMIT dataChanged(index(first), index(row - 1));
    }
}

} // namespace zeldesk
