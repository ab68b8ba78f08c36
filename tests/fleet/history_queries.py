# SPDX-License-Identifier: Apache-2.0
"""The queries of docs/fleet.md, asked a history made by hand."""

import json
import re
import sqlite3
import subprocess
import zlib

from fleet_pairs import TOP


def queries():
    """The texts of the queries, by their titles."""
    page = (TOP / "docs" / "fleet.md").read_text(encoding="utf-8")
    return dict(re.findall(r"^\*\*(.+?)\*\*.*?\n\n((?:    .*\n)+)", page, re.MULTILINE))


def add_run(program, folder, date, build, board, times, lost, memory):
    """A run with the times of kernels, the lost time of the block load of the kernel aggregate, and a memory's use."""
    kernels = [{"name": name, "kernel_time_ns": time} for name, time in times.items()]
    kernels[0]["blocks"] = [{"name": "load", "kind": "global", "lost_ns": lost}]
    summary = {
        "schema": "zanl-profile/summary", "schema_version": 1, "time_unit_ns": 1, "zanx_version": f"4.2.0 Build {build}",
        "board": board, "kernels": kernels, "memories": [{"name": "DDR", "peak_mb_per_s": 1000, "memory_max_mb_per_s": memory}],
    }
    (folder / "s.json").write_text(json.dumps(summary) + "\n", encoding="utf-8")
    subprocess.run([program, "-q", "history", "add", "runs.db", "s.json", "--date", date], cwd=folder, check=True)


def make_history(program, folder):
    """Four runs of two kernels on two boards."""
    add_run(program, folder, "2026-11-15", 116, "a", {"aggregate": 100, "blur": 7}, 90, 500)
    add_run(program, folder, "2026-11-16", 116, "b", {"aggregate": 110, "blur": 9}, 20, 250)
    add_run(program, folder, "2026-11-22T23:00:00", 117, "b", {"aggregate": 130, "blur": 6}, 30, 750)
    add_run(program, folder, "2026-11-22T08:00:00", 118, "a", {"aggregate": 102}, 10, 100)


# The rows of the queries, asked the history above.
EXPECTED = {
    # The run of the 15th is of the week before.
    "The worst blocks of a week": [("aggregate", "load", 30, 3)],
    "A kernel over time": [("2026-11-15", 100, 100, 1), ("2026-11-16", 110, 110, 1), ("2026-11-22", 102, 130, 2)],
    # (110 + 130) / 2 and (100 + 102) / 2
    "Boards that differ": [("b", 120, 2), ("a", 101, 2)],
    "Memories against their limits": [("DDR", 75, 4)],
    # (100 + 110) / 2 and 130; (7 + 9) / 2 and 6
    "Two builds compared": [("aggregate", 105, 130), ("blur", 8, 6)],
}


def test_queries(program, folder):
    folder.mkdir()
    make_history(program, folder)
    connection = sqlite3.connect(folder / "runs.db")
    found = {title: connection.execute(query).fetchall() for title, query in queries().items()}
    assert found == EXPECTED, found
    packed, length = connection.execute("SELECT packed, length FROM summary WHERE run = 1").fetchone()
    text = zlib.decompress(packed)
    assert len(text) == length and json.loads(text)["board"] == "a", text
