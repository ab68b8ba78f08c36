#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# load_exports.sh DATE FOLDER...: loads CSV exports, each a folder of its own, into the tables of schema.sql. DATE is the day of
# the runs, YYYY-MM-DD: it says to which month their samples belong.
#
# psql finds the server by its own variables, such as PGHOST and PGDATABASE. Each run is loaded whole or not at all; runs that
# are there already stay as they are. A run that can't be loaded is reported and skipped, and the exit status is then 1.
set -euo pipefail

if [ $# -lt 2 ] || [[ ! $1 =~ ^[0-9]{4}-[0-9]{2}-[0-9]{2}$ ]]; then
    echo "usage: ${0##*/} YYYY-MM-DD FOLDER..." >&2
    exit 2
fi
here=$(dirname "$(readlink -f "$0")")
status=0
for folder in "${@:2}"; do
    psql --no-psqlrc --quiet -v date="$1" -v folder="$folder" -f "$here/load_export.sql" || {
        echo "${0##*/}: $folder was not loaded" >&2
        status=1
    }
done
exit $status
