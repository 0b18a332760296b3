// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdio>

#include <malloc.h>
#include <unistd.h>

/// What the process holds at one moment. Resident memory is what a user pays, in whole pages and with what the
/// allocator keeps for later; bytes in use are exact and say what the data itself takes.
struct Memory
{
    double resident = 0;
    double inUse = 0;

    static Memory now()
    {
        Memory memory;
        long pages = 0;
        long residentPages = 0;
        if (std::FILE* const file = std::fopen("/proc/self/statm", "r")) {
            if (std::fscanf(file, "%ld %ld", &pages, &residentPages) != 2)
                residentPages = 0;
            std::fclose(file);
        }
        memory.resident = double(residentPages) * double(::sysconf(_SC_PAGESIZE));
        const struct mallinfo2 heap = ::mallinfo2();
        memory.inUse = double(heap.uordblks + heap.hblkhd);
        return memory;
    }
};
