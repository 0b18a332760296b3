// SPDX-License-Identifier: Apache-2.0
#include "BoxModel.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace zeldesk {

namespace {

template <typename Things>
QStringList idsOf(const Things& things)
{
    QStringList ids;
    for (const auto& thing : things)
        ids.append(thing.id);
    return ids;
}

QString zelcore::BoxItem::*memberOf(int role)
{
    switch (role) {
    case BoxModel::IdRole:
        return &zelcore::BoxItem::id;
    case Qt::DisplayRole:
    case BoxModel::TextRole:
        return &zelcore::BoxItem::text;
    case BoxModel::CookieRole:
        return &zelcore::BoxItem::cookie;
    case BoxModel::IconRole:
        return &zelcore::BoxItem::iconId;
    default:
        return nullptr;
    }
}

} // namespace

BoxModel::BoxModel(zelcore::Simulator& simulator, QObject* parent)
    : KeyedListModel(parent)
    , m_simulator(simulator)
{
    // Which item it was is not told, and they are few.
    connect(&simulator, &zelcore::Simulator::boxChanged, this, &BoxModel::changeAll);
    connect(&simulator, &zelcore::Simulator::boxChanged, this, &BoxModel::iconsChanged);
    connect(&simulator, &zelcore::Simulator::worldReset, this, &BoxModel::changeAll);
    connect(&simulator, &zelcore::Simulator::worldReset, this, &BoxModel::iconsChanged);
}

QVariant BoxModel::data(const QModelIndex& index, int role) const
{
    const auto member = memberOf(role);
    if (!member || !checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    return item(key(index)).*member;
}

bool BoxModel::setData(const QModelIndex& index, const QVariant& value, int role)
{
    const auto member = memberOf(role);
    if (!member || role == IdRole || !checkIndex(index, CheckIndexOption::IndexIsValid))
        return false;
    zelcore::BoxItem changed = item(key(index));
    changed.*member = value.toString();
    return m_simulator.changeBoxItem(changed);
}

QHash<int, QByteArray> BoxModel::roleNames() const
{
    return {{IdRole, "itemId"}, {TextRole, "text"}, {CookieRole, "cookie"}, {IconRole, "icon"}};
}

QStringList BoxModel::icons() const
{
    return idsOf(m_simulator.boxIcons());
}

bool BoxModel::add(const QString& text)
{
    return !m_simulator.addBoxItem(text).isEmpty();
}

void BoxModel::remove(const QString& id)
{
    m_simulator.removeBoxItem(id);
}

void BoxModel::clear()
{
    m_simulator.clearBox();
}

void BoxModel::addIcon()
{
    const QStringList taken = icons();
    int id = 1;
    while (taken.contains(QString::number(id)))
        ++id;
    m_simulator.execute(u"box icon %1 800"_s.arg(id));
}

void BoxModel::removeIcon(const QString& id)
{
    m_simulator.removeBoxIcon(id.toInt());
}

QStringList BoxModel::wantedKeys() const
{
    return idsOf(m_simulator.boxItems());
}

/// One that has gone is empty until the next turn.
zelcore::BoxItem BoxModel::item(const QString& id) const
{
    const QList<zelcore::BoxItem> items = m_simulator.boxItems();
    const auto found =
        std::find_if(items.cbegin(), items.cend(), [&](const zelcore::BoxItem& item) { return item.id == id; });
    return found == items.cend() ? zelcore::BoxItem() : *found;
}

} // namespace zeldesk
