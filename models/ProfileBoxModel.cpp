// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBoxModel.h>

#include <vx/platform/zel/Context.h>
#include <vx/platform/zel/ProfileBox.h>

namespace vx::platform::zel {

ProfileBoxModel::ProfileBoxModel(Context* context, QObject* parent)
    : RecordListModel({ProfileBoxItem::staticMetaObject, "id", "text", false}, parent)
{
    if (!context)
        return;
    const auto* const box = new ProfileBox(context, this);
    const auto readAll = [this, box] {
        QList<QVariant> records;
        const QList<ProfileBoxItem> items = box->items();
        for (const ProfileBoxItem& item : items)
            records.append(QVariant::fromValue(item));
        setRecords(records);
    };
    connect(box, &ProfileBox::itemAdded, this, readAll);
    connect(box, &ProfileBox::itemRemoved, this, readAll);
    connect(context, &Context::registrationStateUpdated, this, readAll);
    connect(context, &QObject::destroyed, this, readAll);
    readAll();
}

ProfileBoxModel::~ProfileBoxModel() = default;

ProfileBoxItem ProfileBoxModel::item(int row) const
{
    return index(row).data(RecordRole).value<ProfileBoxItem>();
}

} // namespace vx::platform::zel
