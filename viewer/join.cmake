# SPDX-License-Identifier: Apache-2.0
# Joins the page's modules, style and frame to one template, without any tool but CMake.
#
#   cmake -DOUTPUT=view_template.html -P viewer/join.cmake
#
# Import lines are dropped, and so are the word `export`, comments and indentation, which would be a third of each page.
# So the modules become one script in the order of this list: a module stands after those whose values it needs while it
# is read. The digests of script and style, which the page's
# policy names, stand in the template as @sha256:HEX@; the writer of a page puts them in as base64. The other names between
# two @ are places for the data of a run.

cmake_minimum_required(VERSION 3.23)

set(modules
    format dom series pyramid columns pixels
    metrics facts rules model stretch_facts pairs
    range address theme
    table ruler chart lanes bars samples
    view_overview view_timeline view_block view_source view_memory view_compare
    search keys page)

set(folder "${CMAKE_CURRENT_LIST_DIR}")
set(script "\n")
foreach(module IN LISTS modules)
  file(READ "${folder}/${module}.js" text)
  string(REGEX REPLACE "(^|\n)import [^\n]*" "\\1" text "${text}")
  string(REGEX REPLACE "(^|\n)export " "\\1" text "${text}")
  string(APPEND script "${text}")
endforeach()
# Comments on one line, lines of longer ones, and lines that are comments.
string(REGEX REPLACE "/\\*\\*[^*\n]*\\*/ ?" "" script "${script}")
string(REGEX REPLACE "\n */\\*\\*\n" "\n" script "${script}")
string(REGEX REPLACE "\n *\\*[^\n]*" "" script "${script}")
string(REGEX REPLACE "\n *//[^\n]*" "" script "${script}")
string(REGEX REPLACE "\n[ \n]+" "\n" script "${script}")
# Blanks around operators and inside of braces; a test looks for texts that this would change.
string(REGEX REPLACE " (=>|===|!==|&&|[|][|]|[?][?]|>=|<=|=|[+*/?:<>-]) " "\\1" script "${script}")
string(REGEX REPLACE "(if|for|while) [(]" "\\1(" script "${script}")
string(REPLACE "{ " "{" script "${script}")
string(REPLACE " }" "}" script "${script}")
string(REPLACE ") {" "){" script "${script}")
string(REGEX REPLACE ", ([a-z_.0-9]+)[)]" ",\\1)" script "${script}")
# Blanks before members, lists and calls, and after what ends with a bracket or a condition.
string(REGEX REPLACE "([{,] ?[a-z_]+): " "\\1:" script "${script}")
string(REGEX REPLACE ", ([[{(]|[a-z_0-9]+[[(.])" ",\\1" script "${script}")
string(REGEX REPLACE "([])]), " "\\1," script "${script}")
string(REGEX REPLACE "[)] ([a-z]+[ (.;])" ")\\1" script "${script}")
string(REGEX REPLACE "(const|return) ([[{])" "\\1\\2" script "${script}")
# The end of a statement before that of a block; no loop is empty. Lines end after statements, not where a block begins.
string(REPLACE ";\n}" "\n}" script "${script}")
string(REPLACE "{\n" "{" script "${script}")
file(READ "${folder}/style.css" style)
string(REGEX REPLACE " ?([{:;,]) " "\\1" style "${style}")
string(REPLACE " {\n" "{\n" style "${style}")
string(REPLACE "; }" "}" style "${style}")
string(REGEX REPLACE "/\\*[^*]*\\*/" "" style "${style}")
string(REGEX REPLACE "\n[ \n]+" "\n" style "\n${style}")
string(REPLACE "}\n" "}" style "${style}")

string(SHA256 script_digest "${script}")
string(SHA256 style_digest "${style}")
set(policy "default-src 'none'; script-src 'sha256-@sha256:${script_digest}@'; style-src 'sha256-@sha256:${style_digest}@'; ")
string(APPEND policy "img-src data:; base-uri 'none'; form-action 'none'")

file(READ "${folder}/page.html" page)
string(REGEX REPLACE "\n<!--[^\n]*-->\n" "\n" page "${page}")
string(REPLACE "@policy@" "${policy}" page "${page}")
string(REPLACE "@style@" "${style}" page "${page}")
string(REPLACE "@script@" "${script}" page "${page}")
file(WRITE "${OUTPUT}" "${page}")
