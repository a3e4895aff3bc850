# Runs the Windows program PROGRAM under WINE (wine64) and fails with its exit code. Its output
# goes through the file LOG: Windows' own background processes (the service manager, RPC), started
# by the program, live on with the Wine server and would hold a pipe to ctest open for as long.
cmake_minimum_required(VERSION 3.25)
execute_process(COMMAND ${WINE} ${PROGRAM}
    OUTPUT_FILE ${LOG} ERROR_FILE ${LOG}.stderr RESULT_VARIABLE result)
execute_process(COMMAND ${CMAKE_COMMAND} -E cat ${LOG})
file(READ ${LOG}.stderr errors)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM} failed (${result}):\n${errors}")
endif()
