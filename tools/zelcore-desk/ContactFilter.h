// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "ContactModel.h"

#include <QtCore/QSortFilterProxyModel>

namespace zeldesk {

/// The contacts whose name, handle or message holds a text.
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
        setFilterRole(ContactModel::SearchRole);
        setFilterCaseSensitivity(Qt::CaseInsensitive);
        setSourceModel(&contacts);
    }

    QString text() const { return m_text; }
    void setText(const QString& text)
    {
        if (text == m_text)
            return;
        m_text = text;
        setFilterFixedString(text);
        Q_EMIT textChanged();
    }

Q_SIGNALS:
    void textChanged();

private:
    QString m_text;
};

} // namespace zeldesk
