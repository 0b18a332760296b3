// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactFilterModel.h>

#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QCollator>
#include <QtCore/QStringList>

#include <algorithm>

namespace vx::platform::zel {

class ContactFilterModel::Private
{
public:
    QString textOf(const QAbstractItemModel& model, const QModelIndex& index, const char* property) const
    {
        return model.data(index, roles.value(property, -1)).toString();
    }

    QString searchText;
    QStringList words; ///< of the search text
    Presence presence = Anybody;
    QLocale locale;
    QCollator collator{locale};
    QHash<QByteArray, int> roles; ///< of the source model, by name
};

ContactFilterModel::ContactFilterModel(QObject* parent)
    : QSortFilterProxyModel(parent)
    , d(std::make_unique<Private>())
{
    d->collator.setCaseSensitivity(Qt::CaseInsensitive);
    connect(this, &QAbstractItemModel::rowsInserted, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::modelReset, this, &ContactFilterModel::countChanged);
    sort(0);
}

ContactFilterModel::~ContactFilterModel() = default;

int ContactFilterModel::count() const
{
    return rowCount();
}

Contact ContactFilterModel::contact(int row) const
{
    return index(row, 0).data(d->roles.value("record", -1)).value<Contact>();
}

QString ContactFilterModel::searchText() const
{
    return d->searchText;
}

void ContactFilterModel::setSearchText(const QString& text)
{
    if (text == d->searchText)
        return;
    d->searchText = text;
    d->words = text.simplified().split(u' ', Qt::SkipEmptyParts);
    invalidateFilter();
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
    d->presence = presence;
    invalidateFilter();
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
    d->locale = locale;
    d->collator.setLocale(locale);
    invalidate();
    Q_EMIT localeChanged();
}

void ContactFilterModel::setSourceModel(QAbstractItemModel* model)
{
    d->roles.clear();
    const QHash<int, QByteArray> names = model ? model->roleNames() : QHash<int, QByteArray>();
    for (auto name = names.cbegin(); name != names.cend(); ++name)
        d->roles.insert(*name, name.key());
    setSortRole(d->roles.value("displayName", Qt::DisplayRole));
    setFilterRole(-1); // a change of any role may change who fits
    QSortFilterProxyModel::setSourceModel(model);
}

bool ContactFilterModel::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const QAbstractItemModel& model = *sourceModel();
    const QModelIndex index = model.index(row, 0, parent);
    if (d->presence != Anybody) {
        const auto status = model.data(index, d->roles.value("status", -1)).value<UserStatus::Type>();
        if ((status == UserStatus::Available) != (d->presence == Available))
            return false;
    }
    if (d->words.isEmpty())
        return true;
    QString searched;
    for (const char* property : {"displayName", "handle", "personalMessage", "statusMessage"})
        searched += d->textOf(model, index, property) + u'\n';
    return std::all_of(d->words.cbegin(), d->words.cend(),
                       [&](const QString& word) { return searched.contains(word, Qt::CaseInsensitive); });
}

bool ContactFilterModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QAbstractItemModel& model = *sourceModel();
    const auto compare = [&](const char* property) {
        return d->collator.compare(d->textOf(model, left, property), d->textOf(model, right, property));
    };
    const int byName = compare("displayName");
    return byName != 0 ? byName < 0 : compare("handle") < 0;
}

} // namespace vx::platform::zel
