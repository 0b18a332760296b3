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
/// A value: copies share the record, which is never written to. A default item is null: its id() is empty. May be
/// copied and read on any thread.
class ZEL_EXPORT ProfileBoxItem
{
    Q_GADGET
    Q_PROPERTY(bool null READ isNull CONSTANT)
    Q_PROPERTY(QString id READ id CONSTANT)
    Q_PROPERTY(QString text READ text CONSTANT)
    Q_PROPERTY(QString cookie READ cookie CONSTANT)
    Q_PROPERTY(int iconId READ iconId CONSTANT)

public:
    /// An invalid item.
    ProfileBoxItem() noexcept;
    /// Shares the record of \a other.
    ProfileBoxItem(const ProfileBoxItem& other);
    /// Takes the record of \a other, which is a null one after that.
    ProfileBoxItem(ProfileBoxItem&& other) noexcept;
    /// Shares the record of \a other.
    ProfileBoxItem& operator=(const ProfileBoxItem& other);
    /// Takes the record of \a other, which is a null one after that.
    ProfileBoxItem& operator=(ProfileBoxItem&& other) noexcept;
    ~ProfileBoxItem();
    /// Changes places with \a other.
    void swap(ProfileBoxItem& other) noexcept { d.swap(other.d); }

    /// Whether this is no item: the id is empty.
    bool isNull() const;

    /// The service's name for the item; ProfileBox::requestRemoveItem() takes it.
    QString id() const;
    /// The line that the profile shows.
    QString text() const;
    /// The application's own text that came with the item.
    QString cookie() const;
    /// -1 when the item has no icon.
    int iconId() const;

    /// Whether all that the service says of \a left and \a right is the same.
    ZEL_EXPORT friend bool operator==(const ProfileBoxItem& left, const ProfileBoxItem& right);
    /// Whether anything differs between \a left and \a right.
    friend bool operator!=(const ProfileBoxItem& left, const ProfileBoxItem& right) { return !(left == right); }
    /// Makes \a left and \a right change places.
    friend void swap(ProfileBoxItem& left, ProfileBoxItem& right) noexcept { left.swap(right); }
    /// Writes what tells \a item from others to \a debug.
    ZEL_EXPORT friend QDebug operator<<(QDebug debug, const ProfileBoxItem& item);

private:
    friend class ProfileBoxDelegate;
    explicit ProfileBoxItem(const zelsplib::ProfileBoxItem& record);
    const zelsplib::ProfileBoxItem& record() const noexcept;

    QExplicitlySharedDataPointer<ProfileBoxItemPrivate> d;
};

/// The id of \a item, hashed with \a seed.
ZEL_EXPORT size_t qHash(const ProfileBoxItem& item, size_t seed = 0) noexcept;

} // namespace vx::platform::zel
