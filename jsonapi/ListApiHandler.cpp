// SPDX-License-Identifier: Apache-2.0
#include <zel/ListApiHandler.h>

namespace zel {

ListApiHandler::~ListApiHandler() = default;

void ListApiHandler::listAdd(iface::JsonObjectReader) {}
void ListApiHandler::listAll(iface::JsonObjectReader) {}
void ListApiHandler::listChange(iface::JsonObjectReader) {}
void ListApiHandler::listChunk(iface::JsonObjectReader) {}
void ListApiHandler::listElements(iface::JsonObjectReader) {}
void ListApiHandler::listRemove(iface::JsonObjectReader) {}
void ListApiHandler::listWindow(iface::JsonObjectReader) {}

} // namespace zel
