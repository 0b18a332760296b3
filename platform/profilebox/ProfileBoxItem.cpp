// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/ProfileBoxItem.h>

#include <splib/profilebox/ProfileBoxItem.h>

#include <QtCore/QDebug>
#include <QtCore/QSharedData>

namespace vx::platform::zel {

/// What the copies of a ProfileBoxItem share; never changed once it is made.
class ProfileBoxItemPrivate : public QSharedData
{
public:
    explicit ProfileBoxItemPrivate(const zelsplib::ProfileBoxItem& item)
        : record(item)
    {
    }

    zelsplib::ProfileBoxItem const record;
};

ProfileBoxItem::ProfileBoxItem() noexcept = default;

ProfileBoxItem::ProfileBoxItem(const zelsplib::ProfileBoxItem& record)
    : d(new ProfileBoxItemPrivate(record))
{
}

ProfileBoxItem::ProfileBoxItem(const ProfileBoxItem& other) = default;
ProfileBoxItem::ProfileBoxItem(ProfileBoxItem&& other) noexcept = default;
ProfileBoxItem& ProfileBoxItem::operator=(const ProfileBoxItem& other) = default;
ProfileBoxItem& ProfileBoxItem::operator=(ProfileBoxItem&& other) noexcept = default;
ProfileBoxItem::~ProfileBoxItem() = default;

/// A null one has no record of its own, so that one can be made, and taken from, without memory.
const zelsplib::ProfileBoxItem& ProfileBoxItem::record() const noexcept
{
    static const zelsplib::ProfileBoxItem nothing;
    return d ? d->record : nothing;
}

bool ProfileBoxItem::isNull() const
{
    return id().isEmpty();
}

QString ProfileBoxItem::id() const
{
    return record().getItemId();
}

QString ProfileBoxItem::text() const
{
    return record().getText();
}

QString ProfileBoxItem::cookie() const
{
    return record().getCookie();
}

int ProfileBoxItem::iconId() const
{
    const QString icon = record().getImageId();
    return icon.isEmpty() ? -1 : icon.toInt();
}

bool operator==(const ProfileBoxItem& left, const ProfileBoxItem& right)
{
    return left.d == right.d || left.record() == right.record();
}

size_t qHash(const ProfileBoxItem& item, size_t seed) noexcept
{
    return qHash(item.id(), seed);
}

QDebug operator<<(QDebug debug, const ProfileBoxItem& item)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "ProfileBoxItem(";
    if (!item.isNull())
        debug << item.id() << ", " << item.text() << ", icon " << item.iconId();
    return debug << ')';
}

} // namespace vx::platform::zel
