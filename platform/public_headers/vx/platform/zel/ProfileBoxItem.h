// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace zelsplib {
class ProfileBoxItem;
}

namespace vx::platform::zel {

class ProfileBoxItemPrivate;

/// One item of the profile box as it was when ProfileBox handed it out.
///
/// A value: copies share the record, which is never written to. A default item is invalid: its id() is empty. May be
/// copied and read on any thread.
class ZEL_EXPORT ProfileBoxItem
{
    Q_GADGET
    Q_PROPERTY(QString id READ id CONSTANT)
    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(QString cookie READ cookie CONSTANT)
    Q_PROPERTY(int iconId READ iconId CONSTANT)

public:
    /// An invalid item.
    ProfileBoxItem();
    /// Shares the record.
    ProfileBoxItem(const ProfileBoxItem& other);
    /// Shares the record.
    ProfileBoxItem& operator=(const ProfileBoxItem& other);
    ~ProfileBoxItem();

    /// The service's name for the item; ProfileBox::requestRemoveItem() takes it.
    QString id() const;
    /// The line that the profile shows.
    QString text() const;
    /// The application's own text that came with the item.
    QString cookie() const;
    /// -1 when the item has no icon.
    int iconId() const;

    /// Whether all that the service says of the two is the same.
    ZEL_EXPORT friend bool operator==(const ProfileBoxItem& left, const ProfileBoxItem& right);
    /// Whether anything differs.
    friend bool operator!=(const ProfileBoxItem& left, const ProfileBoxItem& right) { return !(left == right); }

private:
    friend class ProfileBoxDelegate;
    explicit ProfileBoxItem(const zelsplib::ProfileBoxItem& record);

    QExplicitlySharedDataPointer<ProfileBoxItemPrivate> d;
};

} // namespace vx::platform::zel
