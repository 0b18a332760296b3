// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/Contact.h>

#include <QtCore/QLocale>
#include <QtCore/QSortFilterProxyModel>
#include <QtCore/QString>

#include <memory>

namespace vx::platform::zel {

/// Contacts as people look for them: put over a ContactListModel (setSourceModel()), it shows those who fit, in the
/// order of their names as the locale has it.
///
/// When a contact changes, its row is judged again and put where it belongs by a few comparisons, however many there
/// are. Other source models do if they have roles of the same names.
class Q_DECL_EXPORT ContactFilterModel : public QSortFilterProxyModel
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

protected:
    /// Whether the contact in the source's \a row below \a parent fits.
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;
    /// Whether \a left comes before \a right: by name, and for one name by handle.
    bool lessThan(const QModelIndex& left, const QModelIndex& right) const override;

private:
    class Private;
    std::unique_ptr<Private> const d;
};

} // namespace vx::platform::zel
