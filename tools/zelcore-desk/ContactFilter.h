// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ContactModel.h"

#include <QtCore/QScopedValueRollback>
#include <QtCore/QSortFilterProxyModel>

namespace zeldesk {

/// The contacts whose name, handle or message holds a text. A text that goes on is looked for among those alone whom it
/// has found.
class ContactFilter : public QSortFilterProxyModel
{
    Q_OBJECT
    QML_ELEMENT
    QML_UNCREATABLE("The desk has it.")
    Q_PROPERTY(QString text READ text WRITE setText NOTIFY textChanged FINAL)

public:
    explicit ContactFilter(ContactModel& contacts, QObject* parent = nullptr)
        : QSortFilterProxyModel(parent)
    {
        setSourceModel(&contacts);
    }

    QString text() const { return m_text; }
    void setText(const QString& text)
    {
        if (text == m_text)
            return;
        {
            const QScopedValueRollback narrowing(m_isNarrowing, text.contains(m_text, Qt::CaseInsensitive));
            m_text = text;
            invalidateFilter();
        }
        Q_EMIT textChanged();
    }

Q_SIGNALS:
    void textChanged();

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override
    {
        if (m_text.isEmpty())
            return true;
        const QModelIndex contact = sourceModel()->index(row, 0, parent);
        return (!m_isNarrowing || mapFromSource(contact).isValid()) &&
               contact.data(ContactModel::SearchRole).toString().contains(m_text, Qt::CaseInsensitive);
    }

private:
    QString m_text;
    bool m_isNarrowing = false; ///< Whoever was not found cannot be now.
};

} // namespace zeldesk
