// SPDX-License-Identifier: Apache-2.0
#include <requests/Refusals.h>

namespace vx::platform::zel::refusals {

namespace {

QString ofIconId(int iconId)
{
    return iconId < 0 ? QStringLiteral("an icon's id is 0 or more, and not %1").arg(iconId) : QString();
}

} // namespace

QString unless(bool isTaken, const QString& why)
{
    return isTaken ? QString() : why;
}

QString ofItem(const QString& text, const std::optional<int>& iconId, const QString& cookie)
{
    if (text.isEmpty())
        return QStringLiteral("the text is empty");
    if (text.size() > 100)
        return QStringLiteral("the text has %1 characters, and at most 100 are taken").arg(text.size());
    if (text.count(u'\n') + text.count(u'\r') > 2)
        return QStringLiteral("the text has more than two line breaks");
    if (cookie.size() > 128)
        return QStringLiteral("the cookie has %1 characters, and at most 128 are taken").arg(cookie.size());
    return iconId ? ofIconId(*iconId) : QString();
}

QString ofIcon(int iconId, const QByteArray& icon)
{
    const QString refusal = ofIconId(iconId);
    return refusal.isEmpty() ? ofPicture(icon) : refusal;
}

QString ofPicture(const QByteArray& picture)
{
    if (picture.isEmpty())
        return QStringLiteral("it has no bytes");
    if (picture.size() > 32768)
        return QStringLiteral("it has %1 bytes, and at most 32768 are taken").arg(picture.size());
    return {};
}

} // namespace vx::platform::zel::refusals
