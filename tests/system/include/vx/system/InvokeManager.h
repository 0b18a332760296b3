// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vx::system {

class InvokeRequest;

class InvokeManager
{
public:
    bool invoke(const InvokeRequest& request);
};

} // namespace vx::system
