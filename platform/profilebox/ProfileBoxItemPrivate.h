// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/profilebox/ProfileBoxItem.h>

#include <QtCore/QSharedData>

namespace vx::platform::zel {

/// What the copies of a ProfileBoxItem share; never changed once it is made.
class ProfileBoxItemPrivate : public QSharedData
{
public:
    ProfileBoxItemPrivate() = default;
    explicit ProfileBoxItemPrivate(const zelsplib::ProfileBoxItem& item)
        : record(item)
    {
    }

    zelsplib::ProfileBoxItem const record;
};

} // namespace vx::platform::zel
