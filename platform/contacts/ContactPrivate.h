// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <QtCore/QSharedData>

namespace vx::platform::zel {

/// What the copies of a Contact share; never changed once it is made.
class ContactPrivate : public QSharedData
{
public:
    ContactPrivate() = default;
    explicit ContactPrivate(const zelsplib::PlatformContact& contact)
        : record(contact)
    {
    }

    zelsplib::PlatformContact const record;
};

} // namespace vx::platform::zel
