// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactReader.h>

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

void readContactMembers(const iface::JsonObjectReader& json, PlatformContactData& data, const QString& expectedUri)
{
    FieldReader reader(data, expectedUri);
    if (json.visitMembers(reader))
        return;
    forEachContactField([&](const auto& field) { reader.read(field, iface::JsonReaderAttribute(field.key, &json)); });
}

} // namespace zelsplib
