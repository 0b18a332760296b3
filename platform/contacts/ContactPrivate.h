// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <QtCore/QSharedData>
#include <QtCore/QString>

namespace vx::platform::zel {

/// What the copies of a Contact share; never changed once it is made.
class ContactPrivate : public QSharedData
{
public:
    ContactPrivate() = default;
    explicit ContactPrivate(const zelsplib::PlatformContact& contact)
        : record(contact)
        , handle(contact.getHandle())
    {
    }

    zelsplib::PlatformContact const record;
    QString const handle; ///< the record's, by which contacts are ordered and found
};

} // namespace vx::platform::zel
