#!/usr/bin/env zsh
# SPDX-License-Identifier: Apache-2.0
# Prints what zsh offers at the end of a line, one word on a line.
#
# usage: capture.zsh SCRIPT LINE      SCRIPT completes zanl-profile
#
# Completion works on the line editor alone. So a second shell has one, on a terminal of its own, where each word that a
# completion adds is printed.
zmodload zsh/zpty
zpty second zsh -f -i
zpty -w second "source ${(q)1:h}/capture_setup.zsh; source ${(q)1}; print -r -- zz-ready-zz" 2>/dev/null
zpty -r second output '*zz-ready-zz*zz-ready-zz*'
zpty -w -n second "$2"$'\t'
zpty -r second output '*zz-begin-zz*zz-end-zz*'
output=${${output##*zz-begin-zz}%%zz-end-zz*}
print -r -- ${output//$'\r'/}
zpty -d second
