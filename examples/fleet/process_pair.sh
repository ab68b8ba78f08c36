#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# process_pair.sh PACKAGE CAPTURE RESULT: checks a package and its capture, and writes RESULT.report.json and
# RESULT.summary.json.
#
# Each file appears whole or not at all. The summary is written last and removed first: where there is one, the report
# beside it is of the same run. Findings go to standard output. Exit status: 0 if both files are there, else that of the
# command that failed. ZANL_PROFILE is the program; by default it is looked for in PATH.
set -euo pipefail

if [ $# -ne 3 ]; then
    echo "usage: ${0##*/} PACKAGE CAPTURE RESULT" >&2
    exit 2
fi
package=$1 capture=$2 report=$3.report.json summary=$3.summary.json
program=${ZANL_PROFILE:-zanl-profile}

mkdir -p "$(dirname "$summary")"
rm -f "$summary"
"$program" --quiet check "$package" "$capture"
"$program" --quiet run "$package" "$capture" "$report"
unfinished=$(mktemp "$summary.unfinished-XXXXXX")
trap 'rm -f "$unfinished"' EXIT
"$program" --quiet summary "$report" --json >"$unfinished"
# A history takes the time of the file for the date of the run. Make, too, must not find it older than the package.
touch -r "$capture" "$unfinished"
[ ! "$package" -nt "$unfinished" ] || touch -r "$package" "$unfinished"
chmod a+r "$unfinished"
mv "$unfinished" "$summary"
