# SPDX-License-Identifier: Apache-2.0
# Packages for Debian, one for each part of what is installed: scripts/package makes them.
set(ZEL_PACKAGER "The zelplatform developers <zelplatform@example.org>" CACHE STRING "Who answers for the packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zelplatform)
set(CPACK_PACKAGE_CONTACT "${ZEL_PACKAGER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_PACKAGE_DIRECTORY "${PROJECT_BINARY_DIR}/packages")
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS
    "${PROJECT_BINARY_DIR}/platform" "${PROJECT_BINARY_DIR}/models" "${PROJECT_BINARY_DIR}/requests"
    "${PROJECT_BINARY_DIR}/simulator")
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_POST_BUILD_SCRIPTS "${CMAKE_CURRENT_LIST_DIR}/ZelPackagesFinish.cmake")

set(docs "${PROJECT_BINARY_DIR}/debian")
string(TIMESTAMP year "%Y" UTC)
string(TIMESTAMP date "%a, %d %b %Y %H:%M:%S +0000" UTC)
file(CONFIGURE OUTPUT "${docs}/changelog.Debian" @ONLY CONTENT
"zelplatform (@PROJECT_VERSION@-1) unstable; urgency=medium

  * Version @PROJECT_VERSION@.

 -- @ZEL_PACKAGER@  @date@
")
file(CONFIGURE OUTPUT "${docs}/copyright" @ONLY CONTENT
"Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/
Upstream-Name: zelplatform

Files: *
Copyright: @year@ the zelplatform developers
License: Apache-2.0
 On Debian systems the text of the licence is in /usr/share/common-licenses/Apache-2.0.
")
execute_process(COMMAND gzip -9nkf "${docs}/changelog.Debian")

# zel_package(<part> NAME package SECTION section [LIBRARIES name...] SUMMARY text TEXT line... [DEPENDS package...])
function(zel_package part)
    cmake_parse_arguments(arg "" "NAME;SECTION;SUMMARY" "LIBRARIES;TEXT;DEPENDS" ${ARGN})
    install(FILES "${docs}/copyright" "${docs}/changelog.Debian.gz" COMPONENT ${part} EXCLUDE_FROM_ALL
            DESTINATION "${CMAKE_INSTALL_DATADIR}/doc/${arg_NAME}")
    string(TOUPPER "${part}" id)
    list(JOIN arg_DEPENDS ", " depends)
    set(parts ${CPACK_COMPONENTS_ALL} ${part})
    set(CPACK_COMPONENTS_ALL ${parts} PARENT_SCOPE)
    set(CPACK_DEBIAN_${id}_PACKAGE_NAME "${arg_NAME}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${id}_PACKAGE_SECTION "${arg_SECTION}" PARENT_SCOPE)
    set(CPACK_DEBIAN_${id}_PACKAGE_DEPENDS "${depends}" PARENT_SCOPE)
    list(JOIN arg_TEXT "\n" text)
    set(CPACK_COMPONENT_${id}_DESCRIPTION "${arg_SUMMARY}\n${text}" PARENT_SCOPE)
    if(arg_LIBRARIES)
        list(TRANSFORM arg_LIBRARIES APPEND " ${PROJECT_VERSION_MAJOR} ${arg_NAME} (>= ${PROJECT_VERSION})\n")
        file(WRITE "${docs}/${part}/shlibs" ${arg_LIBRARIES})
        file(WRITE "${docs}/${part}/triggers" "activate-noawait ldconfig\n")
        set(CPACK_DEBIAN_${id}_PACKAGE_CONTROL_EXTRA "${docs}/${part}/shlibs;${docs}/${part}/triggers" PARENT_SCOPE)
    endif()
endfunction()

set(same "(= ${PROJECT_VERSION}-1)")
zel_package(runtime NAME libzelplatform2 SECTION libs LIBRARIES libzelplatform libzelmodels libzelrequests
    SUMMARY "client library for a device's instant-messaging service"
    TEXT "An application takes part in the messaging service with it: it registers"
         "itself, follows the contacts who also run it, keeps a profile box, and hands"
         "over invitations and chats.")
set(development libzelplatform2)
if(TARGET zelcoresim)
    zel_package(simulator NAME libzelcoresim2 SECTION libs LIBRARIES libzelcoresim
        SUMMARY "simulated core service for tests of messaging applications"
        TEXT "Serves applications that use libzelplatform, inside a test of theirs or as"
             "the program zelcore-sim.")
    zel_package(programs NAME zelplatform-tools SECTION utils
        SUMMARY "command line and simulated core service for libzelplatform"
        TEXT "zelctl does on the command line what an application can do; zelcore-sim is"
             "the core service on a desktop."
        DEPENDS "libzelplatform2 ${same}" "libzelcoresim2 ${same}")
    list(APPEND development libzelcoresim2)
endif()
if(TARGET zelquick)
    zel_package(qml NAME qml6-module-zelplatform SECTION libs
        SUMMARY "QML module for a device's instant-messaging service"
        TEXT "What libzelplatform offers applications, for those that are written in QML:"
             "import ZelPlatform."
        DEPENDS "libzelplatform2 ${same}" qml6-module-qtquick)
endif()
if(TARGET zel-contacts)
    zel_package(desktop NAME zelplatform-desktop SECTION net
        SUMMARY "contacts of the messaging service in a window"
        TEXT "zel-contacts shows the user's profile, contacts and profile box, from the"
             "service of the device or from a simulated one; zelcore-desk is the simulated"
             "one with a window."
        DEPENDS "libzelcoresim2 ${same}" "qml6-module-zelplatform ${same}" qml6-module-qtquick-controls
                qml6-module-qtquick-dialogs qml6-module-qtquick-layouts qml6-module-qtquick-templates
                qml6-module-qtquick-window qml6-module-qtqml-workerscript)
endif()
list(TRANSFORM development APPEND " ${same}")
zel_package(development NAME libzelplatform-dev SECTION libdevel
    SUMMARY "client library for a device's instant-messaging service - development files"
    TEXT "Headers, the CMake package ZelPlatform and pkg-config files of libzelplatform"
         "and of the simulated core service."
    DEPENDS ${development} qt6-base-dev qt6-5compat-dev libboost-dev)
# Qt is built so that programs which use it must be position-independent code, whatever the compiler's default.
file(WRITE "${docs}/libzelplatform-dev" "libzelplatform-dev: pkg-config-bad-directive\n")
install(FILES "${docs}/libzelplatform-dev" COMPONENT development EXCLUDE_FROM_ALL
        DESTINATION "${CMAKE_INSTALL_DATADIR}/lintian/overrides")

include(CPack)
