// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <vx/platform/zel/UserStatus.h>
#include <iface/Export.h>

#include <QtCore/QExplicitlySharedDataPointer>
#include <QtCore/QObject>
#include <QtCore/QString>

namespace zelsplib {
class PlatformContact;
}

namespace vx::platform::zel {

class ContactPrivate;

/// One contact who has the application, as it was when ContactService handed it out. It does not follow changes: ask
/// the service again after contactUpdated().
///
/// A value: copies share the record, which is never written to. A default Contact is null: it has empty texts, no
/// versions and is Available; a contact that the service knows always has a handle(). May be copied and read on any
/// thread.
class ZEL_EXPORT Contact
{
    Q_GADGET
    Q_PROPERTY(bool null READ isNull CONSTANT)
    Q_PROPERTY(QString handle READ handle CONSTANT)
    Q_PROPERTY(QString displayName READ displayName CONSTANT)
    Q_PROPERTY(QString personalMessage READ personalMessage CONSTANT)
    Q_PROPERTY(vx::platform::zel::UserStatus::Type status READ status CONSTANT)
    Q_PROPERTY(QString statusMessage READ statusMessage CONSTANT)
    Q_PROPERTY(QString ppId READ ppId CONSTANT)
    Q_PROPERTY(QString applicationVersion READ applicationVersion CONSTANT)
    Q_PROPERTY(int platformVersion READ platformVersion CONSTANT)
    Q_PROPERTY(int sdkVersion READ sdkVersion CONSTANT)
    Q_PROPERTY(int zelVersion READ zelVersion CONSTANT)

public:
    /// Nobody.
    Contact() noexcept;
    /// Shares the record of \a other.
    Contact(const Contact& other);
    /// Takes the record of \a other, which is a null one after that.
    Contact(Contact&& other) noexcept;
    /// Shares the record of \a other.
    Contact& operator=(const Contact& other);
    /// Takes the record of \a other, which is a null one after that.
    Contact& operator=(Contact&& other) noexcept;
    ~Contact();
    /// Changes places with \a other.
    void swap(Contact& other) noexcept { d.swap(other.d); }

    /// Whether this is nobody: the handle is empty.
    bool isNull() const;

    /// The name that the contact goes by.
    QString displayName() const;
    /// The line that the contact has written about themselves.
    QString personalMessage() const;
    /// Whether the contact may be disturbed.
    UserStatus::Type status() const;
    /// What the contact says about that.
    QString statusMessage() const;
    /// The contact's name within the application; ContactService goes by it. The service may give another one.
    QString handle() const;
    /// The contact's identifier across applications; Utils::requestEcoId() takes it.
    QString ppId() const;
    /// The version of the application that the contact runs.
    QString applicationVersion() const;
    /// The version of this library on the contact's device; sdkVersion() is the same number.
    int platformVersion() const;
    /// The version of this library on the contact's device.
    int sdkVersion() const;
    /// The version of the messaging service on the contact's device.
    int zelVersion() const;

    /// Whether all that the service says of \a left and \a right is the same.
    ZEL_EXPORT friend bool operator==(const Contact& left, const Contact& right);
    /// Whether anything differs between \a left and \a right.
    friend bool operator!=(const Contact& left, const Contact& right) { return !(left == right); }
    /// Makes \a left and \a right change places.
    friend void swap(Contact& left, Contact& right) noexcept { left.swap(right); }
    /// Writes what tells \a contact from others to \a debug.
    ZEL_EXPORT friend QDebug operator<<(QDebug debug, const Contact& contact);

private:
    friend class ContactServiceDelegate;
    explicit Contact(const zelsplib::PlatformContact& record);
    const zelsplib::PlatformContact& record() const noexcept;

    QExplicitlySharedDataPointer<ContactPrivate> d;
};

/// The handle of \a contact, hashed with \a seed.
ZEL_EXPORT size_t qHash(const Contact& contact, size_t seed = 0) noexcept;

} // namespace vx::platform::zel

Q_DECLARE_TYPEINFO(vx::platform::zel::Contact, Q_RELOCATABLE_TYPE);
