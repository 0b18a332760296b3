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
/// A value: copies share the record, which is never written to. A default Contact has empty texts, no versions and is
/// Available; a contact that the service knows always has a handle(). May be copied and read on any thread.
class ZEL_EXPORT Contact
{
    Q_GADGET
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
    Contact();
    /// Shares the record.
    Contact(const Contact& other);
    /// Shares the record.
    Contact& operator=(const Contact& other);
    ~Contact();

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

    /// Whether all that the service says of the two is the same.
    ZEL_EXPORT friend bool operator==(const Contact& left, const Contact& right);
    /// Whether anything differs.
    friend bool operator!=(const Contact& left, const Contact& right) { return !(left == right); }

private:
    friend class ContactServiceDelegate;
    explicit Contact(const zelsplib::PlatformContact& record);

    QExplicitlySharedDataPointer<ContactPrivate> d;
};

} // namespace vx::platform::zel

Q_DECLARE_TYPEINFO(vx::platform::zel::Contact, Q_RELOCATABLE_TYPE);
