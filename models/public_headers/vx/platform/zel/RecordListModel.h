// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QAbstractListModel>
#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QVariant>

#include <memory>

namespace vx::platform::zel {

/// What ContactListModel and ProfileBoxModel have in common: a row for each value, and a role for each of its
/// properties, by the property's name.
///
/// A list that is other than before becomes the difference, by key: rows come, go and move, and dataChanged() names
/// the roles that changed and no others. The model is never reset. Rows that come or go side by side are announced at
/// once. A slot may do anything: what comes meanwhile is shown meanwhile, and it may destroy the model. Only the slots
/// of the signals that announce what is about to happen may do nothing but read.
///
/// Thread: that of the context.
class Q_DECL_EXPORT RecordListModel : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)

public:
    /// The roles of every such model, beside Qt::DisplayRole.
    enum Role {
        RecordRole = Qt::UserRole, ///< the value itself; in QML it is called "record"
        FirstPropertyRole,         ///< its first property; the others follow
    };

    ~RecordListModel() override;

    /// How many rows there are; none where \a parent is a row itself.
    int rowCount(const QModelIndex& parent = {}) const override;
    /// What \a role is for the row of \a index. Invalid without such a row or role.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// The names of all roles, as delegates in QML use them.
    QHash<int, QByteArray> roleNames() const override;
    /// rowCount().
    int count() const;
    /// The row whose value has this \a key; -1 when there is none.
    Q_INVOKABLE int rowOf(const QString& key) const;
    /// The number of the role that is called \a name; -1 when there is none.
    int role(const QByteArray& name) const;

Q_SIGNALS:
    /// count() is another number than before. After the rows were announced.
    void countChanged();

protected:
    /// What a model shows of its values.
    struct Shown
    {
        const QMetaObject& type; ///< of the values; its properties become roles
        const char* key;         ///< the property by which a value is known
        const char* display;     ///< the property that is Qt::DisplayRole, too
        bool isInKeyOrder;       ///< whether the values always come in the order of their keys
    };

    /// An empty model of what \a shown says; \a parent may own it.
    RecordListModel(const Shown& shown, QObject* parent);

    /// Makes the rows these \a records. Of those with one key the first counts.
    void setRecords(const QList<QVariant>& records);
    /// Puts \a record in the place of the row with its key. One that is new goes where its key belongs, or to the end
    /// when rows are in no order.
    void setRecord(const QVariant& record);
    /// Takes the row with this \a key out, if there is one.
    void removeRecord(const QString& key);
    /// Whether setRecords() is at work, and a slot of what it announces is running. Whoever has one record to set then
    /// sets all of them, since what was under way is not gone on with.
    bool isBeingReplaced() const;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::platform::zel
