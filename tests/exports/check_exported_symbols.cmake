# Fails unless the dynamic symbol table of LIBRARY defines exactly the eight exports.
execute_process(COMMAND nm -D --defined-only ${LIBRARY}
    OUTPUT_VARIABLE listing RESULT_VARIABLE result)
if(NOT result EQUAL 0)
    message(FATAL_ERROR "nm failed on ${LIBRARY}")
endif()
string(REGEX MATCHALL "[^\n]+" lines "${listing}")
set(names)
foreach(line IN LISTS lines)
    string(REGEX REPLACE "^[0-9a-fA-F]* *[A-Za-z] " "" name "${line}")
    list(APPEND names ${name})
endforeach()
list(SORT names)
set(expected QMIISAppPoolUninstall QMIISCheckForContinue QMIISComponentInstall QMIISInitialize
    QMIISUninitialize QMIISVRootUninstall QMIISWebServiceExtensionUninstall QMIISWebSiteUninstall)
if(NOT names STREQUAL expected)
    message(FATAL_ERROR "libwebrig exports:\n  ${names}\nexpected exactly:\n  ${expected}")
endif()
message(STATUS "libwebrig exports exactly the eight entry points")
