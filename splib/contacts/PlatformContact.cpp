// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContact.h>

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

void PlatformContact::setText(PlatformContactField field, const QString& text)
{
    d->texts.set(field, text);
    mark(field);
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

void PlatformContact::load(const iface::JsonObjectReader& json)
{
    if (json.isValid())
        readContactMembers(json, *d);
}

bool PlatformContact::equals(const PlatformContact& other) const
{
    if (d == other.d)
        return true;
    const PlatformContactData& a = *d;
    const PlatformContactData& b = *other.d;
    return a.texts == b.texts && a.zelsdkVersion == b.zelsdkVersion && a.zelVersion == b.zelVersion &&
           a.showBusy == b.showBusy && a.avatarData == b.avatarData;
}

void operator>>(const iface::JsonReaderAttribute& json, PlatformContact& contact)
{
    contact.load(json.object());
}

} // namespace zelsplib
