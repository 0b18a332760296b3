# SPDX-License-Identifier: Apache-2.0
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

# zel_add_test(<layer> <Class> [SOURCES file...] [LINKS target...] [TIMEOUT seconds])
# One Qt Test program from tst_<class>.cpp (lower case); its CTest name is <layer>.<Class>, its label the layer.
function(zel_add_test layer class)
    cmake_parse_arguments(arg "" "TIMEOUT" "SOURCES;LINKS" ${ARGN})
    string(TOLOWER "${class}" file)
    set(target "tst_${layer}_${file}")
    add_executable(${target} "tst_${file}.cpp" ${arg_SOURCES})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${target} PRIVATE ${arg_LINKS} Qt6::Core Qt6::Test zel_options)
    zel_use_precompiled(${target})
    add_test(NAME "${layer}.${class}" COMMAND ${target})
    if(NOT arg_TIMEOUT)
        set(arg_TIMEOUT 120)
    endif()
    set_tests_properties("${layer}.${class}" PROPERTIES LABELS "${layer}" TIMEOUT ${arg_TIMEOUT}
        ENVIRONMENT "ZEL_SLOG=stderr;UBSAN_OPTIONS=print_stacktrace=1;ASAN_OPTIONS=detect_leaks=1;${ZEL_TEST_ENVIRONMENT}")
endfunction()
