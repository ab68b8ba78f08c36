# SPDX-License-Identifier: Apache-2.0
# Joins the page of `history trend` to one template: the viewer's style with a little of its own. The page has no script, so dark
# colours are those of the system.
#
#   cmake -DOUTPUT=trend_template.html -P viewer/join_trend.cmake
#
# The digest of the style stands in the template as in that of join.cmake.

cmake_minimum_required(VERSION 3.23)

set(folder "${CMAKE_CURRENT_LIST_DIR}")
file(READ "${folder}/style.css" style)
file(READ "${folder}/trend.css" own_style)
string(APPEND style "${own_style}")
# Paper is white.
string(REGEX REPLACE ":root\\.dark {([^}]*)}" "@media screen and (prefers-color-scheme: dark) { :root {\\1} }" style "${style}")
string(REGEX REPLACE "/\\*[^*]*\\*/" "" style "${style}")
string(REGEX REPLACE "\n[ \n]+" "\n" style "\n${style}")

string(SHA256 style_digest "${style}")
set(policy "default-src 'none'; style-src 'sha256-@sha256:${style_digest}@'; img-src data:; base-uri 'none'; form-action 'none'")

file(READ "${folder}/trend.html" page)
string(REGEX REPLACE "\n<!--[^\n]*-->\n" "\n" page "${page}")
string(REPLACE "@policy@" "${policy}" page "${page}")
string(REPLACE "@style@" "${style}" page "${page}")
file(WRITE "${OUTPUT}" "${page}")
