// SPDX-License-Identifier: Apache-2.0
// As docs/models.md has it.
// clang-format off
#include <vx/platform/zel/ContactFilterModel.h>
#include <vx/platform/zel/ContactListModel.h>
#include <vx/platform/zel/Context.h>

using namespace vx::platform::zel;

// In the place of Qt Widgets.
class QAbstractItemView : public QObject
{
public:
    void setModel(QAbstractItemModel* model);
};
class QLineEdit : public QObject
{
    Q_OBJECT
Q_SIGNALS:
    void textChanged(const QString& text);
};

class ContactView : public QObject
{
    void fill()
    {
        auto* contacts = new ContactListModel(&context, this); // at any time: it fills itself when the context is ready
        auto* shown = new ContactFilterModel(this);
        shown->setSourceModel(contacts);
        view->setModel(shown);
        connect(search, &QLineEdit::textChanged, shown, &ContactFilterModel::setSearchText);
    }

    Context context{QUuid::createUuid()};
    QAbstractItemView* view = nullptr;
    QLineEdit* search = nullptr;
};

#include "models.moc"
