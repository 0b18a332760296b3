// SPDX-License-Identifier: Apache-2.0
#include "FailingAllocations.h"

#include <cstdlib>

static bool isDue()
{
    return failing::left >= 0 && failing::left-- == 0;
}

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr auto& allocate = std::malloc;
#else
extern "C" {
void* __libc_malloc(std::size_t size);
void* __libc_realloc(void* memory, std::size_t size);
void* malloc(std::size_t size)
{
    return failing::withMalloc && isDue() ? nullptr : __libc_malloc(size);
}
void* realloc(void* memory, std::size_t size)
{
    return failing::withMalloc && isDue() ? nullptr : __libc_realloc(memory, size);
}
}
constexpr auto& allocate = __libc_malloc;
#endif

static void* taken(std::size_t size)
{
    void* const memory = allocate(size ? size : 1);
    failing::alive += memory != nullptr;
    return memory;
}

static void giveBack(void* memory)
{
    failing::alive -= memory != nullptr;
    std::free(memory);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return isDue() ? nullptr : taken(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return failing::withArrays && isDue() ? nullptr : taken(size);
}
void* operator new(std::size_t size)
{
    void* const memory = operator new(size, std::nothrow);
    return memory ? memory : throw std::bad_alloc();
}
void* operator new[](std::size_t size)
{
    void* const memory = operator new[](size, std::nothrow);
    return memory ? memory : throw std::bad_alloc();
}
// All that are called: sanitizers have their own, and look at whether the two fit.
void operator delete(void* memory) noexcept
{
    giveBack(memory);
}
void operator delete[](void* memory) noexcept
{
    giveBack(memory);
}
void operator delete(void* memory, std::size_t) noexcept
{
    giveBack(memory);
}
void operator delete[](void* memory, std::size_t) noexcept
{
    giveBack(memory);
}
