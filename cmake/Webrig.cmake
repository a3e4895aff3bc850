# Build conventions shared by every target of the project.

add_library(webrig_build_options INTERFACE)
target_include_directories(webrig_build_options INTERFACE
    ${PROJECT_SOURCE_DIR}/src ${PROJECT_SOURCE_DIR}/include)
if(CMAKE_CXX_COMPILER_ID MATCHES "GNU|Clang")
    target_compile_options(webrig_build_options INTERFACE
        -Wall -Wextra -Wpedantic -Wshadow -Wnon-virtual-dtor -Wconversion -Wno-sign-conversion
        $<$<BOOL:${WEBRIG_WERROR}>:-Werror>)
endif()
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # g++ 12 at -O3 reports overlapping copies inside libstdc++'s own string code that cannot
    # happen (GCC bug 105329); clang builds keep the check.
    target_compile_options(webrig_build_options INTERFACE -Wno-restrict)
endif()
if(WEBRIG_SANITIZE)
    target_compile_options(webrig_build_options INTERFACE
        -fsanitize=${WEBRIG_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    target_link_options(webrig_build_options INTERFACE -fsanitize=${WEBRIG_SANITIZE})
endif()
if(WEBRIG_BUILD_FUZZ)
    # Coverage feedback for libFuzzer in every library the fuzz targets reach.
    target_compile_options(webrig_build_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

# webrig_library(<name> <folder under src/> [SUBFOLDERS <names>...] [DEPS <targets>...]
#                [EXCLUDE <files>...])
# A static library made of every .cpp in the folder and the named sub-folders (no others) but
# the excluded ones.
function(webrig_library name folder)
    cmake_parse_arguments(ARG "" "" "SUBFOLDERS;DEPS;EXCLUDE" ${ARGN})
    set(sources "")
    set(headers "")
    foreach(part IN ITEMS "" ${ARG_SUBFOLDERS})
        file(GLOB part_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/${part}/*.cpp)
        file(GLOB part_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/${folder}/${part}/*.h)
        list(APPEND sources ${part_sources})
        list(APPEND headers ${part_headers})
    endforeach()
    foreach(excluded IN LISTS ARG_EXCLUDE)
        list(REMOVE_ITEM sources ${PROJECT_SOURCE_DIR}/src/${folder}/${excluded})
    endforeach()
    if(sources)
        add_library(${name} STATIC ${sources} ${headers})
        target_link_libraries(${name} PUBLIC webrig_build_options ${ARG_DEPS})
    else()
        add_library(${name} INTERFACE ${headers})
        target_link_libraries(${name} INTERFACE webrig_build_options ${ARG_DEPS})
    endif()
endfunction()
