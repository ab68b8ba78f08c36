# SPDX-License-Identifier: Apache-2.0
# A text file of the sources as a constant of a program, so that the program needs no file when it runs.
#
# As a script: cmake -DINPUT=... -DOUTPUT=... -DNAME=... -P embed_text.cmake writes the C++ source.
if(CMAKE_SCRIPT_MODE_FILE)
    file(READ ${INPUT} text)
    # All compilers that the project knows take longer texts than the standard wants them to.
    file(WRITE ${OUTPUT} "#include <string_view>\n\n#pragma GCC diagnostic ignored \"-Woverlength-strings\"\n\nnamespace zan::profile {\n\
extern const std::string_view ${NAME};\nconst std::string_view ${NAME} = R\"zan(${text})zan\";\n}\n")
    return()
endif()

set(ZAN_EMBED_SCRIPT ${CMAKE_CURRENT_LIST_FILE})

# zan_embed_text(<target> <file> <name>): std::string_view zan::profile::<name> is the content of the file, which may be
# one that the build makes.
function(zan_embed_text target file name)
    get_filename_component(input ${file} ABSOLUTE BASE_DIR ${CMAKE_CURRENT_SOURCE_DIR})
    set(output ${PROJECT_BINARY_DIR}/generated/${name}.cpp)
    add_custom_command(OUTPUT ${output}
        COMMAND ${CMAKE_COMMAND} -DINPUT=${input} -DOUTPUT=${output} -DNAME=${name} -P ${ZAN_EMBED_SCRIPT}
        DEPENDS ${input} ${ZAN_EMBED_SCRIPT}
        COMMENT "Embedding ${file}"
        VERBATIM)
    # Objects of its own: the text is compiled again by itself when it changes, and the target's sources don't wait for the
    # libraries that the target links, which a command that makes one of them does.
    add_library(${name} OBJECT ${output})
    set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)
    target_link_libraries(${name} PRIVATE zan_options)
    zan_harden(${name})
    target_sources(${target} PRIVATE $<TARGET_OBJECTS:${name}>)
endfunction()
