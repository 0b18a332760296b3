// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonNodeReader.h>

namespace iface {

/// A reader on an object: its children are asked for by name. See JsonNodeReader for lifetime and failure.
class ZEL_EXPORT JsonObjectReader : public JsonNodeReader
{
public:
    using JsonNodeReader::JsonNodeReader;
};

} // namespace iface
