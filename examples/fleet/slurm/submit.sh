#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# submit.sh PAIRS RESULTS DB [OPTION...]: hands all pairs PAIRS/NAME.zanx and PAIRS/NAME.mon to Slurm as a job array, and a last
# job that adds their results to the history DB. The options are those of sbatch for the array: --partition, --time.
#
# All machines must have the same files: PAIRS, RESULTS, DB and this folder. Prints the numbers of both jobs.
set -euo pipefail

if [ $# -lt 3 ]; then
    echo "usage: ${0##*/} PAIRS RESULTS DB [OPTION...]" >&2
    exit 2
fi
here=$(dirname "$(readlink -f "$0")")
mkdir -p "$2"
pairs=$(readlink -f "$1") results=$(readlink -f "$2") database=$(readlink -f "$3")
list=$(mktemp "$results/pairs-XXXXXX.list")
find "$pairs" -name '*.zanx' | LC_ALL=C sort >"$list"
count=$(wc -l <"$list")
if [ "$count" -eq 0 ]; then
    echo "${0##*/}: there is no pair below '$1'" >&2
    exit 2
fi
# --requeue: a task whose machine fails runs again on another one.
array=$(sbatch --parsable --requeue --array="1-$count" --job-name=zanl-pairs --output="$results/%A_%a.log" "${@:4}" \
    "$here/pair_task.sh" "$here/.." "$list" "$results")
# Also if some have failed: what has results is added.
last=$(sbatch --parsable --requeue --dependency="afterany:$array" --job-name=zanl-history --output="$results/%j.log" \
    "$here/history_job.sh" "$here/.." "$results" "$database")
echo "$array $last"
