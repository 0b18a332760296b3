# SPDX-License-Identifier: Apache-2.0
# What every target of ours is built with, and how a floor of the house is declared.

# Warnings, sanitizers and house rules; never exported to users.
add_library(zel_options INTERFACE)
target_compile_features(zel_options INTERFACE cxx_std_20)
target_compile_definitions(zel_options INTERFACE
    QT_NO_KEYWORDS QT_NO_CAST_FROM_ASCII QT_NO_FOREACH BOOST_BIND_NO_PLACEHOLDERS)
target_compile_options(zel_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wcast-align -Wunused $<$<BOOL:${ZEL_WERROR}>:-Werror>)
# Nobody replaces our functions from outside, so within a library calls need no detour.
target_compile_options(zel_options INTERFACE -fno-semantic-interposition)
if(ZEL_SANITIZE)
    target_compile_options(zel_options INTERFACE -fsanitize=${ZEL_SANITIZE} -fno-omit-frame-pointer
                           -fno-sanitize-recover=all)
    target_link_options(zel_options INTERFACE -fsanitize=${ZEL_SANITIZE})
endif()
# What an attacker who finds a fault in the code would have to get round: scripts/check-hardening sees to it that it is
# there. Guarded stacks and jumps cost 7 % of the instructions that a contact takes.
include(CheckCXXCompilerFlag)
include(CheckPIESupported)
check_pie_supported()
if(NOT ZEL_SANITIZE)
    target_link_options(zel_options INTERFACE $<$<CONFIG:Release>:LINKER:-z,relro,-z,now,-z,noexecstack>)
    # All symbols are bound at start then, so calls of other libraries need no detour either.
    check_cxx_compiler_flag(-fno-plt zel_has_no_plt)
    target_compile_options(zel_options INTERFACE $<$<AND:$<CONFIG:Release>,$<BOOL:${zel_has_no_plt}>>:-fno-plt>)
endif()
if(ZEL_HARDENED)
    check_cxx_compiler_flag(-fcf-protection zel_has_cf_protection) # x86
    target_compile_options(zel_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2 -fstack-protector-strong
                           $<$<BOOL:${zel_has_cf_protection}>:-fcf-protection>)
endif()

set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

# zel_add_layer(<target> [PUBLIC_HEADERS dir] [INCLUDES dir...] [LINKS target...])
# A floor: every source below the current folder, one static library. Floors find the headers of the floors
# they link and no others, so an upward include does not build.
function(zel_add_layer target)
    cmake_parse_arguments(arg "" "PUBLIC_HEADERS" "INCLUDES;LINKS" ${ARGN})
    file(GLOB_RECURSE sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/*.cpp" "${CMAKE_CURRENT_SOURCE_DIR}/*.h")
    add_library(${target} STATIC ${sources})
    set_target_properties(${target} PROPERTIES AUTOMOC ON)
    if(arg_PUBLIC_HEADERS)
        target_include_directories(${target} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}/${arg_PUBLIC_HEADERS}")
    endif()
    if(arg_INCLUDES)
        target_include_directories(${target} PUBLIC ${arg_INCLUDES})
    endif()
    target_link_libraries(${target} PUBLIC ${arg_LINKS} PRIVATE zel_options)
    zel_use_precompiled(${target})
endfunction()
