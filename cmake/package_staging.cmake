# Run by CPack on the staged tree before it builds the package. The package puts its libraries where
# the loader looks, so the search path that lets a build or a copy in any folder find them beside it
# has no place in the packaged programs.
file(GLOB_RECURSE staged LIST_DIRECTORIES false "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/*")
foreach(file IN LISTS staged)
    if(IS_SYMLINK "${file}")
        continue()
    endif()
    file(READ "${file}" magic LIMIT 4 HEX)
    if(magic STREQUAL "7f454c46")
        file(RPATH_REMOVE FILE "${file}")
    endif()
endforeach()

# The user unit names the service by the build's own prefix; in the package it lives in /usr.
file(GLOB_RECURSE units "${CPACK_TEMPORARY_INSTALL_DIRECTORY}/twbd.service")
foreach(unit IN LISTS units)
    file(READ "${unit}" text)
    string(REGEX REPLACE "ExecStart=[^ \n]*/twbd" "ExecStart=${CPACK_PACKAGING_INSTALL_PREFIX}/bin/twbd" text "${text}")
    file(WRITE "${unit}" "${text}")
endforeach()
