// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContact.h>

#include <splib/contacts/PlatformContactFields.h>
#include <splib/contacts/PlatformContactReader.h>

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

void PlatformContact::setUri(const QString& uri)
{
    d->uri = uri;
    mark(Uri);
}

void PlatformContact::setHandle(const QString& handle)
{
    d->handle = handle;
    mark(Handle);
}

void PlatformContact::setPpid(const QString& ppid)
{
    d->ppid = ppid;
    mark(Ppid);
}

void PlatformContact::setAppVersion(const QString& appVersion)
{
    d->appVersion = appVersion;
    mark(AppVersion);
}

void PlatformContact::setDisplayName(const QString& displayName)
{
    d->displayName = displayName;
    mark(DisplayName);
}

void PlatformContact::setPersonalMessage(const QString& personalMessage)
{
    d->personalMessage = personalMessage;
    mark(PersonalMessage);
}

void PlatformContact::setStatusMessage(const QString& statusMessage)
{
    d->statusMessage = statusMessage;
    mark(StatusMessage);
}

void PlatformContact::setAvatarId(const QString& avatarId)
{
    d->avatarId = avatarId;
    mark(AvatarId);
}

void PlatformContact::setAvatarMimeType(const QString& avatarMimeType)
{
    d->avatarMimeType = avatarMimeType;
    mark(AvatarMimeType);
}

void PlatformContact::setTimeZone(const QString& timeZone)
{
    d->timeZone = timeZone;
    mark(TimeZone);
}

void PlatformContact::setCountryCode(const QString& countryCode)
{
    d->countryCode = countryCode;
    mark(CountryCode);
}

void PlatformContact::setZelsdkVersion(int version)
{
    d->zelsdkVersion = version;
    mark(ZelsdkVersion);
}

void PlatformContact::setZelVersion(int version)
{
    d->zelVersion = version;
    mark(ZelVersion);
}

void PlatformContact::setShowBusy(bool showBusy)
{
    d->showBusy = showBusy;
    mark(ShowBusy);
}

void PlatformContact::setAvatarData(const QByteArray& data)
{
    d->avatarData = data;
}

bool PlatformContact::isFieldModified(PlatformContactField field) const
{
    return (modified & (1U << field)) != 0;
}

void PlatformContact::load(const iface::JsonObjectReader& json, const QString& expectedUri)
{
    if (json.isValid())
        readContactMembers(json, *d, expectedUri);
}

bool PlatformContact::equals(const PlatformContact& other) const
{
    if (d == other.d)
        return true;
    const PlatformContactData& a = *d;
    const PlatformContactData& b = *other.d;
    bool equal = a.avatarData == b.avatarData;
    forEachContactField([&a, &b, &equal](const auto& field) { equal = equal && a.*field.member == b.*field.member; });
    return equal;
}

void operator>>(const iface::JsonReaderAttribute& json, PlatformContact& contact)
{
    contact.load(json.object());
}

} // namespace zelsplib
