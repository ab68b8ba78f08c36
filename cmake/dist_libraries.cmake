# SPDX-License-Identifier: Apache-2.0
# The libraries of programs that are handed out: what is named otherwise in each release of a distribution is built in. Those
# that stay the same are given to the linker by name, so that the same objects make a program that needs them and one that
# has them in itself.
#
# A library that is found later is one of these two, too: linked by its name, or from its archive (.a).

# fmt without its library.
find_path(FMT_INCLUDE_DIR fmt/format.h REQUIRED)
add_library(fmt::fmt INTERFACE IMPORTED)
target_include_directories(fmt::fmt INTERFACE ${FMT_INCLUDE_DIR})
target_compile_definitions(fmt::fmt INTERFACE FMT_HEADER_ONLY=1)

# Debian has no archive of it; packaging/fetch_tinyxml2 fetches the sources of its package.
set(ZAN_TINYXML2_SOURCES ${PROJECT_SOURCE_DIR}/build/tinyxml2 CACHE PATH "Folder with tinyxml2.cpp and tinyxml2.h")
if(NOT EXISTS ${ZAN_TINYXML2_SOURCES}/tinyxml2.cpp)
    message(FATAL_ERROR "there is no tinyxml2.cpp in ${ZAN_TINYXML2_SOURCES}: packaging/fetch_tinyxml2 fetches it")
endif()
add_library(tinyxml2 STATIC ${ZAN_TINYXML2_SOURCES}/tinyxml2.cpp)
target_include_directories(tinyxml2 SYSTEM PUBLIC ${ZAN_TINYXML2_SOURCES})
set_target_properties(tinyxml2 PROPERTIES POSITION_INDEPENDENT_CODE ON)
add_library(tinyxml2::tinyxml2 ALIAS tinyxml2)

find_library(UTF8PROC_LIBRARY libutf8proc.a REQUIRED)
find_library(XXHASH_LIBRARY libxxhash.a REQUIRED)

# zan_library_by_name(<target> <library>...): the target is these libraries, as the linker finds them. Modules of CMake leave
# a target alone that is there already.
function(zan_library_by_name target)
    add_library(${target} INTERFACE IMPORTED GLOBAL)
    target_link_libraries(${target} INTERFACE ${ARGN})
endfunction()
zan_library_by_name(ZLIB::ZLIB z)
zan_library_by_name(SQLite::SQLite3 sqlite3 m)
set(LIBELF_LIBRARY elf CACHE STRING "")
