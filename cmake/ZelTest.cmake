# SPDX-License-Identifier: Apache-2.0
find_package(Qt6 6.4 REQUIRED COMPONENTS Test)

# zel_add_tests(<layer> <Class>... [PROGRAM name] [LINKS target...])
# One program, tst_<layer> unless it is named, from each Class's tst_<class>.cpp (lower case). Each class runs in a
# process of its own; its CTest name is <layer>.<Class>, its label the layer.
function(zel_add_tests layer)
    cmake_parse_arguments(arg "" "PROGRAM" "LINKS" ${ARGN})
    set(target "tst_${layer}")
    if(arg_PROGRAM)
        set(target "${arg_PROGRAM}")
    endif()
    list(TRANSFORM arg_UNPARSED_ARGUMENTS TOLOWER OUTPUT_VARIABLE files)
    list(TRANSFORM files REPLACE "^(.+)$" "tst_\\1.cpp")
    add_executable(${target} ${files} "${PROJECT_SOURCE_DIR}/tests/common/TestMain.cpp")
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    target_include_directories(${target} PRIVATE "${PROJECT_SOURCE_DIR}/tests")
    target_link_libraries(${target} PRIVATE ${arg_LINKS} Qt6::Core Qt6::Test zel_options)
    zel_use_precompiled(${target})
    foreach(class IN LISTS arg_UNPARSED_ARGUMENTS)
        add_test(NAME "${layer}.${class}" COMMAND ${target} "Tst${class}")
        set_tests_properties("${layer}.${class}" PROPERTIES LABELS "${layer}" TIMEOUT 120 ENVIRONMENT
            "ZEL_SLOG=stderr;UBSAN_OPTIONS=print_stacktrace=1;ASAN_OPTIONS=detect_leaks=1;${ZEL_TEST_ENVIRONMENT}")
    endforeach()
endfunction()
