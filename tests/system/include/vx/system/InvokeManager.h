// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vx {
namespace system {

class InvokeRequest;

class InvokeManager
{
public:
    bool invoke(const InvokeRequest& request);
};

} // namespace system
} // namespace vx
