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
    Contact();
    Contact(const Contact& other);
    Contact& operator=(const Contact& other);
    ~Contact();

    QString displayName() const;
    QString personalMessage() const;
    UserStatus::Type status() const;
    QString statusMessage() const;
    QString handle() const;
    QString ppId() const;
    QString applicationVersion() const;
    /// The version of this library on the contact's device; sdkVersion() is the same number.
    int platformVersion() const;
    int sdkVersion() const;
    int zelVersion() const;

    /// Whether all that the service says of the two is the same.
    ZEL_EXPORT friend bool operator==(const Contact& left, const Contact& right);
    friend bool operator!=(const Contact& left, const Contact& right) { return !(left == right); }

private:
    friend class ContactServiceDelegate;
    explicit Contact(const zelsplib::PlatformContact& record);

    QExplicitlySharedDataPointer<ContactPrivate> d;
};

} // namespace vx::platform::zel

Q_DECLARE_TYPEINFO(vx::platform::zel::Contact, Q_RELOCATABLE_TYPE);
