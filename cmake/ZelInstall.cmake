# SPDX-License-Identifier: Apache-2.0
# What is installed: the two shared libraries, the public headers, the programs and the package files.
include(CMakePackageConfigHelpers)

set(zel_headers "${CMAKE_INSTALL_INCLUDEDIR}/zelplatform")
set(zel_package "${CMAKE_INSTALL_LIBDIR}/cmake/ZelPlatform")

set(libraries zelplatform)
if(TARGET zelcoresim)
    list(APPEND libraries zelcoresim)
    list(APPEND zel_floor_headers simulator/public_headers)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/simulator/scenarios" DESTINATION "${CMAKE_INSTALL_DATADIR}/zelplatform"
            FILES_MATCHING PATTERN "*.json")
endif()
install(TARGETS ${libraries} EXPORT ZelPlatformTargets LIBRARY DESTINATION "${CMAKE_INSTALL_LIBDIR}")
foreach(folder IN LISTS zel_floor_headers)
    install(DIRECTORY "${PROJECT_SOURCE_DIR}/${folder}/" DESTINATION "${zel_headers}" FILES_MATCHING PATTERN "*.h")
endforeach()
# The programs find the libraries beside them, wherever the tree was installed or moved to.
file(RELATIVE_PATH bin_to_libraries "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
foreach(program IN ITEMS zelctl zelcore-sim)
    if(TARGET ${program})
        set_target_properties(${program} PROPERTIES INSTALL_RPATH "$ORIGIN/${bin_to_libraries}")
        install(TARGETS ${program} RUNTIME DESTINATION "${CMAKE_INSTALL_BINDIR}")
    endif()
endforeach()

install(EXPORT ZelPlatformTargets NAMESPACE ZelPlatform:: DESTINATION "${zel_package}")
configure_package_config_file("${PROJECT_SOURCE_DIR}/cmake/ZelPlatformConfig.cmake.in"
    "${PROJECT_BINARY_DIR}/ZelPlatformConfig.cmake" INSTALL_DESTINATION "${zel_package}")
write_basic_package_version_file("${PROJECT_BINARY_DIR}/ZelPlatformConfigVersion.cmake"
    COMPATIBILITY SameMajorVersion)
install(FILES "${PROJECT_BINARY_DIR}/ZelPlatformConfig.cmake" "${PROJECT_BINARY_DIR}/ZelPlatformConfigVersion.cmake"
        DESTINATION "${zel_package}")

# The package file finds its prefix from where it stands, so that an installed tree may be moved.
list(TRANSFORM ZEL_SYSTEM_INCLUDE_DIRS PREPEND " -I" OUTPUT_VARIABLE ZEL_PC_SYSTEM_FLAGS)
list(JOIN ZEL_PC_SYSTEM_FLAGS "" ZEL_PC_SYSTEM_FLAGS)
file(RELATIVE_PATH ZEL_PC_TO_PREFIX "/${CMAKE_INSTALL_LIBDIR}/pkgconfig" "/")
configure_file("${PROJECT_SOURCE_DIR}/cmake/zelplatform.pc.in" "${PROJECT_BINARY_DIR}/zelplatform.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/zelplatform.pc" DESTINATION "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
