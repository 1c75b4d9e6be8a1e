# Fails when any C++ source of the project strays from .clang-format.
file(GLOB_RECURSE sources
    ${SOURCE_DIR}/src/*.cpp ${SOURCE_DIR}/src/*.h
    ${SOURCE_DIR}/app/*.cpp ${SOURCE_DIR}/app/*.h
    ${SOURCE_DIR}/service/*.cpp ${SOURCE_DIR}/service/*.h
    ${SOURCE_DIR}/tests/*.cpp ${SOURCE_DIR}/tests/*.h
    ${SOURCE_DIR}/bench/*.cpp ${SOURCE_DIR}/bench/*.h)
execute_process(COMMAND ${CLANG_FORMAT} --dry-run -Werror ${sources}
    RESULT_VARIABLE result ERROR_VARIABLE output)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "Sources stray from .clang-format; run clang-format -i on them:\n${output}")
endif()
list(LENGTH sources count)
message(STATUS "${count} sources follow .clang-format")
