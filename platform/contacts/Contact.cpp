// SPDX-License-Identifier: Apache-2.0
#include <vx/platform/zel/Contact.h>

#include <splib/contacts/PlatformContact.h>

#include <QtCore/QDebug>
#include <QtCore/QSharedData>

namespace vx::platform::zel {

/// What the copies of a Contact share; never changed once it is made.
class ContactPrivate : public QSharedData
{
public:
    explicit ContactPrivate(const zelsplib::PlatformContact& contact)
        : record(contact)
        , handle(contact.getHandle())
    {
    }

    zelsplib::PlatformContact const record;
    QString const handle; ///< the record's, by which contacts are ordered and found
};

Contact::Contact() noexcept = default;

Contact::Contact(const zelsplib::PlatformContact& record)
    : d(new ContactPrivate(record))
{
}

Contact::Contact(const Contact& other) = default;
Contact::Contact(Contact&& other) noexcept = default;
Contact& Contact::operator=(const Contact& other) = default;
Contact& Contact::operator=(Contact&& other) noexcept = default;
Contact::~Contact() = default;

/// A null one has no record of its own, so that one can be made, and taken from, without memory.
const zelsplib::PlatformContact& Contact::record() const noexcept
{
    static const zelsplib::PlatformContact nothing;
    return d ? d->record : nothing;
}

bool Contact::isNull() const
{
    return handle().isEmpty();
}

QString Contact::displayName() const
{
    return record().getDisplayName();
}

QString Contact::personalMessage() const
{
    return record().getPersonalMessage();
}

UserStatus::Type Contact::status() const
{
    return record().getShowBusy() ? UserStatus::Busy : UserStatus::Available;
}

QString Contact::statusMessage() const
{
    return record().getStatusMessage();
}

QString Contact::handle() const
{
    return d ? d->handle : QString();
}

QString Contact::ppId() const
{
    return record().getPpid();
}

QString Contact::applicationVersion() const
{
    return record().getAppVersion();
}

int Contact::platformVersion() const
{
    return record().getZelsdkVersion();
}

int Contact::sdkVersion() const
{
    return platformVersion();
}

int Contact::zelVersion() const
{
    return record().getZelVersion();
}

bool operator==(const Contact& left, const Contact& right)
{
    return left.d == right.d || left.record() == right.record();
}

size_t qHash(const Contact& contact, size_t seed) noexcept
{
    return qHash(contact.handle(), seed);
}

QDebug operator<<(QDebug debug, const Contact& contact)
{
    const QDebugStateSaver saver(debug);
    debug.nospace() << "Contact(";
    if (!contact.isNull())
        debug << contact.handle() << ", " << contact.displayName() << ", " << contact.status();
    return debug << ')';
}

} // namespace vx::platform::zel
