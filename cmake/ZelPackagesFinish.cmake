# SPDX-License-Identifier: Apache-2.0
# CPack runs this over the packages that it has made. A package with a library has ldconfig called by its trigger, once
# for all that are installed together; CPack adds scripts that call it as well, and cannot be told not to.
foreach(package IN LISTS CPACK_PACKAGE_FILES)
    set(tree "${package}.tree")
    execute_process(COMMAND dpkg-deb --raw-extract "${package}" "${tree}" COMMAND_ERROR_IS_FATAL ANY)
    if(EXISTS "${tree}/DEBIAN/triggers")
        file(REMOVE "${tree}/DEBIAN/postinst" "${tree}/DEBIAN/postrm")
        execute_process(COMMAND dpkg-deb --root-owner-group --build "${tree}" "${package}"
                        OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
    endif()
    file(REMOVE_RECURSE "${tree}")
endforeach()
