// SPDX-License-Identifier: Apache-2.0
#include <splib/contacts/PlatformContactJsonAdapter.h>

#include <splib/contacts/PlatformContactFields.h>

namespace zelsplib {

void writeContactMembers(const PlatformContact& contact, zel::JsonWriter& object, bool markedOnly)
{
    const bool all = !markedOnly || !contact.isModified();
    const auto write = [&](int number, const auto& value) {
        const std::string_view key = contactKeys[number];
        if (all || contact.isFieldModified(PlatformContact::PlatformContactField(number)))
            object.addAttribute(QLatin1String(key.data(), qsizetype(key.size())), value);
    };
    for (int field = 0; field < PlatformContactData::Texts::Count; ++field) {
        if (isText(field))
            write(field, contact.texts().text(field));
    }
    // The version of the user's own client is theirs to say, so it is never written.
    write(PlatformContact::ZelsdkVersion, contact.getZelsdkVersion());
    write(PlatformContact::ShowBusy, contact.getShowBusy());
}

} // namespace zelsplib
