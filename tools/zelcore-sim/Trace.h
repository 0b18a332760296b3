// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <zelcore/Records.h>

/// One record of the traffic as a line for people: the time, the direction, who, what, and the body with everything
/// long shortened.
QString traceLine(const zelcore::WireRecord& record);
