// SPDX-License-Identifier: Apache-2.0
#include "FailingAllocations.h"

#include <cstdlib>

#include <dlfcn.h>

static bool isDue()
{
    return failing::left >= 0 && failing::left-- == 0;
}

#if defined(__SANITIZE_THREAD__) // which allocates before it can be looked up
static constexpr auto& allocate = std::malloc;
#else
/// What stands behind this program's: the C library's or a sanitizer's.
template <typename Function>
static Function* next(const char* name)
{
    return reinterpret_cast<Function*>(::dlsym(RTLD_NEXT, name));
}
static void* allocate(std::size_t size)
{
    static const auto behind = next<void*(std::size_t)>("malloc");
    return behind(size);
}
extern "C" {
void* malloc(std::size_t size)
{
    return failing::withMalloc && isDue() ? nullptr : allocate(size);
}
void* realloc(void* memory, std::size_t size)
{
    static const auto behind = next<void*(void*, std::size_t)>("realloc");
    return failing::withMalloc && isDue() ? nullptr : behind(memory, size);
}
}
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
