// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdlib>
#include <new>

/// Memory that runs out when a test says so: for operator new and, without sanitizers, which have it for themselves, for
/// malloc() as Qt's containers use it. To be included by one source of a program.
namespace failing {

inline thread_local long left = -1; ///< allocations of this thread until the one that fails, once; below 0 none does
inline thread_local long held = 0;  ///< what this thread got, less what it gave back

inline bool isDue()
{
    return left >= 0 && left-- == 0;
}

/// Has every allocation of `act` fail in turn, and none in the end. `prepare` goes before each and `check` after it, with
/// plenty of memory; it is told whether `act` let the exception out. Answers how many allocations there were.
template <typename Prepare, typename Act, typename Check>
int eachInTurn(const Prepare& prepare, const Act& act, const Check& check)
{
    for (int n = 0;; ++n) {
        auto subject = prepare();
        bool isTold = false;
        left = n;
        try {
            act(*subject);
        } catch (const std::bad_alloc&) {
            isTold = true;
        }
        const bool hasFailed = left < 0;
        left = -1;
        check(*subject, isTold);
        if (!hasFailed)
            return n;
    }
}

} // namespace failing

void* operator new(std::size_t size)
{
    if (failing::isDue())
        throw std::bad_alloc();
    if (void* const memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
