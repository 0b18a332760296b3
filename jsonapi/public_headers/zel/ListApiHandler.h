// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iface/Export.h>
#include <iface/JsonObjectReader.h>

namespace zel {

/// Whatever mirrors one list of the core service. Each operation takes the body of the message of its name and does
/// nothing unless it is overridden.
///
/// Registers itself with the multiplexer, which holds a plain pointer: it must be removed there before it goes. It
/// may be removed, and destroyed, while it is being called.
class ZEL_EXPORT ListApiHandler
{
public:
    virtual ~ListApiHandler();

    virtual void listAdd(iface::JsonObjectReader body);
    virtual void listAll(iface::JsonObjectReader body);
    virtual void listChange(iface::JsonObjectReader body);
    virtual void listChunk(iface::JsonObjectReader body);
    virtual void listElements(iface::JsonObjectReader body);
    virtual void listRemove(iface::JsonObjectReader body);
    virtual void listWindow(iface::JsonObjectReader body);
};

} // namespace zel
