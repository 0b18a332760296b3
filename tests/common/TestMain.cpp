// SPDX-License-Identifier: Apache-2.0
#include "TestMain.h"

#include <cstdio>
#include <cstring>
#include <utility>
#include <vector>

static auto& tests()
{
    static std::vector<std::pair<const char*, testmain::Run>> tests;
    return tests;
}

bool testmain::add(const char* name, Run run)
{
    tests().emplace_back(name, run);
    return true;
}

int main(int argc, char** argv)
{
    for (const auto& [name, run] : tests()) {
        if (argc > 1 && std::strcmp(argv[1], name) == 0) {
            argv[1] = argv[0];
            return run(argc - 1, argv + 1);
        }
    }
    std::fprintf(stderr, "Name one of these first:\n");
    for (const auto& test : tests())
        std::fprintf(stderr, "  %s\n", test.first);
    return 2;
}
