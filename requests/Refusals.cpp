// SPDX-License-Identifier: Apache-2.0
#include <requests/Refusals.h>

#include <vx/platform/zel/ProfileBox.h>
#include <vx/platform/zel/UserProfile.h>

using namespace Qt::StringLiterals;

namespace vx::platform::zel::refusals {

namespace {

QString ofIconId(int iconId)
{
    return iconId < 0 ? u"an icon's id is 0 or more, and not %1"_s.arg(iconId) : QString();
}

QString ofBytes(const QByteArray& bytes, int maximum)
{
    if (bytes.isEmpty())
        return u"it has no bytes"_s;
    if (bytes.size() > maximum)
        return u"it has %1 bytes, and at most %2 are taken"_s.arg(bytes.size()).arg(maximum);
    return {};
}

} // namespace

QString unless(bool isTaken, const QString& why)
{
    return isTaken ? QString() : why;
}

QString ofItem(const QString& text, const std::optional<int>& iconId, const QString& cookie)
{
    const QString tooMany = u"the %1 has %2 characters, and at most %3 are taken"_s;
    if (text.isEmpty())
        return u"the text is empty"_s;
    if (text.size() > ProfileBox::maximumTextLength)
        return tooMany.arg(u"text"_s).arg(text.size()).arg(ProfileBox::maximumTextLength);
    if (text.count(u'\n') + text.count(u'\r') > ProfileBox::maximumLineBreaks)
        return u"the text has more than %1 line breaks"_s.arg(ProfileBox::maximumLineBreaks);
    if (cookie.size() > ProfileBox::maximumCookieLength)
        return tooMany.arg(u"cookie"_s).arg(cookie.size()).arg(ProfileBox::maximumCookieLength);
    return iconId ? ofIconId(*iconId) : QString();
}

QString ofIcon(int iconId, const QByteArray& icon)
{
    const QString refusal = ofIconId(iconId);
    return refusal.isEmpty() ? ofBytes(icon, ProfileBox::maximumIconSize) : refusal;
}

QString ofPicture(const QByteArray& picture)
{
    return ofBytes(picture, UserProfile::maximumPictureSize);
}

} // namespace vx::platform::zel::refusals
