// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContact.h>

#include <splib/contacts/PlatformContactFields.h>

#include <iface/JsonMember.h>

#include <array>
#include <bitset>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

namespace zelsplib {

namespace {

/// Most records are made only to be overwritten, so they share one set of empty data. It lives as long as the
/// process: records may be made while other statics are being destroyed.
const QSharedDataPointer<PlatformContactData>& emptyData()
{
    static const auto* const empty = new QSharedDataPointer<PlatformContactData>(new PlatformContactData);
    return *empty;
}

/// The texts of which a list of contacts holds only few different ones. The last one read of each is remembered, and a
/// record that has it too shares it instead of holding a copy.
class RepeatedTexts
{
public:
    /// The text last read of a field; null when the field's texts do not repeat.
    QString* last(PlatformContact::PlatformContactField field)
    {
        switch (field) {
        case PlatformContact::AppVersion:
            return &m_appVersion;
        case PlatformContact::AvatarMimeType:
            return &m_avatarMimeType;
        case PlatformContact::TimeZone:
            return &m_timeZone;
        case PlatformContact::CountryCode:
            return &m_countryCode;
        default:
            return nullptr;
        }
    }

private:
    QString m_appVersion;
    QString m_avatarMimeType;
    QString m_timeZone;
    QString m_countryCode;
};

thread_local RepeatedTexts repeatedTexts;

constexpr std::size_t fieldCount = std::tuple_size_v<decltype(platformContactFields)>;

/// Finds a field by its key.
class FieldIndex
{
public:
    constexpr FieldIndex()
    {
        forEachContactField([this](const auto& field) {
            const std::size_t slot = slotOf(field.key);
            m_keys[m_count++] = field.key;
            m_slots[slot] = static_cast<unsigned char>(m_count);
        });
    }

    /// The field's place in the table, or fieldCount.
    constexpr std::size_t find(std::string_view key) const
    {
        const std::size_t found = m_slots[slotOf(key)];
        return found == 0 ? fieldCount : found - 1;
    }

private:
    static constexpr std::size_t slotCount = 64;

    // Where the key is, or would go: most slots are empty.
    constexpr std::size_t slotOf(std::string_view key) const
    {
        std::size_t slot = key.empty() ? 0 : key.size() * 5 + std::size_t(static_cast<unsigned char>(key[0])) * 7;
        while (m_slots[slot %= slotCount] != 0 && m_keys[m_slots[slot] - 1] != key)
            ++slot;
        return slot;
    }

    std::array<std::string_view, fieldCount> m_keys = {};
    std::array<unsigned char, slotCount> m_slots = {};
    std::size_t m_count = 0;
};

constexpr FieldIndex fieldIndex;

/// Reads members over the fields of a record. Of members with the same name the first counts.
class FieldReader final : public iface::JsonMemberVisitor
{
public:
    FieldReader(PlatformContactData& data, const QString& expectedUri)
        : m_data(data)
        , m_expectedUri(expectedUri)
        , m_repeated(repeatedTexts)
    {
    }

    void member(const iface::JsonMember& member) override
    {
        const std::size_t index = fieldIndex.find(member.name());
        if (index == fieldCount || m_isRead.test(index))
            return;
        m_isRead.set(index);
        readers[index](*this, member);
    }

    /// `json` reads the member into a value of the field's type.
    template <typename Field, typename Json>
    void read(const Field& field, const Json& json)
    {
        auto& value = m_data.*field.member;
        if constexpr (std::is_same_v<std::decay_t<decltype(value)>, QString>) {
            QString* const last = field.mark == PlatformContact::Uri ? &m_expectedUri : m_repeated.last(field.mark);
            if (last) {
                // Reading leaves a text alone that is the same already.
                QString text = *last;
                if (json.read(text)) {
                    value = text;
                    if (!text.isEmpty())
                        *last = text;
                }
                return;
            }
        }
        json.read(value);
    }

private:
    using Reader = void (*)(FieldReader&, const iface::JsonMember&);

    template <std::size_t index>
    static void readField(FieldReader& reader, const iface::JsonMember& member)
    {
        reader.read(std::get<index>(platformContactFields), member);
    }
    template <std::size_t... index>
    static constexpr std::array<Reader, fieldCount> makeReaders(std::index_sequence<index...>)
    {
        return {&FieldReader::readField<index>...};
    }

    static const std::array<Reader, fieldCount> readers;

    PlatformContactData& m_data;
    QString m_expectedUri;
    RepeatedTexts& m_repeated;
    std::bitset<fieldCount> m_isRead;
};

constexpr std::array<FieldReader::Reader, fieldCount> FieldReader::readers =
    FieldReader::makeReaders(std::make_index_sequence<fieldCount>());

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
    if (!json.isValid())
        return;
    FieldReader reader(*d, expectedUri);
    if (json.visitMembers(reader))
        return;
    forEachContactField([&](const auto& field) { reader.read(field, iface::JsonReaderAttribute(field.key, &json)); });
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
