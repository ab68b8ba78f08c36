# SPDX-License-Identifier: Apache-2.0
# What `cmake --install` puts where: both programs, their manual pages and completions, pages and samples for users, and of
# the libraries the one that others are meant to use, pkg_editor.
include(CMakePackageConfigHelpers)

# Pages and samples lie to each other as in the sources, so that their links lead somewhere.
set(pages_folder ${CMAKE_INSTALL_DATAROOTDIR}/doc/zanl-profile)
set(package_folder ${CMAKE_INSTALL_LIBDIR}/cmake/zanl_profile)
set(generated ${PROJECT_BINARY_DIR}/generated)

install(TARGETS zanl-profile-tly RUNTIME)
if(ZAN_BUILD_TOOLS)
    install(TARGETS zanl-profile RUNTIME)
endif()

install(FILES README.md CHANGELOG.md LICENSE SECURITY.md DESTINATION ${pages_folder})
install(DIRECTORY docs DESTINATION ${pages_folder} FILES_MATCHING PATTERN "*.md" PATTERN "*.png"
        PATTERN "man" EXCLUDE PATTERN "pipeline" EXCLUDE)
install(DIRECTORY samples DESTINATION ${pages_folder} PATTERN "describe_report" EXCLUDE)
install(PROGRAMS samples/describe_report DESTINATION ${pages_folder}/samples)

# ---- Manual pages, from docs/man. Without scdoc all but them is installed.

# The pages have a date: that of the commit, so that it doesn't depend on the day of the build.
execute_process(COMMAND git -C ${PROJECT_SOURCE_DIR} log -1 --format=%ct
                OUTPUT_VARIABLE ZAN_EPOCH OUTPUT_STRIP_TRAILING_WHITESPACE ERROR_QUIET)
if(NOT ZAN_EPOCH MATCHES "^[0-9]+$")
    file(TIMESTAMP cmake/commit.txt ZAN_EPOCH "%s" UTC)
endif()

find_program(SCDOC scdoc)
file(GLOB man_sources CONFIGURE_DEPENDS docs/man/*.scd)
if(SCDOC)
    set(man_pages "")
    foreach(source IN LISTS man_sources)
        get_filename_component(page ${source} NAME_WLE)
        add_custom_command(OUTPUT ${generated}/man/${page}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}/man
            COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${ZAN_EPOCH} ${SCDOC} < ${source} > ${generated}/man/${page}
            DEPENDS ${source}
            COMMENT "Making the manual page ${page}"
            VERBATIM)
        list(APPEND man_pages ${generated}/man/${page})
    endforeach()
    add_custom_target(zan_man_pages ALL DEPENDS ${man_pages})
    install(FILES ${man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
else()
    install(CODE "message(NOTICE \"scdoc is not installed, so there are no manual pages: apt-get install scdoc\")")
endif()

# ---- Completions, which the toolbox prints itself

if(ZAN_BUILD_TOOLS)
    set(completions "")
    # zan_completion(<shell> <file> <folder>): the script for the shell, as a file of this name.
    function(zan_completion shell file folder)
        set(script ${generated}/completions/${shell}/${file})
        add_custom_command(OUTPUT ${script}
            COMMAND ${CMAKE_COMMAND} -E make_directory ${generated}/completions/${shell}
            COMMAND zanl-profile completion ${shell} > ${script}
            DEPENDS zanl-profile
            COMMENT "Printing completions for ${shell}"
            VERBATIM)
        list(APPEND completions ${script})
        set(completions ${completions} PARENT_SCOPE)
        install(FILES ${script} DESTINATION ${CMAKE_INSTALL_DATAROOTDIR}/${folder})
    endfunction()
    zan_completion(bash zanl-profile bash-completion/completions)
    # Debian's own packages have theirs in vendor-completions; this folder is in the path of each zsh.
    zan_completion(zsh _zanl-profile zsh/site-functions)
    zan_completion(fish zanl-profile.fish fish/vendor_completions.d)
    add_custom_target(zan_completions ALL DEPENDS ${completions})
endif()

# ---- The library for others

install(TARGETS pkg_editor EXPORT zanl_profile ARCHIVE)
install(FILES lib/pkg_editor/src/pkg_editor.h TYPE INCLUDE)
install(EXPORT zanl_profile NAMESPACE zanl_profile:: DESTINATION ${package_folder} FILE zanl_profile-targets.cmake)
configure_package_config_file(cmake/zanl_profile-config.cmake.in ${generated}/zanl_profile-config.cmake
                              INSTALL_DESTINATION ${package_folder})
write_basic_package_version_file(${generated}/zanl_profile-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${generated}/zanl_profile-config.cmake ${generated}/zanl_profile-config-version.cmake
        DESTINATION ${package_folder})
# The file finds the library from where it lies itself, so that an installed tree may be moved.
file(RELATIVE_PATH prefix_of_pc /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
string(REGEX REPLACE "/$" "" prefix_of_pc ${prefix_of_pc})
configure_file(cmake/pkg_editor.pc.in ${generated}/pkg_editor.pc @ONLY)
install(FILES ${generated}/pkg_editor.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
