// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ContactFilterModel.h>

#include <vx/platform/zel/UserStatus.h>

#include <QtCore/QCollator>
#include <QtCore/QScopedValueRollback>
#include <QtCore/QStringList>

#include <algorithm>
#include <array>

namespace vx::platform::zel {

class ContactFilterModel::Private
{
public:
    bool fits(const QAbstractItemModel& model, const QModelIndex& index) const;

    QString searchText;
    QStringList words; ///< of the search text
    Presence presence = Anybody;
    QLocale locale;
    QCollator collator{locale};
    /// Whoever does not fit already cannot do so now. Until the first row goes: then others may change contacts.
    bool isNarrowing = false;

    // Roles of the source model.
    int nameRole = -1;
    int handleRole = -1;
    int statusRole = -1;
    int recordRole = -1;
    std::array<int, 4> searchedRoles{};
};

bool ContactFilterModel::Private::fits(const QAbstractItemModel& model, const QModelIndex& index) const
{
    if (presence != Anybody) {
        const auto status = model.data(index, statusRole).value<UserStatus::Type>();
        if ((status == UserStatus::Available) != (presence == Available))
            return false;
    }
    if (words.isEmpty())
        return true;
    QString searched;
    for (const int role : searchedRoles)
        searched += model.data(index, role).toString() + u'\n';
    return std::all_of(words.cbegin(), words.cend(),
                       [&](const QString& word) { return searched.contains(word, Qt::CaseInsensitive); });
}

ContactFilterModel::ContactFilterModel(QObject* parent)
    : QSortFilterProxyModel(parent)
    , d(std::make_unique<Private>())
{
    d->collator.setCaseSensitivity(Qt::CaseInsensitive);
    connect(this, &QAbstractItemModel::rowsInserted, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::rowsRemoved, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::modelReset, this, &ContactFilterModel::countChanged);
    connect(this, &QAbstractItemModel::rowsAboutToBeRemoved, this, [this] { d->isNarrowing = false; });
    sort(0);
}

ContactFilterModel::~ContactFilterModel() = default;

int ContactFilterModel::count() const
{
    return rowCount();
}

Contact ContactFilterModel::contact(int row) const
{
    return index(row, 0).data(d->recordRole).value<Contact>();
}

QString ContactFilterModel::searchText() const
{
    return d->searchText;
}

void ContactFilterModel::setSearchText(const QString& text)
{
    if (text == d->searchText)
        return;
    {
        // Without the dynamic filter whoever came to fit meanwhile is not among those whom it has found.
        const bool isNarrowing = dynamicSortFilter() && text.startsWith(d->searchText);
        const QScopedValueRollback narrowing(d->isNarrowing, isNarrowing);
        d->searchText = text;
        d->words = text.simplified().split(u' ', Qt::SkipEmptyParts);
        invalidateFilter();
    }
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
    const QHash<int, QByteArray> names = model ? model->roleNames() : QHash<int, QByteArray>();
    d->nameRole = names.key("displayName", Qt::DisplayRole);
    d->handleRole = names.key("handle", -1);
    d->statusRole = names.key("status", -1);
    d->recordRole = names.key("record", -1);
    d->searchedRoles = {names.key("displayName", -1), d->handleRole, names.key("personalMessage", -1),
                        names.key("statusMessage", -1)};
    setSortRole(d->nameRole);
    setFilterRole(-1); // a change of any role may change who fits
    QSortFilterProxyModel::setSourceModel(model);
}

bool ContactFilterModel::filterAcceptsRow(int row, const QModelIndex& parent) const
{
    const QAbstractItemModel& model = *sourceModel();
    const QModelIndex index = model.index(row, 0, parent);
    return (!d->isNarrowing || mapFromSource(index).isValid()) && d->fits(model, index);
}

bool ContactFilterModel::lessThan(const QModelIndex& left, const QModelIndex& right) const
{
    const QAbstractItemModel& model = *sourceModel();
    const auto compare = [&](int role) {
        return d->collator.compare(model.data(left, role).toString(), model.data(right, role).toString());
    };
    const int byName = compare(d->nameRole);
    return byName != 0 ? byName < 0 : compare(d->handleRole) < 0;
}

} // namespace vx::platform::zel
