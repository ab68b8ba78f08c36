# SPDX-License-Identifier: Apache-2.0
# The files that are handed out: an archive of the sources, one of programs that need nothing else, and a Debian package.
# The target `archives` makes the first two, and cpack the third one.
find_program(PYTHON3 python3 REQUIRED)
if(NOT SCDOC)
    message(FATAL_ERROR "manual pages are part of what is handed out, and scdoc is not installed: apt-get install scdoc")
endif()
set(dist_folder ${PROJECT_BINARY_DIR}/files)

# To compile the sources of one of these takes a gigabyte of memory, so they come one after the other.
set_property(GLOBAL APPEND PROPERTY JOB_POOLS large=1)
foreach(target zan_profile zanl_profile)
    set_property(TARGET ${target} PROPERTY JOB_POOL_COMPILE large)
endforeach()

# zan_portable(<program>): the program once more, with all libraries in itself. It still runs at an address that differs from
# run to run.
function(zan_portable program)
    get_target_property(sources ${program} SOURCES)
    get_target_property(folder ${program} SOURCE_DIR)
    get_target_property(libraries ${program} LINK_LIBRARIES)
    list(TRANSFORM sources PREPEND ${folder}/)
    add_executable(${program}-portable ${sources})
    target_link_libraries(${program}-portable PRIVATE ${libraries})
    target_compile_options(${program}-portable PRIVATE -fPIE)
    target_link_options(${program}-portable PRIVATE -static-pie LINKER:-z,relro LINKER:-z,now LINKER:-z,noexecstack)
    set_target_properties(${program}-portable PROPERTIES
        OUTPUT_NAME ${program}
        RUNTIME_OUTPUT_DIRECTORY ${PROJECT_BINARY_DIR}/portable)
endfunction()
zan_portable(zanl-profile-tly)
zan_portable(zanl-profile)

add_custom_target(archives
    COMMAND ${PYTHON3} ${PROJECT_SOURCE_DIR}/packaging/make_archives.py --build ${PROJECT_BINARY_DIR} --output ${dist_folder}
            --version ${PROJECT_VERSION} --epoch ${ZAN_EPOCH} --machine ${CMAKE_SYSTEM_PROCESSOR}
    DEPENDS zanl-profile-portable zanl-profile-tly-portable zanl-profile zanl-profile-tly pkg_editor zan_completions zan_man_pages
    COMMENT "Making the archives"
    VERBATIM)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME zanl-profile)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_CONTACT "The zanl-profile maintainers <maintainers@zanl-profile.invalid>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "reports of profiled FPGA designs")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_OUTPUT_FILE_PREFIX ${dist_folder})
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "libelf-dev, zlib1g-dev")
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
"zanl-profile-tly turns the hardware counters that were sampled while an FPGA
design ran into a report. The toolbox zanl-profile checks the files of a run,
summarizes and compares runs, and makes packages and changes them.
.
The library pkg_editor, for programs that make or read packages, needs the
packages libelf-dev and zlib1g-dev.")
set(CPACK_PRE_BUILD_SCRIPTS ${PROJECT_SOURCE_DIR}/packaging/stage_debian.cmake)
set(CPACK_PROJECT_CONFIG_FILE ${generated}/cpack_settings.cmake)
# Times in the package are that of the commit.
file(CONFIGURE OUTPUT ${generated}/cpack_settings.cmake CONTENT
"set(ENV{SOURCE_DATE_EPOCH} @ZAN_EPOCH@)
set(ZAN_PACKAGING_FOLDER @PROJECT_SOURCE_DIR@/packaging)
" @ONLY)
include(CPack)
