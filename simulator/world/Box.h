// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

#include <QtCore/QList>

namespace zelcore {

/// A profile box: items with a text each, and the icons that they name. A value; nobody is told of its changes.
///
/// Operations answer an empty text when done, else the sentence that says why not, and then have changed nothing.
class Box
{
public:
    const QList<BoxItem>& items() const { return m_items; }
    const QList<BoxIcon>& icons() const { return m_icons; }
    /// Null when there is none; until the next change of the box.
    const BoxItem* item(const QString& id) const;
    const BoxIcon* icon(const QString& id) const;

    /// Why the box does not take \a item; its icon need not be there yet when it \a iconIsComing.
    QString itemProblem(const BoxItem& item, bool iconIsComing = false) const;
    /// Gives \a item its id.
    QString addItem(BoxItem& item);
    /// \a isAnother becomes true when the item differs from the one before.
    QString changeItem(const BoxItem& item, bool* isAnother);
    QString removeItem(const QString& id);
    /// Whether an icon of this id may be registered now.
    QString iconProblem(const QString& id) const;
    /// One of which iconProblem() knows nothing bad.
    void addIcon(const BoxIcon& icon) { m_icons.append(icon); }
    QString removeIcon(const QString& id);

    /// How many items it takes; as many as come when it is below 0.
    int limit() const { return m_limit; }
    void setLimit(int items) { m_limit = items; }

private:
    QString fieldProblem(const BoxItem& item, bool iconIsComing) const;

    QList<BoxItem> m_items;
    QList<BoxIcon> m_icons;
    quint64 m_nextItem = 1;
    int m_limit = -1;
};

} // namespace zelcore
