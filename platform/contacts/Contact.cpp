// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Contact.h>

#include <platform/contacts/ContactPrivate.h>

namespace vx::platform::zel {

Contact::Contact()
    : d(new ContactPrivate)
{
}

Contact::Contact(const zelsplib::PlatformContact& record)
    : d(new ContactPrivate(record))
{
}

Contact::Contact(const Contact& other) = default;
Contact& Contact::operator=(const Contact& other) = default;
Contact::~Contact() = default;

QString Contact::displayName() const
{
    return d->record.getDisplayName();
}

QString Contact::personalMessage() const
{
    return d->record.getPersonalMessage();
}

UserStatus::Type Contact::status() const
{
    return d->record.getShowBusy() ? UserStatus::Busy : UserStatus::Available;
}

QString Contact::statusMessage() const
{
    return d->record.getStatusMessage();
}

QString Contact::handle() const
{
    return d->record.getHandle();
}

QString Contact::ppId() const
{
    return d->record.getPpid();
}

QString Contact::applicationVersion() const
{
    return d->record.getAppVersion();
}

int Contact::platformVersion() const
{
    return d->record.getZelsdkVersion();
}

int Contact::sdkVersion() const
{
    return platformVersion();
}

int Contact::zelVersion() const
{
    return d->record.getZelVersion();
}

bool operator==(const Contact& left, const Contact& right)
{
    return left.d == right.d || left.d->record == right.d->record;
}

} // namespace vx::platform::zel
