// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <splib/contacts/PackedTexts.h>

#include <iface/JsonObjectReader.h>
#include <iface/JsonReaderAttribute.h>

#include <QtCore/QByteArray>
#include <QtCore/QSharedData>
#include <QtCore/QSharedDataPointer>
#include <QtCore/QString>

#include <cstdint>

namespace zelsplib {

/// What a PlatformContact shares between its copies.
struct PlatformContactData : public QSharedData
{
    using Texts = PackedTexts<13>;

    Texts texts; ///< by PlatformContact::PlatformContactField; those numbers that are no texts are free
    QByteArray avatarData;
    int zelsdkVersion = 0;
    bool showBusy = false;
    int zelVersion = 0;
};

/// One user of the messaging service: a contact, or the owner of the device.
///
/// A value: copies share their data until one of them is changed, and every copy has its own marks of which
/// fields a setter touched. The marks let a writer send only what an application wants changed; they are no part
/// of what the record says, so comparing ignores them and loading leaves them alone. A getter makes the string that it
/// answers.
///
/// Copies may go to other threads; one record is used by one thread at a time.
class PlatformContact
{
public:
    /// The fields that carry a mark. The numbers are fixed.
    enum PlatformContactField {
        Uri = 0,
        Handle = 1,
        Ppid = 2,
        AppVersion = 3,
        DisplayName = 4,
        PersonalMessage = 5,
        StatusMessage = 6,
        ZelsdkVersion = 7,
        ShowBusy = 8,
        AvatarId = 9,
        AvatarMimeType = 10,
        TimeZone = 11,
        CountryCode = 12,
        ZelVersion = 13,
    };
    static constexpr int FieldCount = 14;

    PlatformContact();

    /// A record with every field but the picture set, and so marked.
    static PlatformContact create(const QString& uri, const QString& handle, const QString& ppid,
                                  const QString& appVersion, const QString& displayName, const QString& personalMessage,
                                  const QString& statusMessage, const QString& avatarId, const QString& avatarMimeType,
                                  const QString& timeZone, const QString& countryCode, int zelsdkVersion, bool showBusy,
                                  int zelVersion);

    QString getUri() const { return d->texts.text(Uri); }
    QString getHandle() const { return d->texts.text(Handle); }
    QString getPpid() const { return d->texts.text(Ppid); }
    QString getAppVersion() const { return d->texts.text(AppVersion); }
    QString getDisplayName() const { return d->texts.text(DisplayName); }
    QString getPersonalMessage() const { return d->texts.text(PersonalMessage); }
    QString getStatusMessage() const { return d->texts.text(StatusMessage); }
    QString getAvatarId() const { return d->texts.text(AvatarId); }
    QString getAvatarMimeType() const { return d->texts.text(AvatarMimeType); }
    QString getTimeZone() const { return d->texts.text(TimeZone); }
    QString getCountryCode() const { return d->texts.text(CountryCode); }
    QByteArray getAvatarData() const { return d->avatarData; }
    int getZelsdkVersion() const { return d->zelsdkVersion; }
    int getZelVersion() const { return d->zelVersion; }
    bool getShowBusy() const { return d->showBusy; }

    void setUri(const QString& uri) { setText(Uri, uri); }
    void setHandle(const QString& handle) { setText(Handle, handle); }
    void setPpid(const QString& ppid) { setText(Ppid, ppid); }
    void setAppVersion(const QString& appVersion) { setText(AppVersion, appVersion); }
    void setDisplayName(const QString& displayName) { setText(DisplayName, displayName); }
    void setPersonalMessage(const QString& personalMessage) { setText(PersonalMessage, personalMessage); }
    void setStatusMessage(const QString& statusMessage) { setText(StatusMessage, statusMessage); }
    void setAvatarId(const QString& avatarId) { setText(AvatarId, avatarId); }
    void setAvatarMimeType(const QString& avatarMimeType) { setText(AvatarMimeType, avatarMimeType); }
    void setTimeZone(const QString& timeZone) { setText(TimeZone, timeZone); }
    void setCountryCode(const QString& countryCode) { setText(CountryCode, countryCode); }
    void setZelsdkVersion(int version) { changed(ZelsdkVersion).zelsdkVersion = version; }
    void setZelVersion(int version) { changed(ZelVersion).zelVersion = version; }
    void setShowBusy(bool showBusy) { changed(ShowBusy).showBusy = showBusy; }
    /// Pictures never travel with the record, so this marks nothing.
    void setAvatarData(const QByteArray& data) { d->avatarData = data; }

    bool isFieldModified(PlatformContactField field) const { return (modified & (1U << field)) != 0; }
    /// Whether any field is marked.
    bool isModified() const { return modified != 0; }
    /// All texts at once, by field, for those who go through them.
    const PlatformContactData::Texts& texts() const { return d->texts; }
    /// The core service may name a user before it knows them; such a record has no handle yet.
    bool isInitialized() const { return !d->texts.view(Handle).empty(); }

    /// Reads what the object has over what the record holds; what the object lacks stays. Marks nothing.
    void load(const iface::JsonObjectReader& json);
    /// Loads the object that the attribute names.
    friend void operator>>(const iface::JsonReaderAttribute& json, PlatformContact& contact)
    {
        contact.load(json.object());
    }

    /// Same data, pictures included; the marks do not count.
    friend bool operator==(const PlatformContact& left, const PlatformContact& right);

private:
    void setText(PlatformContactField field, const QString& text) { changed(field).texts.set(field, text); }
    /// The data, in which this field is about to be set; marks it.
    PlatformContactData& changed(PlatformContactField field)
    {
        modified = static_cast<std::uint16_t>(modified | (1U << field));
        return *d;
    }

    QSharedDataPointer<PlatformContactData> d;
    std::uint16_t modified = 0; ///< one bit a field, by the field's number
};

} // namespace zelsplib

// A pointer and bits: a QVariant then holds it without an allocation, and lists move it as plain memory.
Q_DECLARE_TYPEINFO(zelsplib::PlatformContact, Q_RELOCATABLE_TYPE);
