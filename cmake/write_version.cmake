# SPDX-License-Identifier: Apache-2.0
# cmake -DSOURCE_DIR=... -DVERSION=... -DOUTPUT=... -P write_version.cmake
#
# The commit is taken from git when SOURCE_DIR is the top of a work tree, else from commit.txt, which
# `git archive` fills in, else it is all zeros: a plain copy of the sources builds too.
set(commit "")
execute_process(COMMAND git -C ${SOURCE_DIR} rev-parse --show-prefix HEAD
                OUTPUT_VARIABLE answer RESULT_VARIABLE status ERROR_QUIET)
# The prefix is empty at the top of a work tree, so an enclosing project's commit is never taken for ours.
if(status EQUAL 0 AND answer MATCHES "^\n([0-9a-f]+)\n$")
    set(commit ${CMAKE_MATCH_1})
endif()
if(NOT commit MATCHES "^[0-9a-f]+$")
    file(READ ${CMAKE_CURRENT_LIST_DIR}/commit.txt commit)
    string(STRIP "${commit}" commit)
endif()
string(LENGTH "${commit}" length)
if(NOT commit MATCHES "^[0-9a-f]+$" OR NOT length EQUAL 40)
    string(REPEAT "0" 40 commit)
endif()

set(text "#include \"tly_constants.h\"\n\nconst std::string tly_version = \"${VERSION}.${commit}\";\n")
if(EXISTS ${OUTPUT})
    file(READ ${OUTPUT} old)
endif()
if(NOT "${old}" STREQUAL "${text}")
    file(WRITE ${OUTPUT} "${text}")
endif()
