# Makes (ACTION=create) or removes (ACTION=remove) the Wine prefix PREFIX that the Windows tests
# of one run share. WINE is wine64; the environment gives WINEPREFIX, WINEDEBUG and
# WINEDLLOVERRIDES (no Mono or Gecko prompt: console programs need neither).
cmake_minimum_required(VERSION 3.25)
get_filename_component(wine_dir ${WINE} DIRECTORY)
find_program(wineserver NAMES wineserver64 wineserver PATHS ${wine_dir} /usr/lib/wine NO_DEFAULT_PATH)
find_program(wineserver NAMES wineserver64 wineserver)
if(NOT wineserver)
    message(FATAL_ERROR "wineserver not found next to ${WINE}")
endif()

# A server left from an interrupted run would keep the old prefix's registry in memory.
if(EXISTS ${PREFIX})
    execute_process(COMMAND ${wineserver} -k ERROR_QUIET OUTPUT_QUIET TIMEOUT 60)
    execute_process(COMMAND ${wineserver} -w ERROR_QUIET OUTPUT_QUIET TIMEOUT 60)
    file(REMOVE_RECURSE ${PREFIX})
endif()
if(ACTION STREQUAL "remove")
    return()
endif()

file(MAKE_DIRECTORY ${PREFIX})
execute_process(COMMAND ${WINE} wineboot --init
    RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output TIMEOUT 240)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "wineboot failed (${result}):\n${output}")
endif()
# Wine 8 starts a second service manager beside the one wineboot left running, and the two
# answer the service calls in turn, each with its own services. So the boot's server is ended,
# and a fresh one is kept up for the whole run: the first test program starts the one service
# manager, and each later program finds Windows running instead of booting it again.
execute_process(COMMAND ${wineserver} -k ERROR_QUIET OUTPUT_QUIET TIMEOUT 60)
execute_process(COMMAND ${wineserver} -w ERROR_QUIET OUTPUT_QUIET TIMEOUT 60)
execute_process(COMMAND ${wineserver} -p ERROR_QUIET OUTPUT_QUIET TIMEOUT 60)
# Start Windows (its service manager among others) now, with output to nowhere: what it starts
# outlives the command and would keep a pipe to ctest open.
execute_process(COMMAND ${WINE} reg query "HKLM\\System\\CurrentControlSet\\Services\\Eventlog"
    OUTPUT_FILE /dev/null ERROR_FILE /dev/null RESULT_VARIABLE result TIMEOUT 240)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "Windows does not start in the new Wine prefix (${result})")
endif()
if(NOT EXISTS ${PREFIX}/system.reg)
    message(FATAL_ERROR "wineboot made no registry in ${PREFIX}")
endif()
message(STATUS "Wine prefix ready: ${PREFIX}")
