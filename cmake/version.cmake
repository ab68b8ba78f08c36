# SPDX-License-Identifier: Apache-2.0
# The build's version, a text of four parts: the project's version and the commit's 40 hexadecimal digits.
# It is composed at build time, so that a new commit needs no new configuration; the file is rewritten only
# when the text changes.
set(ZAN_VERSION_SCRIPT ${CMAKE_CURRENT_LIST_DIR}/write_version.cmake)

function(zan_add_version target)
    set(output ${PROJECT_BINARY_DIR}/generated/tly_version.cpp)
    add_custom_target(zan_version
        COMMAND ${CMAKE_COMMAND} -DSOURCE_DIR=${PROJECT_SOURCE_DIR} -DVERSION=${PROJECT_VERSION}
                -DOUTPUT=${output} -P ${ZAN_VERSION_SCRIPT}
        BYPRODUCTS ${output}
        COMMENT "Composing the version text"
        VERBATIM)
    target_sources(${target} PRIVATE ${output})
    add_dependencies(${target} zan_version)
endfunction()
