// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QString>

#include <optional>

namespace zelsplib {

/// What an item and an icon may measure at most: characters and bytes.
inline constexpr qsizetype maxTextLength = 100;
inline constexpr qsizetype maxTextBreaks = 2;
inline constexpr qsizetype maxCookieLength = 128;
inline constexpr unsigned maxIconSize = 32768;

/// Why a request for an item or an icon of the profile box cannot be one.
enum class BoxRefusal {
    TextIsEmpty,
    TextIsTooLong,
    TextHasTooManyLines,
    CookieIsTooLong,
    IconIdIsNegative,
    IconIsNull,
    IconHasWrongSize,
    IconIsUnderWay,
    IconIsRegistered,
};

/// The first reason against an item.
std::optional<BoxRefusal> refusalOfItem(const QString& text, const QString& cookie);
/// The first reason against an icon, whatever icons there are.
std::optional<BoxRefusal> refusalOfIcon(int iconId, const char* data, unsigned size);

/// Writes the refusal to the log. `value` is the icon's id or its size, whichever the line names.
void logRefusal(BoxRefusal refusal, const QString& value = {});

} // namespace zelsplib
