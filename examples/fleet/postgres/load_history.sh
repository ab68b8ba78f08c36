#!/usr/bin/env bash
# SPDX-License-Identifier: Apache-2.0
# load_history.sh DB [SINCE]: loads the history DB into the tables of schema.sql, or only its runs of the day SINCE,
# YYYY-MM-DD, and later ones. It takes sqlite3 and psql, which finds the server by its own variables, such as PGHOST.
#
# Several histories may be loaded, and each again: runs are known by their ids, and those that are there get the labels that
# they don't have. All is loaded or nothing.
set -euo pipefail

if [ $# -lt 1 ] || [ $# -gt 2 ] || [[ ! ${2-2026-01-01} =~ ^[0-9]{4}-[0-9]{2}-[0-9]{2}$ ]]; then
    echo "usage: ${0##*/} DB [YYYY-MM-DD]" >&2
    exit 2
fi
# sqlite3 would make a file that is missing.
[ -f "$1" ] || { echo "${0##*/}: $1: there is no such file" >&2; exit 2; }
database=$(readlink -f "$1") since=${2-}
here=$(dirname "$(readlink -f "$0")")
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT

# In one transaction, so that no run is half there. Texts are written by their bytes: psql takes a line "\." in one for the end.
(cd "$folder" && sqlite3 -batch -bail "$database") <<SQL
.timeout 30000
.mode csv
BEGIN;
.once run.csv
SELECT number, id, date, hex(input) FROM run WHERE date >= '$since' ORDER BY number;
.once label.csv
SELECT run, hex(name), hex(value) FROM label WHERE run IN (SELECT number FROM run WHERE date >= '$since');
.once series.csv
SELECT number, scope, hex(kernel), hex(name), metric FROM series;
.once value.csv
SELECT v.series, v.run, v.value FROM series s CROSS JOIN run r JOIN value v ON v.series = s.number AND v.run = r.number
WHERE r.date >= '$since';
COMMIT;
SQL
psql --no-psqlrc --quiet -v folder="$folder" -f "$here/load_history.sql"
