// SPDX-License-Identifier: Apache-2.0
#include "ContactFilterModelPrivate.h"

#include <vector>

namespace vx::platform::zel {

ContactFilterModel::ContactFilterModel(QObject* parent)
    : QAbstractProxyModel(parent)
    , d(std::make_unique<Private>(this))
{
    connect(this, &QAbstractItemModel::rowsInserted, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::modelReset, this, &ContactFilterModel::countChanged);
}

ContactFilterModel::~ContactFilterModel() = default;

int ContactFilterModel::count() const
{
    return d->shown.count();
}

Contact ContactFilterModel::contact(int row) const
{
    return index(row, 0).data(role("record")).value<Contact>();
}

int ContactFilterModel::rowOf(const QString& handle) const
{
    int row = count() - 1;
    while (row >= 0 && d->shown.at(row)->key->handle != handle)
        --row;
    return row;
}

int ContactFilterModel::role(const QByteArray& name) const
{
    return roleNames().key(name, -1);
}

QString ContactFilterModel::searchText() const
{
    return d->searchText;
}

void ContactFilterModel::setSearchText(const QString& text)
{
    if (text == d->searchText)
        return;
    const bool isNarrower = text.startsWith(d->searchText); // whoever does not fit already cannot do so now
    ++d->changes;
    d->searchText = text;
    d->words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    if (d->judgeAll(isNarrower))
        Q_EMIT searchTextChanged();
}

ContactFilterModel::Presence ContactFilterModel::presence() const
{
    return d->presence;
}

void ContactFilterModel::setPresence(Presence presence)
{
    if (presence == d->presence)
        return;
    ++d->changes;
    d->presence = presence;
    if (d->judgeAll(false))
        Q_EMIT presenceChanged();
}

QLocale ContactFilterModel::locale() const
{
    return d->locale;
}

void ContactFilterModel::setLocale(const QLocale& locale)
{
    if (locale == d->locale)
        return;
    Q_EMIT layoutAboutToBeChanged({}, VerticalSortHint);
    ++d->changes;
    const QModelIndexList before = persistentIndexList();
    std::vector<const Private::Person*> people;
    for (const QModelIndex& index : before)
        people.push_back(d->shown.at(index.row()));
    d->locale = locale;
    d->collator.setLocale(locale);
    d->layOut();
    QModelIndexList after;
    for (const Private::Person* const person : people)
        after.append(index(d->placeOf(*person), 0));
    changePersistentIndexList(before, after);
    const QPointer<ContactFilterModel> alive(this);
    Q_EMIT layoutChanged({}, VerticalSortHint);
    if (alive)
        Q_EMIT localeChanged();
}

void ContactFilterModel::setSourceModel(QAbstractItemModel* model)
{
    beginResetModel();
    QAbstractProxyModel::setSourceModel(model);
    d->follow(model);
    d->readAll();
    endResetModel();
}

QVariant ContactFilterModel::data(const QModelIndex& index, int role) const
{
    const QModelIndex there = mapToSource(index);
    return there.isValid() ? there.data(role) : QVariant();
}

QModelIndex ContactFilterModel::mapToSource(const QModelIndex& index) const
{
    const bool isShown = index.isValid() && index.row() < count();
    return isShown && sourceModel() ? sourceModel()->index(d->rowOf(*d->shown.at(index.row())), 0) : QModelIndex();
}

QModelIndex ContactFilterModel::mapFromSource(const QModelIndex& index) const
{
    if (!index.isValid() || index.parent().isValid() || index.row() >= d->rows.count())
        return {};
    const Private::Person& person = *d->rows.at(index.row());
    return person.key ? this->index(d->placeOf(person), 0) : QModelIndex();
}

QModelIndex ContactFilterModel::index(int row, int column, const QModelIndex& parent) const
{
    return hasIndex(row, column, parent) ? createIndex(row, column) : QModelIndex();
}

QModelIndex ContactFilterModel::parent(const QModelIndex&) const
{
    return {};
}

int ContactFilterModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

int ContactFilterModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 1;
}

bool ContactFilterModel::hasChildren(const QModelIndex& parent) const
{
    return rowCount(parent) > 0;
}

} // namespace vx::platform::zel
