// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <tuple>

namespace zelsplib {

/// How one field of a contact record travels.
template <typename T>
struct PlatformContactFieldInfo
{
    const char* key;
    T PlatformContactData::*member;
    PlatformContact::PlatformContactField mark;
    bool written = true;
};

/// The record's fields in the order in which they travel. The keys are the core service's own and do not follow from
/// the fields' names: the status message is "currentStatus", and two keys begin with a capital letter.
inline constexpr auto platformContactFields = std::make_tuple(
    PlatformContactFieldInfo<QString>{"userId", &PlatformContactData::uri, PlatformContact::Uri},
    PlatformContactFieldInfo<QString>{"handle", &PlatformContactData::handle, PlatformContact::Handle},
    PlatformContactFieldInfo<QString>{"ppid", &PlatformContactData::ppid, PlatformContact::Ppid},
    PlatformContactFieldInfo<QString>{"appVersion", &PlatformContactData::appVersion, PlatformContact::AppVersion},
    PlatformContactFieldInfo<QString>{"displayName", &PlatformContactData::displayName, PlatformContact::DisplayName},
    PlatformContactFieldInfo<QString>{"personalMessage", &PlatformContactData::personalMessage,
                                      PlatformContact::PersonalMessage},
    PlatformContactFieldInfo<QString>{"currentStatus", &PlatformContactData::statusMessage,
                                      PlatformContact::StatusMessage},
    PlatformContactFieldInfo<QString>{"avatarId", &PlatformContactData::avatarId, PlatformContact::AvatarId},
    PlatformContactFieldInfo<QString>{"avatarMimeType", &PlatformContactData::avatarMimeType,
                                      PlatformContact::AvatarMimeType},
    PlatformContactFieldInfo<QString>{"TimeZone", &PlatformContactData::timeZone, PlatformContact::TimeZone},
    PlatformContactFieldInfo<QString>{"CountryCode", &PlatformContactData::countryCode, PlatformContact::CountryCode},
    PlatformContactFieldInfo<int>{"platformVersion", &PlatformContactData::zelsdkVersion,
                                  PlatformContact::ZelsdkVersion},
    // The version of the user's own client is theirs to say, so it is never written.
    PlatformContactFieldInfo<int>{"clientVersion", &PlatformContactData::zelVersion, PlatformContact::ZelVersion,
                                  false},
    PlatformContactFieldInfo<bool>{"showBusy", &PlatformContactData::showBusy, PlatformContact::ShowBusy});

/// Calls `visit` with every field's entry, in order.
template <typename Visitor>
constexpr void forEachContactField(Visitor&& visit)
{
    std::apply([&visit](const auto&... field) { (visit(field), ...); }, platformContactFields);
}

} // namespace zelsplib
