#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Compares the CSV exports of all samples, which DuckDB reads as one run of files, with their exports to SQLite.

usage: run_tests.py PROGRAM      PROGRAM is a built zanl-profile

Prints how many tests passed, one for each table. A line "not run: ..." names what can't be tested here. The exit status is 1
if a test failed. The packages are those of package.json: npm ci.
"""

import json
import math
import pathlib
import re
import shutil
import sqlite3
import subprocess
import sys
import tempfile

FOLDER = pathlib.Path(__file__).resolve().parent
TOP = FOLDER.parent.parent
TABLES = ("run", "kernel", "invocation", "block", "memory", "port", "transfer", "sample", "port_sample")
# Sums differ in their last digit by the order of what is added, even where what is lost is added again.
TOLERANCE = 1e-14


def why_not():
    """What is missing, or nothing."""
    if not shutil.which("node"):
        return "node is missing"
    if not (FOLDER / "node_modules/@duckdb/node-api").is_dir():
        return "the packages of tests/exports are missing: npm ci"
    code = 'import("@duckdb/node-api").then(() => 0, (fault) => { console.error(fault.message); process.exit(1); })'
    tried = subprocess.run(["node", "-e", code], cwd=FOLDER, capture_output=True, text=True, check=False)
    return "" if tried.returncode == 0 else "DuckDB can't be loaded: " + "; ".join(tried.stderr.splitlines()[:1])


def read_expression():
    """How the page says that files of several runs are read as one table."""
    page = (TOP / "docs" / "export.md").read_text(encoding="utf-8")
    return re.search(r"^    .*(read_csv\('\*/sample\.csv'.*?\}\))", page, re.MULTILINE)[1]


def export_samples(program, folder):
    """Each sample as CSV files in a folder of its own, and as a database; the number of samples."""
    reports = sorted((TOP / "samples").glob("*/expected_report.json"))
    for number, report in enumerate(reports, 1):
        for form, name in (("csv", folder / f"{number}"), ("sqlite", folder / f"{number}.db")):
            subprocess.run([program, "-q", "export", report, "--to", form, "-o", name, "--run-id", str(number)], check=True)
    return len(reports)


def number_columns(folder, table):
    """The columns of numbers, as SQLite has them."""
    columns = sqlite3.connect(folder / "1.db").execute("SELECT name, type FROM pragma_table_info(?)", (table,))
    return [name for name, kind in columns if kind in ("INTEGER", "REAL") and name != "run_id"]


def sqlite_rows(folder, count, table, columns):
    """For each run with rows: its number, how many they are, and of each column the number of values and their sum."""
    rows = []
    for number in range(1, count + 1):
        values = sqlite3.connect(folder / f"{number}.db").execute(f"SELECT {', '.join(columns)} FROM {table}").fetchall()
        if values:
            found = [[value for value in column if value is not None] for column in zip(*values)]
            rows.append([number, len(values), *(part for column in found for part in (len(column), math.fsum(column)))])
    return rows


def duckdb_query(table, columns):
    """The same, of all runs in one query. A column without any value isn't known to be one of numbers."""
    source = read_expression().replace("sample", table)
    if "sample" not in table:
        source = re.sub(r", types = \{.*?\}", "", source)
    parts = ", ".join(f"count({name}), coalesce(fsum(CAST({name} AS DOUBLE)), 0)" for name in columns)
    return f"SELECT run_id, count(*), {parts} FROM {source} GROUP BY run_id ORDER BY run_id"


def is_same(ours, theirs):
    return len(ours) == len(theirs) and all(
        len(one) == len(other) and all(math.isclose(a, b, rel_tol=TOLERANCE) for a, b in zip(one, other))
        for one, other in zip(ours, theirs)
    )


def compare(program, folder):
    """The tables that differ."""
    count = export_samples(program, folder)
    columns = {table: number_columns(folder, table) for table in TABLES}
    expected = {table: sqlite_rows(folder, count, table, columns[table]) for table in TABLES}
    assert len(expected["sample"]) == count >= 10 and expected["port_sample"], "each sample has samples, and one has ports"
    queries = [duckdb_query(table, columns[table]) for table in TABLES]
    # The plain form, and the types that DuckDB finds by itself.
    queries.append("SELECT run_id, count(*), count(value), fsum(value) FROM read_csv('*/sample.csv') GROUP BY run_id ORDER BY run_id")
    asked = subprocess.run(["node", FOLDER / "sums.mjs", folder], input=json.dumps(queries), capture_output=True, text=True, check=False)
    if asked.returncode != 0:
        sys.exit(asked.stderr)
    found = dict(zip((*TABLES, "sample, plain"), json.loads(asked.stdout)))
    at = 2 + 2 * columns["sample"].index("value")
    expected["sample, plain"] = [[*row[:2], *row[at : at + 2]] for row in expected["sample"]]
    return [f"{table}: {found[table]}, not {expected[table]}" for table in found if not is_same(found[table], expected[table])], len(found)


def main():
    if len(sys.argv) != 2:
        print(__doc__, file=sys.stderr)
        return 2
    reason = why_not()
    if reason:
        print(f"0 tests passed\nnot run: exports read by DuckDB ({reason})")
        return 0
    with tempfile.TemporaryDirectory() as folder:
        faults, num_tests = compare(str(pathlib.Path(sys.argv[1]).resolve()), pathlib.Path(folder))
    for fault in faults:
        print(fault, file=sys.stderr)
    print(f"{num_tests - len(faults)} tests passed")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
