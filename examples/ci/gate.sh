#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# gate.sh BASELINE INPUT...: fails if a run is worse than the baseline. For a step of CI.
#
# BASELINE is a saved summary of a run that was good enough:
#     zanl-profile summary design.zanx profile.mon --json > baseline.json
# INPUT is a report, a saved summary, or a package and its capture.
#
# Prints the comparison as Markdown. Exit status: 0 if all rules hold, 1 if one is broken, 2 if nothing could be
# compared: there is no baseline, say, or a rule names what the runs don't have. ZANL_PROFILE is the program; by
# default it is looked for in PATH.
set -euo pipefail

# What must not happen, and by how much it may: an example, to be adapted.
rules=(
    --fail-on 'kernel_time:+3%' # of any kernel, beyond the noise of its invocations
    --fail-on 'stall:+5'        # points, of any block
    --fail-on 'memory_full:+10' # points, of any memory
)

if [ $# -lt 2 ]; then
    echo "usage: ${0##*/} BASELINE INPUT..." >&2
    exit 2
fi
if [ ! -f "$1" ]; then
    echo "${0##*/}: there is no baseline '$1'; make one from a run that is good enough:" >&2
    echo "    zanl-profile summary ${*:2} --json > $1" >&2
    exit 2
fi
exec "${ZANL_PROFILE:-zanl-profile}" diff "$@" --format markdown "${rules[@]}"
