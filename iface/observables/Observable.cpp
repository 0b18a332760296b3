// SPDX-License-Identifier: Apache-2.0
#include <iface/Observable.h>

namespace iface {

Observable::~Observable() = default;

} // namespace iface
