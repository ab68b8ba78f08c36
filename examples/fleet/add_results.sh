#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# add_results.sh RESULTS DB [OPTION...]: adds all summaries below RESULTS to the history DB, with the options of
# `zanl-profile history add`, such as --label rack=7. Runs that are in it already stay as they are.
set -euo pipefail

if [ $# -lt 2 ]; then
    echo "usage: ${0##*/} RESULTS DB [OPTION...]" >&2
    exit 2
fi
find "$1" -name '*.summary.json' | LC_ALL=C sort |
    "${ZANL_PROFILE:-zanl-profile}" --quiet history add "$2" --from-list - "${@:3}"
