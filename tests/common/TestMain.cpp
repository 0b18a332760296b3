// SPDX-License-Identifier: Apache-2.0
#include "TestMain.h"

#include <cstdio>
#include <map>
#include <string_view>

static auto& tests()
{
    static std::map<std::string_view, testmain::Run> tests;
    return tests;
}

bool testmain::add(const char* name, Run run)
{
    return tests().emplace(name, run).second;
}

int main(int argc, char** argv)
{
    const auto found = tests().find(argc > 1 ? argv[1] : "");
    if (found != tests().end()) {
        argv[1] = argv[0];
        return found->second(argc - 1, argv + 1);
    }
    for (const auto& test : tests())
        std::fprintf(stderr, "Name a class first: %s\n", test.first.data());
    return 2;
}
