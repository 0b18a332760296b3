// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <iface/JsonMember.h>

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

namespace zelsplib {

namespace {

using Texts = PlatformContactData::Texts;

/// The members of a contact record in JSON, by field. The keys are the core service's own and do not follow from the
/// fields' names: the status message is "currentStatus", and two keys begin with a capital letter.
/// They are literals, and so end with a NUL.
constexpr std::array<std::string_view, PlatformContact::FieldCount> contactKeys = {
    "userId",          "handle",   "ppid",     "appVersion",     "displayName", "personalMessage", "currentStatus",
    "platformVersion", "showBusy", "avatarId", "avatarMimeType", "TimeZone",    "CountryCode",     "clientVersion"};

/// Of the numbers of Texts.
constexpr bool isText(int field)
{
    return field != PlatformContact::ZelsdkVersion && field != PlatformContact::ShowBusy;
}

/// The fields in the order in which their members mostly come: that of their keys.
constexpr auto fieldsByKey = [] {
    std::array<std::size_t, contactKeys.size()> fields = {};
    for (std::size_t i = 0; i < contactKeys.size(); ++i)
        fields[i] = i;
    std::sort(fields.begin(), fields.end(),
              [](std::size_t a, std::size_t b) { return contactKeys[a] < contactKeys[b]; });
    return fields;
}();

/// Takes what it is shown into a record; its texts stay where they are shown until texts() packs them. Of members with
/// the same name the first counts.
class Members final : public iface::JsonMemberVisitor
{
public:
    explicit Members(PlatformContactData& data)
        : m_data(data)
        , m_texts(data.texts.views())
    {
    }

    void member(const iface::JsonMember& shown) override
    {
        for (std::size_t tried = 0; tried < contactKeys.size(); ++tried) {
            const std::size_t field = fieldsByKey[m_next];
            m_next = m_next + 1 < contactKeys.size() ? m_next + 1 : 0;
            if (shown.name() != contactKeys[field])
                continue;
            if (!std::exchange(m_isTaken[field], true))
                take(field, shown);
            return;
        }
    }
    Texts texts() const { return Texts(m_texts); }

private:
    void take(std::size_t field, const iface::JsonMember& shown)
    {
        switch (field) {
        case PlatformContact::ZelsdkVersion:
            shown.read(m_data.zelsdkVersion);
            break;
        case PlatformContact::ZelVersion:
            shown.read(m_data.zelVersion);
            break;
        case PlatformContact::ShowBusy:
            shown.read(m_data.showBusy);
            break;
        default:
            shown.read(m_texts[field]);
        }
    }

    PlatformContactData& m_data;
    std::array<std::string_view, Texts::Count> m_texts;
    std::array<bool, contactKeys.size()> m_isTaken = {};
    std::size_t m_next = 0; ///< in fieldsByKey: what the next member is expected to be
};

/// The same one by one, for a source that cannot show its members.
void askForMembers(const iface::JsonObjectReader& json, PlatformContactData& data)
{
    const auto read = [&json](int field, auto& value) { return json.read(contactKeys[field].data(), value); };
    for (int field = 0; field < Texts::Count; ++field) {
        if (QString text; isText(field) && read(field, text))
            data.texts.set(field, text);
    }
    read(PlatformContact::ZelsdkVersion, data.zelsdkVersion);
    read(PlatformContact::ZelVersion, data.zelVersion);
    read(PlatformContact::ShowBusy, data.showBusy);
}

} // namespace

void PlatformContact::load(const iface::JsonObjectReader& json)
{
    if (!json.isValid())
        return;
    PlatformContactData& data = *d;
    Members members(data);
    if (json.visitMembers(members))
        data.texts = members.texts();
    else
        askForMembers(json, data);
}

void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly)
{
    const bool all = !markedOnly || !contact.isModified();
    const auto write = [&](int number, const auto& value) {
        const std::string_view key = contactKeys[number];
        if (all || contact.isFieldModified(PlatformContact::PlatformContactField(number)))
            object.addAttribute(QLatin1String(key.data(), qsizetype(key.size())), value);
    };
    for (int field = 0; field < Texts::Count; ++field) {
        if (isText(field))
            write(field, contact.texts().text(field));
    }
    // The version of the user's own client is theirs to say, so it is never written.
    write(PlatformContact::ZelsdkVersion, contact.getZelsdkVersion());
    write(PlatformContact::ShowBusy, contact.getShowBusy());
}

} // namespace zelsplib
