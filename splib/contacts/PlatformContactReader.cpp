// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactReader.h>

#include <splib/contacts/PlatformContactFields.h>

#include <iface/JsonMember.h>

#include <algorithm>
#include <array>
#include <optional>
#include <string_view>

namespace zelsplib {

namespace {

constexpr auto fieldCount = std::size_t(PlatformContact::FieldCount);

/// The fields in the order in which their members mostly come: that of their keys.
constexpr auto fieldsByKey = [] {
    std::array<std::size_t, fieldCount> fields = {};
    for (std::size_t i = 0; i < fieldCount; ++i)
        fields[i] = i;
    std::sort(fields.begin(), fields.end(),
              [](std::size_t a, std::size_t b) { return contactKeys[a] < contactKeys[b]; });
    return fields;
}();

/// The members of an object, by field: shown by the source, which costs least, or asked for by name.
class Members final : public iface::JsonMemberVisitor
{
public:
    explicit Members(const iface::JsonObjectReader& json)
        : m_json(json)
        , m_isShown(json.visitMembers(*this))
    {
    }

    template <class T>
    bool read(int field, T& value) const
    {
        return m_isShown ? m_shown[field] && m_shown[field]->read(value)
                         : m_json.read(contactKeys[field].data(), value);
    }
    bool isShown() const { return m_isShown; }
    /// Replaces `text` by the one that was shown, if it was one.
    void readShown(int field, std::string_view& text) const
    {
        if (m_shown[field])
            m_shown[field]->read(text);
    }

    /// Of members with the same name the first counts.
    void member(const iface::JsonMember& shown) override
    {
        for (std::size_t tried = 0; tried < fieldCount; ++tried) {
            const std::size_t field = fieldsByKey[m_next];
            m_next = (m_next + 1) % fieldCount;
            if (shown.name() != contactKeys[field])
                continue;
            if (!m_shown[field])
                m_shown[field] = shown;
            return;
        }
    }

private:
    const iface::JsonObjectReader& m_json;
    std::array<std::optional<iface::JsonMember>, fieldCount> m_shown;
    std::size_t m_next = 0; ///< in fieldsByKey: what the next member is expected to be
    const bool m_isShown;   // last: being shown fills the others
};

using Texts = PlatformContactData::Texts;

Texts readTexts(const Members& members, const Texts& before)
{
    std::array<std::string_view, Texts::Count> texts;
    for (int field = 0; field < Texts::Count; ++field) {
        texts[field] = before.view(field);
        if (isText(field))
            members.readShown(field, texts[field]);
    }
    return Texts(texts);
}

/// The same one by one, for a source that cannot show its members.
Texts askForTexts(const Members& members, Texts texts)
{
    for (int field = 0; field < Texts::Count; ++field) {
        if (QString text; isText(field) && members.read(field, text))
            texts.set(field, text);
    }
    return texts;
}

} // namespace

void readContactMembers(const iface::JsonObjectReader& json, PlatformContactData& data)
{
    const Members members(json);
    data.texts = members.isShown() ? readTexts(members, data.texts) : askForTexts(members, data.texts);
    members.read(PlatformContact::ZelsdkVersion, data.zelsdkVersion);
    members.read(PlatformContact::ZelVersion, data.zelVersion);
    members.read(PlatformContact::ShowBusy, data.showBusy);
}

} // namespace zelsplib
