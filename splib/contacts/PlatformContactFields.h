// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PlatformContact.h>

#include <array>
#include <string_view>

namespace zelsplib {

/// The members of a contact record in JSON, by field. The keys are the core service's own and do not follow from the
/// fields' names: the status message is "currentStatus", and two keys begin with a capital letter.
/// They are literals, and so end with a NUL.
inline constexpr std::array<std::string_view, PlatformContact::FieldCount> contactKeys = {
    "userId",          "handle",   "ppid",     "appVersion",     "displayName", "personalMessage", "currentStatus",
    "platformVersion", "showBusy", "avatarId", "avatarMimeType", "TimeZone",    "CountryCode",     "clientVersion"};

/// Of the numbers of PlatformContactData::Texts.
constexpr bool isText(int field)
{
    return field != PlatformContact::ZelsdkVersion && field != PlatformContact::ShowBusy;
}

} // namespace zelsplib
