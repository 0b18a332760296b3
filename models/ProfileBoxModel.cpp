// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBoxModel.h>

#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>

#include <QtCore/QPointer>

#include <memory>

namespace vx::platform::zel {

class ProfileBoxModel::Private
{
public:
    QPointer<Context> context;
    std::unique_ptr<QObject> link; // what listens to the context; the box is its child
};

ProfileBoxModel::ProfileBoxModel(Context* context, QObject* parent)
    : RecordListModel({ProfileBoxItem::staticMetaObject, "id", "text", false}, parent)
    , d(std::make_unique<Private>())
{
    setContext(context);
}

ProfileBoxModel::~ProfileBoxModel() = default;

void ProfileBoxModel::setContext(Context* context)
{
    if (context == d->context)
        return;
    d->context = context;
    d->link = std::make_unique<QObject>();
    if (!context) {
        setRecords({});
        return;
    }
    const auto* const box = new ProfileBox(context, d->link.get());
    const auto readAll = [this, box] {
        QList<QVariant> records;
        const QList<ProfileBoxItem> items = box->items();
        for (const ProfileBoxItem& item : items)
            records.append(QVariant::fromValue(item));
        setRecords(records);
    };
    connect(box, &ProfileBox::itemCountChanged, d->link.get(), readAll); // a box that comes after registration
    connect(box, &ProfileBox::itemAdded, d->link.get(), readAll);
    connect(box, &ProfileBox::itemUpdated, d->link.get(), readAll);
    connect(box, &ProfileBox::itemRemoved, d->link.get(), readAll);
    connect(context, &Context::registrationStateUpdated, d->link.get(), readAll);
    connect(context, &QObject::destroyed, d->link.get(), readAll);
    readAll();
}

ProfileBoxItem ProfileBoxModel::item(int row) const
{
    return index(row).data(RecordRole).value<ProfileBoxItem>();
}

} // namespace vx::platform::zel
