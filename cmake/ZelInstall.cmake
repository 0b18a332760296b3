# SPDX-License-Identifier: Apache-2.0
# What is installed: the components, each with its target, headers and package files, and the programs.
include(CMakePackageConfigHelpers)

# To each package its part (ZelPackages.cmake): runtime, simulator, qml, programs, desktop, and what is not
# said otherwise.
set(CMAKE_INSTALL_DEFAULT_COMPONENT_NAME development)
set(zel_package "${CMAKE_INSTALL_LIBDIR}/cmake/ZelPlatform")
# The package files find their prefix from where they stand, so that an installed tree may be moved.
file(RELATIVE_PATH ZEL_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")

# zel_install_component(<Component> TARGET target PKGCONFIG name DESCRIPTION text [REQUIRES module...] [FLAGS flag...]
#                       [LIBRARY name] HEADERS folder...)
# A component of the package: the target ZelPlatform::<Component>, its headers in a folder of their own, and a
# pkg-config file. What a target needs of others' is found by ZelPlatformConfig.cmake.in.
function(zel_install_component component)
    cmake_parse_arguments(arg "" "TARGET;PKGCONFIG;DESCRIPTION;LIBRARY" "REQUIRES;FLAGS;HEADERS" ${ARGN})
    string(TOLOWER "${component}" folder)
    set(part runtime)
    if(component STREQUAL "Simulator")
        set(part simulator)
    endif()
    install(TARGETS ${arg_TARGET} EXPORT ZelPlatform${component} LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}"
            COMPONENT ${part} NAMELINK_COMPONENT development)
    install(EXPORT ZelPlatform${component} NAMESPACE ZelPlatform:: DESTINATION "${zel_package}")
    foreach(headers IN LISTS arg_HEADERS)
        install(DIRECTORY "${PROJECT_SOURCE_DIR}/${headers}/" DESTINATION "${zel_headers}/${folder}"
                FILES_MATCHING PATTERN "*.h" PATTERN "iface/Export.h" EXCLUDE)
    endforeach()

    set(ZEL_PC_NAME "${arg_PKGCONFIG}")
    set(ZEL_PC_DESCRIPTION "${arg_DESCRIPTION}")
    list(JOIN arg_REQUIRES " " ZEL_PC_REQUIRES)
    list(TRANSFORM arg_LIBRARY PREPEND "-L\${libdir} -l" OUTPUT_VARIABLE ZEL_PC_LIBS)
    list(JOIN arg_FLAGS " " ZEL_PC_FLAGS)
    set(ZEL_PC_HEADERS "${zel_headers}/${folder}")
    configure_file("${PROJECT_SOURCE_DIR}/cmake/component.pc.in" "${PROJECT_BINARY_DIR}/${arg_PKGCONFIG}.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/${arg_PKGCONFIG}.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
endfunction()

list(TRANSFORM ZEL_SYSTEM_INCLUDE_DIRS PREPEND "-I" OUTPUT_VARIABLE system_flags)
zel_install_component(Platform TARGET zelplatform LIBRARY zelplatform PKGCONFIG zelplatform
    DESCRIPTION "${PROJECT_DESCRIPTION}" REQUIRES Qt6Core HEADERS platform/public_headers)
install(FILES "${PROJECT_SOURCE_DIR}/iface/public_headers/iface/Export.h" DESTINATION "${zel_headers}/platform/iface")
zel_install_component(Containers TARGET zelcontainers PKGCONFIG zelplatform-containers
    DESCRIPTION "The observable containers, the list protocol and the device's calls beneath zelplatform"
    REQUIRES zelplatform Qt6Core5Compat FLAGS ${system_flags} HEADERS ${zel_container_headers})
zel_install_component(Requests TARGET zelrequests LIBRARY zelrequests PKGCONFIG zelplatform-requests
    DESCRIPTION "Requests to the messaging service as futures" REQUIRES zelplatform HEADERS requests/public_headers)
zel_install_component(Models TARGET zelmodels LIBRARY zelmodels PKGCONFIG zelplatform-models
    DESCRIPTION "List models of contacts and profile box items" REQUIRES zelplatform HEADERS models/public_headers)
if(TARGET zelquick)
    # Beside Qt's own modules when the prefix is that of Qt.
    set(module_folder "${zel_qml_destination}/ZelPlatform")
    file(RELATIVE_PATH module_to_libraries "/${module_folder}" "/${CMAKE_INSTALL_LIBDIR}")
    set_target_properties(zelquick PROPERTIES INSTALL_RPATH "$ORIGIN/${module_to_libraries}")
    install(TARGETS zelquick LIBRARY DESTINATION "${module_folder}" COMPONENT qml)
    install(FILES "${zel_qml_folder}/ZelPlatform/qmldir" "${zel_qml_folder}/ZelPlatform/plugins.qmltypes"
            DESTINATION "${module_folder}" COMPONENT qml)
    install(TARGETS zelquickimport EXPORT ZelPlatformQuick)
    install(EXPORT ZelPlatformQuick NAMESPACE ZelPlatform:: DESTINATION "${zel_package}")
endif()
if(TARGET zelcoresim)
    zel_install_component(Simulator TARGET zelcoresim LIBRARY zelcoresim PKGCONFIG zelplatform-simulator
        DESCRIPTION "A simulated core service for tests of applications" REQUIRES Qt6Core
        HEADERS simulator/public_headers)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/simulator/scenarios" DESTINATION "${CMAKE_INSTALL_DATADIR}/zelplatform"
            COMPONENT simulator FILES_MATCHING PATTERN "*.json")
endif()

# The programs find the libraries beside them, wherever the tree was installed or moved to.
file(RELATIVE_PATH bin_to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
set(programs zelctl zelcore-sim)
set(desktop zel-contacts zelcore-desk)
foreach(part IN ITEMS programs desktop)
    foreach(program IN LISTS ${part})
        if(TARGET ${program})
            set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_libraries}")
            install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}" COMPONENT ${part})
            if(TARGET manuals)
                install(FILES "${PROJECT_BINARY_DIR}/share/man/man1/${program}.1.gz"
                        DESTINATION "${CMAKE_INSTALL_MANDIR}/man1" COMPONENT ${part})
                install(FILES "${PROJECT_BINARY_DIR}/share/bash-completion/completions/${program}"
                        DESTINATION "${CMAKE_INSTALL_DATADIR}/bash-completion/completions" COMPONENT ${part})
            endif()
        endif()
    endforeach()
endforeach()

configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelPlatformConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/ZelPlatformConfig.cmake" INSTALL_DESTINATION "${zel_package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelPlatformConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZelPlatformConfig.cmake" "${PROJECT_BINARY_DIR}/ZelPlatformConfigVersion.cmake"
        DESTINATION "${zel_package}")
