# SPDX-License-Identifier: Apache-2.0
# Headers that nearly every source of ours reads, translated once: three quarters of what it takes to compile one of our
# sources is reading Qt's. A source still includes what it uses; the clang preset builds without these, and says so
# when one does not.
option(ZEL_PRECOMPILE_HEADERS "Translate the headers that nearly every source reads only once" ON)

set(zel_precompiled
    <QtCore/QByteArray> <QtCore/QCoreApplication> <QtCore/QDebug> <QtCore/QHash> <QtCore/QJsonArray>
    <QtCore/QJsonDocument> <QtCore/QJsonObject> <QtCore/QList> <QtCore/QMap> <QtCore/QPointer> <QtCore/QSet>
    <QtCore/QSharedData> <QtCore/QSharedPointer> <QtCore/QSocketNotifier> <QtCore/QString> <QtCore/QTimer>
    <QtCore/QVariant> <algorithm> <functional> <memory> <optional> <utility> <vector>)

# zel_precompile_for(<target> <compile option>)
# What others reuse. The compiler takes what was precompiled only into code of the same kind (libraries are
# position-independent, programs so as executables) that knows at least the macros known here: so nothing but Qt Core.
function(zel_precompile_for target option)
    file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp" "")
    add_library(${target} OBJECT "${CMAKE_CURRENT_BINARY_DIR}/${target}.cpp")
    set_target_properties(${target} PROPERTIES POSITION_INDEPENDENT_CODE OFF)
    target_compile_options(${target} PRIVATE ${option})
    target_link_libraries(${target} PRIVATE Qt6::Core zel_options)
    target_precompile_headers(${target} PRIVATE ${zel_precompiled})
endfunction()

# zel_use_precompiled(<target>...)
# Does nothing when it is switched off.
function(zel_use_precompiled)
    if(NOT ZEL_PRECOMPILE_HEADERS)
        return()
    endif()
    foreach(target IN LISTS ARGN)
        get_target_property(type ${target} TYPE)
        if(type STREQUAL "EXECUTABLE")
            target_precompile_headers(${target} REUSE_FROM zel_precompiled_programs)
        else()
            target_precompile_headers(${target} REUSE_FROM zel_precompiled_libraries)
        endif()
    endforeach()
endfunction()

if(ZEL_PRECOMPILE_HEADERS)
    # So that a compiler cache sees through them.
    target_compile_options(zel_options INTERFACE $<$<CXX_COMPILER_ID:GNU>:-fpch-preprocess>)
    zel_precompile_for(zel_precompiled_libraries -fPIC)
    zel_precompile_for(zel_precompiled_programs -fPIE)
endif()
