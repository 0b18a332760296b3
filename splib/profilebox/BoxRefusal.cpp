// SPDX-License-Identifier: Apache-2.0
#include <splib/profilebox/BoxRefusal.h>

#include <splib/log/Logging.h>

#include <iterator>

using namespace Qt::StringLiterals;

namespace zelsplib {

using namespace logging;

namespace {

constexpr const char* lines[] = {
    // by refusal
    "Failed to create profile box item: text is null or empty",
    "Failed to create profile box item: text > 100 chars",
    "Failed to create profile box item: text contains more than 2 new line chars",
    "Failed to create profile box item: cookie > 128 chars",
    "Failed to register profile box icon: icon ID is invalid",
    "Failed to register profile box icon: null pointer found",
    "Failed to register profile box icon: icon size=%1 is invalid",
    "Failed to register profile box icon ID=%1: registration of icon with same ID already in progress",
    "Failed to register a profile box icon with id=%1; already registered",
};
static_assert(std::size(lines) == std::size_t(BoxRefusal::IconIsRegistered) + 1);

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
    const QString line = QLatin1String(lines[int(refusal)]);
    Log<GENERAL_ERROR>({}, line.contains("%1"_L1) ? line.arg(value) : line);
}

} // namespace zelsplib
