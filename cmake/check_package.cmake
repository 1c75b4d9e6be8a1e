# Builds the Debian package from the build tree and has lintian judge it: any error fails the check.
# Without lintian there is no judge, and the check says so and is skipped.
find_program(LINTIAN lintian)
find_program(DPKG_DEB dpkg-deb)
if(NOT LINTIAN OR NOT DPKG_DEB)
    message("SKIPPED: lintian is not installed (scripts/setup installs it)")
    return()
endif()
set(work ${BINARY_DIR}/package-check)
file(REMOVE_RECURSE ${work})
file(MAKE_DIRECTORY ${work})
execute_process(COMMAND ${CMAKE_CPACK_COMMAND} -G DEB --config ${BINARY_DIR}/CPackConfig.cmake -B ${work}
    WORKING_DIRECTORY ${BINARY_DIR} RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
file(GLOB packages ${work}/*.deb)
if(NOT result EQUAL 0 OR NOT packages)
    message(FATAL_ERROR "cpack failed (${result}):\n${output}")
endif()
list(GET packages 0 package)

# What lintian cannot see for itself: every file in /usr, the libraries with the loader, the trigger.
execute_process(COMMAND ${DPKG_DEB} --contents ${package} OUTPUT_VARIABLE contents)
execute_process(COMMAND ${DPKG_DEB} --ctrl-tarfile ${package} COMMAND tar -tf - OUTPUT_VARIABLE control)
string(REGEX MATCHALL "\\./[^ \n]*" paths "${contents}")
foreach(path IN LISTS paths)
    if(NOT path MATCHES "^\\./(usr(/.*)?)?$")
        message(FATAL_ERROR "Packaged outside /usr: ${path}")
    endif()
endforeach()
foreach(expected "usr/bin/twbd" "usr/bin/twbgui" "usr/bin/twbctl" "usr/lib/.*libtwbplatform\\.so\\.0"
        "usr/share/doc/tidewrack-console/copyright" "usr/share/doc/tidewrack-console/changelog\\.gz")
    if(NOT contents MATCHES "\\./${expected}")
        message(FATAL_ERROR "Not packaged: ${expected}\n${contents}")
    endif()
endforeach()
foreach(expected shlibs triggers)
    if(NOT control MATCHES "${expected}")
        message(FATAL_ERROR "No ${expected} in the package's control files:\n${control}")
    endif()
endforeach()

execute_process(COMMAND ${DPKG_DEB} --fsys-tarfile ${package} COMMAND tar -xO ./usr/lib/systemd/user/twbd.service
    OUTPUT_VARIABLE unit)
if(NOT unit MATCHES "ExecStart=/usr/bin/twbd --foreground")
    message(FATAL_ERROR "The packaged user unit does not start /usr/bin/twbd:\n${unit}")
endif()

execute_process(COMMAND ${LINTIAN} --fail-on error --no-tag-display-limit ${package}
    RESULT_VARIABLE result OUTPUT_VARIABLE report ERROR_VARIABLE report)
message("${report}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "lintian found errors in ${package}")
endif()
file(REMOVE_RECURSE ${work})
message(STATUS "lintian passed ${package}")
