# Installs the build into a scratch prefix and runs the installed console's self-test there, so that
# the install rules, the library search path and the packaged files stay whole.
set(prefix ${BINARY_DIR}/install-check)
file(REMOVE_RECURSE ${prefix})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BINARY_DIR} --prefix ${prefix}
    RESULT_VARIABLE result OUTPUT_QUIET ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "Install failed:\n${output}")
endif()
foreach(file bin/twbgui bin/twbd bin/twbctl share/applications/tidewrack-console.desktop
        share/icons/hicolor/scalable/apps/tidewrack-console.svg lib/systemd/user/twbd.service)
    if(NOT EXISTS ${prefix}/${file})
        message(FATAL_ERROR "Not installed: ${file}")
    endif()
endforeach()
file(READ ${prefix}/lib/systemd/user/twbd.service unit)
if(NOT unit MATCHES "ExecStart=/.*/twbd --foreground")
    message(FATAL_ERROR "The user unit does not start twbd in the foreground:\n${unit}")
endif()
execute_process(COMMAND ${prefix}/bin/twbgui --self-test --screenshot ${prefix}/self-test.png
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE errors TIMEOUT 60)
if(NOT result EQUAL 0 OR NOT output MATCHES "self-test passed")
    message(FATAL_ERROR "The installed console failed its self-test (${result}):\n${output}\n${errors}")
endif()
file(REMOVE_RECURSE ${prefix})
message(STATUS "The installed console passed its self-test")
