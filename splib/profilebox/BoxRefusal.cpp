// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/BoxRefusal.h>

#include <splib/log/Logging.h>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

namespace {

QString lineOf(BoxRefusal refusal)
{
    switch (refusal) {
    case BoxRefusal::TextIsEmpty:
        return u"Failed to create profile box item: text is null or empty"_s;
    case BoxRefusal::TextIsTooLong:
        return u"Failed to create profile box item: text > 100 chars"_s;
    case BoxRefusal::TextHasTooManyLines:
        return u"Failed to create profile box item: text contains more than 2 new line chars"_s;
    case BoxRefusal::CookieIsTooLong:
        return u"Failed to create profile box item: cookie > 128 chars"_s;
    case BoxRefusal::IconIdIsNegative:
        return u"Failed to register profile box icon: icon ID is invalid"_s;
    case BoxRefusal::IconIsNull:
        return u"Failed to register profile box icon: null pointer found"_s;
    case BoxRefusal::IconHasWrongSize:
        return u"Failed to register profile box icon: icon size=%1 is invalid"_s;
    case BoxRefusal::IconIsUnderWay:
        return u"Failed to register profile box icon ID=%1: registration of icon with same ID already in progress"_s;
    case BoxRefusal::IconIsRegistered:
        return u"Failed to register a profile box icon with id=%1; already registered"_s;
    }
    Q_UNREACHABLE();
}

} // namespace

std::optional<BoxRefusal> refusalOfItem(const QString& text, const QString& cookie)
{
    if (text.isEmpty())
        return BoxRefusal::TextIsEmpty;
    if (text.size() > maxTextLength)
        return BoxRefusal::TextIsTooLong;
    // Both characters count, so a pair of them counts twice.
    if (text.count(u'\n') + text.count(u'\r') > maxTextBreaks)
        return BoxRefusal::TextHasTooManyLines;
    if (cookie.size() > maxCookieLength)
        return BoxRefusal::CookieIsTooLong;
    return std::nullopt;
}

std::optional<BoxRefusal> refusalOfIcon(int iconId, const char* data, unsigned size)
{
    if (iconId < 0)
        return BoxRefusal::IconIdIsNegative;
    if (!data)
        return BoxRefusal::IconIsNull;
    if (size == 0 || size > maxIconSize)
        return BoxRefusal::IconHasWrongSize;
    return std::nullopt;
}

void logRefusal(BoxRefusal refusal, const QString& value)
{
    const QString line = lineOf(refusal);
    Log<GENERAL_ERROR>({}, line.contains("%1"_L1) ? line.arg(value) : line);
}

} // namespace zelsplib
