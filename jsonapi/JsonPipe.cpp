// SPDX-License-Identifier: Apache-2.0
#include <zel/JsonPipe.h>

namespace zel {

JsonPipe::~JsonPipe() = default;

} // namespace zel
