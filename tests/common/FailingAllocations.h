// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <new>

/// Memory that runs out when a test says so, for operator new and for malloc().
namespace failing {

inline thread_local long alive = 0; ///< what operator new has given this thread, and was not given back
inline thread_local long left = -1; ///< allocations of this thread until the one that fails, once; below 0 none does
/// Qt's hashes end the process when they cannot have an array, and its lists when they cannot have their first memory.
inline bool withArrays = true;
inline bool withMalloc = true;

/// Has every allocation of `act` fail in turn. `prepare` makes what it acts on, and `check` looks at that, both with
/// plenty of memory. First and last none fails: without room for what a thread makes once the C library ends the
/// process.
template <typename Prepare, typename Act, typename Check>
int eachInTurn(const Prepare& prepare, const Act& act, const Check& check)
{
    for (int n = -1;; ++n) {
        const auto subject = prepare();
        left = n;
        try {
            act(*subject);
        } catch (const std::bad_alloc&) {
        }
        const bool isLast = n >= 0 && left >= 0;
        left = -1;
        check(*subject);
        if (isLast)
            return n;
    }
}

} // namespace failing
