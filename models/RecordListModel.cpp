// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/RecordListModel.h>

#include "GapList.h"

#include <QtCore/QMetaObject>
#include <QtCore/QMetaProperty>
#include <QtCore/QPointer>
#include <QtCore/QSet>

#include <algorithm>
#include <utility>

namespace vx::platform::zel {

class RecordListModel::Private
{
public:
    Private(RecordListModel* model, const Shown& whatIsShown)
        : q(model)
        , shown(whatIsShown)
        , key(shown.type.property(shown.type.indexOfProperty(shown.key)))
    {
    }

    QString keyOf(const QVariant& record) const { return key.readOnGadget(record.constData()).toString(); }
    QMetaProperty propertyOf(int role) const
    {
        return role == Qt::DisplayRole ? shown.type.property(shown.type.indexOfProperty(shown.display))
                                       : shown.type.property(role - FirstPropertyRole);
    }
    int count() const { return records.count(); }
    /// Where a row with this key is, or, in key order, would be.
    int placeOf(const QString& wanted, int from = 0) const
    {
        if (shown.isInKeyOrder)
            return records.firstNot([&](const QVariant& record) { return keyOf(record) < wanted; }, from);
        while (from < count() && keyOf(records.at(from)) != wanted)
            ++from;
        return from;
    }
    bool isAt(int row, const QString& wanted) const { return row < count() && keyOf(records.at(row)) == wanted; }

    // Each answers false when a slot has destroyed the model, or brought it newer rows: there is nothing to go on with.
    bool insert(int row, const QList<QVariant>& added);
    bool remove(int first, int last);
    bool move(int from, int to);
    bool replace(int row, const QVariant& record);
    bool tellCount();

    bool replaceAll(const QList<QVariant>& wanted);
    /// Ends what is under way: there are newer rows, be they the same as those that are there.
    void overtake() { ++m_changes; }

    RecordListModel* const q;
    const Shown shown;
    const QMetaProperty key;
    GapList<QVariant> records;
    int replacing = 0;

private:
    /// Calls what announces, and tells whether nothing has changed meanwhile.
    template <typename Announce>
    bool isLastAfter(Announce announce)
    {
        const QPointer<RecordListModel> alive(q);
        const quint64 change = ++m_changes;
        announce();
        return alive && change == m_changes;
    }

    quint64 m_changes = 0;
    int m_countBefore = 0;
};

bool RecordListModel::Private::insert(int row, const QList<QVariant>& added)
{
    return isLastAfter([&] {
        q->beginInsertRows({}, row, int(row + added.size() - 1));
        std::copy(added.cbegin(), added.cend(), records.insert(row, int(added.size())).begin());
        q->endInsertRows();
    });
}

bool RecordListModel::Private::remove(int first, int last)
{
    return isLastAfter([&] {
        q->beginRemoveRows({}, first, last);
        records.remove(first, last - first + 1);
        q->endRemoveRows();
    });
}

bool RecordListModel::Private::move(int from, int to)
{
    return isLastAfter([&] {
        q->beginMoveRows({}, from, from, {}, to);
        records.move(from, to);
        q->endMoveRows();
    });
}

bool RecordListModel::Private::replace(int row, const QVariant& record)
{
    const QVariant before = std::exchange(records[row], record);
    if (before == record)
        return true;
    QList<int> roles;
    for (int i = 0; i < shown.type.propertyCount(); ++i) {
        const QMetaProperty property = shown.type.property(i);
        if (property.readOnGadget(before.constData()) != property.readOnGadget(record.constData()))
            roles.append(FirstPropertyRole + i);
    }
    if (roles.contains(q->role(shown.display)))
        roles.prepend(Qt::DisplayRole);
    roles.append(RecordRole);
    return isLastAfter([&] {
        const QModelIndex index = q->index(row);
        Q_EMIT q->dataChanged(index, index, roles);
    });
}

bool RecordListModel::Private::tellCount()
{
    if (std::exchange(m_countBefore, q->count()) == q->count())
        return true;
    return isLastAfter([&] { Q_EMIT q->countChanged(); });
}

bool RecordListModel::Private::replaceAll(const QList<QVariant>& wanted)
{
    QSet<QString> staying;
    for (const QVariant& record : wanted)
        staying.insert(keyOf(record));
    QSet<QString> there;
    for (int last = count() - 1; last >= 0;) {
        int first = last;
        if (staying.contains(keyOf(records.at(last)))) {
            there.insert(keyOf(records.at(last)));
            --last;
            continue;
        }
        while (first > 0 && !staying.contains(keyOf(records.at(first - 1))))
            --first;
        if (!remove(first, last))
            return false;
        last = first - 1;
    }
    // Up to `row` all is as it is to be.
    int row = 0;
    for (qsizetype i = 0; i < wanted.size(); ++row) {
        QList<QVariant> added;
        for (; i < wanted.size() && !there.contains(keyOf(wanted.at(i))); ++i)
            added.append(wanted.at(i));
        if (!added.isEmpty() && !insert(row, added))
            return false;
        row += added.size();
        if (i == wanted.size())
            break;
        const QString next = keyOf(wanted.at(i));
        const int from = isAt(row, next) ? row : placeOf(next, row);
        if ((from != row && !move(from, row)) || !replace(row, wanted.at(i)))
            return false;
        ++i;
    }
    return true;
}

RecordListModel::RecordListModel(const Shown& shown, QObject* parent)
    : QAbstractListModel(parent)
    , d(std::make_unique<Private>(this, shown))
{
}

RecordListModel::~RecordListModel() = default;

int RecordListModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : count();
}

int RecordListModel::count() const
{
    return int(d->count());
}

QVariant RecordListModel::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    const QVariant& record = d->records.at(index.row());
    if (role == RecordRole)
        return record;
    const QMetaProperty property = d->propertyOf(role);
    return property.isValid() ? property.readOnGadget(record.constData()) : QVariant();
}

QHash<int, QByteArray> RecordListModel::roleNames() const
{
    QHash<int, QByteArray> names{{Qt::DisplayRole, "display"}, {RecordRole, "record"}};
    for (int i = 0; i < d->shown.type.propertyCount(); ++i)
        names.insert(FirstPropertyRole + i, d->shown.type.property(i).name());
    return names;
}

int RecordListModel::rowOf(const QString& key) const
{
    const int place = d->placeOf(key);
    return d->isAt(place, key) ? place : -1;
}

int RecordListModel::role(const QByteArray& name) const
{
    const int property = d->shown.type.indexOfProperty(name.constData());
    return property == -1 ? (name == "record" ? int(RecordRole) : -1) : FirstPropertyRole + property;
}

void RecordListModel::setRecords(const QList<QVariant>& records)
{
    QList<QVariant> distinct;
    QSet<QString> keys;
    for (const QVariant& record : records) {
        const auto before = keys.size();
        keys.insert(d->keyOf(record));
        if (keys.size() > before)
            distinct.append(record);
    }
    const QPointer<RecordListModel> alive(this);
    ++d->replacing;
    d->overtake();
    const bool isDone = d->replaceAll(distinct);
    if (!alive)
        return;
    --d->replacing;
    if (isDone)
        d->tellCount();
}

bool RecordListModel::isBeingReplaced() const
{
    return d->replacing > 0;
}

void RecordListModel::setRecord(const QVariant& record)
{
    const QString key = d->keyOf(record);
    const int place = d->placeOf(key);
    if (d->isAt(place, key) ? d->replace(place, record) : d->insert(place, {record}))
        d->tellCount();
}

void RecordListModel::removeRecord(const QString& key)
{
    const int place = d->placeOf(key);
    if (d->isAt(place, key) && d->remove(place, place))
        d->tellCount();
}

} // namespace vx::platform::zel
