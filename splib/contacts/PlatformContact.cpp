// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContact.h>

namespace zelsplib {

namespace {

/// Most records are made only to be overwritten, so they share one set of empty data. It lives as long as the
/// process: records may be made while other statics are being destroyed.
const QSharedDataPointer<PlatformContactData>& emptyData()
{
    static const auto* const empty = new QSharedDataPointer<PlatformContactData>(new PlatformContactData);
    return *empty;
}

} // namespace

PlatformContact::PlatformContact()
    : d(emptyData())
{
}

PlatformContact PlatformContact::create(const QString& uri, const QString& handle, const QString& ppid,
                                        const QString& appVersion, const QString& displayName,
                                        const QString& personalMessage, const QString& statusMessage,
                                        const QString& avatarId, const QString& avatarMimeType, const QString& timeZone,
                                        const QString& countryCode, int zelsdkVersion, bool showBusy, int zelVersion)
{
    PlatformContact contact;
    contact.setUri(uri);
    contact.setHandle(handle);
    contact.setPpid(ppid);
    contact.setAppVersion(appVersion);
    contact.setDisplayName(displayName);
    contact.setPersonalMessage(personalMessage);
    contact.setStatusMessage(statusMessage);
    contact.setAvatarId(avatarId);
    contact.setAvatarMimeType(avatarMimeType);
    contact.setTimeZone(timeZone);
    contact.setCountryCode(countryCode);
    contact.setZelsdkVersion(zelsdkVersion);
    contact.setZelVersion(zelVersion);
    contact.setShowBusy(showBusy);
    return contact;
}

bool operator==(const PlatformContact& left, const PlatformContact& right)
{
    if (left.d == right.d)
        return true;
    const PlatformContactData& a = *left.d;
    const PlatformContactData& b = *right.d;
    return a.texts == b.texts && a.zelsdkVersion == b.zelsdkVersion && a.zelVersion == b.zelVersion &&
           a.showBusy == b.showBusy && a.avatarData == b.avatarData;
}

} // namespace zelsplib
