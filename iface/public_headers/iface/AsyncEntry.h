// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <boost/function.hpp>

namespace iface {

/// One queued piece of work. Entries are the same when their ids are: functions cannot be compared.
struct AsyncEntry
{
    int id = 0;
    boost::function<void()> function;

    friend bool operator==(const AsyncEntry& a, const AsyncEntry& b) { return a.id == b.id; }
};

} // namespace iface
