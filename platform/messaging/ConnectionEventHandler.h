// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace vx::platform::zel {

/// What the connections manager reports to. There is nothing to report yet: no public class tells of connections.
class ConnectionEventHandler
{
};

} // namespace vx::platform::zel
