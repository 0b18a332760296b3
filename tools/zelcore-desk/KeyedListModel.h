// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QAbstractListModel>
#include <QtCore/QSet>
#include <QtCore/QStringList>
#include <QtCore/QTimer>
#include <QtQml/qqmlregistration.h>

#include <chrono>

namespace zeldesk {

/// Rows of a world that lives elsewhere, each known by a key. The model holds the keys alone: what a row shows is read
/// where it is, so it is never older than the world. Changes are announced in turns, some twenty a second, as one
/// difference each: ten thousand changes cost views what one does.
///
/// Models name it with its namespace: by that QML finds it among their bases.
class KeyedListModel : public QAbstractListModel
{
    Q_OBJECT
    QML_ANONYMOUS
    Q_PROPERTY(int count READ count NOTIFY countChanged FINAL)

public:
    static constexpr std::chrono::milliseconds turn{50};

    int count() const { return int(m_keys.size()); }
    int rowCount(const QModelIndex& parent = {}) const override { return parent.isValid() ? 0 : count(); }
    /// -1 when there is none, or not yet.
    Q_INVOKABLE int rowOf(const QString& key) const { return int(m_keys.indexOf(key)); }

Q_SIGNALS:
    void countChanged();

protected:
    explicit KeyedListModel(QObject* parent);

    const QString& key(const QModelIndex& index) const { return m_keys.at(index.row()); }
    /// The keys of all rows, in their order. New ones come last; any other order costs views more.
    virtual QStringList wantedKeys() const = 0;
    /// There are other keys, or the row of \a key shows something else.
    void change(const QString& key);
    /// The same of every row.
    void changeAll();

private:
    void takeTurn();
    void removeAllBut(const QStringList& wanted);
    void tellChanged(const QSet<QString>& changed);

    QStringList m_keys;
    QSet<QString> m_changed;
    QTimer m_turn;
};

} // namespace zeldesk
