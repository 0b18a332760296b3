// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/JsonNodeReader.h>

namespace iface {

/// A reader on an array: its children are asked for by place, 0 to numChildren() - 1. See JsonNodeReader for
/// lifetime and failure.
class ZEL_EXPORT JsonArrayReader : public JsonNodeReader
{
public:
    using JsonNodeReader::JsonNodeReader;
};

} // namespace iface
