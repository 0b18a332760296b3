// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "TextBuffer.h"

#include <string_view>

namespace device {

// The value as a JSON string with its quotation marks.
void appendJsonString(TextBuffer& text, std::string_view value);

// The value as an attribute line carries it: on one line, without quotation marks.
void appendAttributeString(TextBuffer& text, std::string_view value);

// The name as an attribute line can carry it; false when characters had to be replaced.
bool appendAttributeName(TextBuffer& text, std::string_view name);

} // namespace device
