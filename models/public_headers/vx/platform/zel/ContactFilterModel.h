// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Contact.h>

#include <QtCore/QAbstractProxyModel>
#include <QtCore/QByteArray>
#include <QtCore/QLocale>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

/// Contacts as people look for them: put over a ContactListModel (setSourceModel()), it shows those who fit, in the
/// order of their names as the locale has it.
///
/// As in the model beneath, rows come, go and move, those side by side at once, and dataChanged() names the roles that
/// changed. When a contact changes, the row is judged again and put where it belongs by a few comparisons, however many
/// there are. Only another locale is layoutChanged(), and another source model a reset.
///
/// A slot may do anything, as with a RecordListModel. Whom the source has lost has no data any more when that is about
/// to be announced. Other source models do if they are lists and have roles of the same names; what resets those, or
/// lays them out anew, resets this.
class Q_DECL_EXPORT ContactFilterModel : public QAbstractProxyModel
{
    Q_OBJECT
    Q_PROPERTY(int count READ count NOTIFY countChanged)
    Q_PROPERTY(QString searchText READ searchText WRITE setSearchText NOTIFY searchTextChanged)
    Q_PROPERTY(Presence presence READ presence WRITE setPresence NOTIFY presenceChanged)
    Q_PROPERTY(QLocale locale READ locale WRITE setLocale NOTIFY localeChanged)

public:
    /// Whom a filter lets pass by their status.
    enum Presence {
        Anybody,   ///< everybody
        Available, ///< those who may be disturbed
        Busy,      ///< those who may not
    };
    Q_ENUM(Presence)

    /// Shows everybody, by the application's locale; \a parent may own it.
    explicit ContactFilterModel(QObject* parent = nullptr);
    ~ContactFilterModel() override;

    /// How many fit.
    int count() const;
    /// The contact in \a row; a null one when there is no such row.
    Q_INVOKABLE vx::platform::zel::Contact contact(int row) const;
    /// The row of the contact with this \a handle; -1 when nobody who fits has it.
    Q_INVOKABLE int rowOf(const QString& handle) const;
    /// The number of the source model's role that is called \a name; -1 when there is none.
    int role(const QByteArray& name) const;

    /// What is looked for. Each of its words must stand in the name, the handle or one of the messages, in capitals or
    /// not. Without words everybody fits.
    QString searchText() const;
    /// Looks for the words of \a text, blanks between them.
    void setSearchText(const QString& text);
    /// Whose status fits.
    Presence presence() const;
    /// Shows those alone whose status fits \a presence.
    void setPresence(Presence presence);
    /// By whose rules names are put in order.
    QLocale locale() const;
    /// Puts names in order by the rules of \a locale.
    void setLocale(const QLocale& locale);

    /// What is filtered: a ContactListModel, or another \a model with its roles. Not owned; null for none.
    void setSourceModel(QAbstractItemModel* model) override;
    /// What \a role is for the row of \a index in the source model; invalid when that has lost it.
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    /// Where the source model has the row of \a index; invalid when it has lost it.
    QModelIndex mapToSource(const QModelIndex& index) const override;
    /// Where the row of the source model's \a index is shown; invalid when it does not fit.
    QModelIndex mapFromSource(const QModelIndex& index) const override;
    /// The index of \a row in the only \a column; invalid below a \a parent, for rows have none below them.
    QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
    /// Invalid, whatever the \a index is.
    QModelIndex parent(const QModelIndex& index) const override;
    using QObject::parent;
    /// How many fit; none where \a parent is a row itself.
    int rowCount(const QModelIndex& parent = {}) const override;
    /// One; none where \a parent is a row itself.
    int columnCount(const QModelIndex& parent = {}) const override;
    /// Whether there are rows below \a parent.
    bool hasChildren(const QModelIndex& parent = {}) const override;

Q_SIGNALS:
    /// count() is another number, or the source model is another one. A view that the same rows are announced to may
    /// hear of them after this.
    void countChanged();
    /// searchText() is another one; the rows follow it already.
    void searchTextChanged();
    /// presence() is another one; the rows follow it already.
    void presenceChanged();
    /// locale() is another one; the rows follow it already.
    void localeChanged();

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::platform::zel
