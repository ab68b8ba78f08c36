#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# run_parallel.sh PAIRS RESULTS DB [OPTION...]: works on all pairs PAIRS/NAME.zanx and PAIRS/NAME.mon by GNU parallel, and
# adds what has results to the history DB. The options are those of parallel: -j8, --sshloginfile machines.
#
# Run again, it works on new pairs and on those that failed. RESULTS/pairs.list has the pairs in the order in which they were
# found, and RESULTS/joblog how each ended: parallel knows jobs by their number alone, so the list only grows. Exit status: 1
# if a pair failed.
set -euo pipefail

if [ $# -lt 3 ]; then
    echo "usage: ${0##*/} PAIRS RESULTS DB [OPTION...]" >&2
    exit 2
fi
pairs=$1 results=$2 database=$3
here=$(dirname "$(readlink -f "$0")")
list=$results/pairs.list

mkdir -p "$results"
touch "$list"
found=$(find "$pairs" -name '*.zanx' | LC_ALL=C sort)
new=$(grep -vxFf "$list" <<<"$found" || true)
[ -z "$new" ] || printf '%s\n' "$new" >>"$list"

status=0
parallel --quote --joblog "$results/joblog" --resume-failed "${@:4}" -a "$list" \
    "$here/process_pair.sh" {} {.}.mon "$results"/{/.} || status=1
"$here/add_results.sh" "$results" "$database"
exit $status
