#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""A history of many runs: adding them, its size, trends, and the queries of docs/fleet.md.

The runs are saved summaries of 250 metrics each, made up and not kept. Prints runs a second, bytes a run, and seconds of each
question: the median over the rounds, on the clock and of the processor, which is the same on a busy machine.
"""

import argparse
import json
import pathlib
import random
import re
import resource
import sqlite3
import statistics
import subprocess
import tempfile
import time

TOP = pathlib.Path(__file__).resolve().parent.parent
BLOCK_METRICS = {"stall_percent": 100, "valid_percent": 100, "idle_percent": 100, "lost_ns": 1e6, "bandwidth_mb_per_s": 2e4,
                 "bandwidth_max_mb_per_s": 3e4, "moved_bytes": 1e9, "efficiency_percent": 100}
KERNEL_METRICS = {"kernel_time_ns": 5e6, "kernel_total_ns": 5e7, "kernel_p95_ns": 6e6, "busy_percent": 100, "alone_percent": 100}
MEMORY_METRICS = {"peak_mb_per_s": 0, "memory_mean_mb_per_s": 2e4, "memory_max_mb_per_s": 3e4, "memory_full_percent": 100}
# 5 · 5 + 27 · 8 + 2 · 4 + 1 = 250
KERNELS = ("aggregate", "blur", "filter", "reader", "writer")
NUM_BLOCKS, NUM_MEMORIES = 27, 2
RUNS_A_DAY = 40
LAST_DAY = 1795305600  # 2026-11-22


def values(dice, metrics):
    """Within 5% of what is usual, with the five digits of a summary."""
    return {name: float(f"{usual * dice.uniform(0.45, 0.5):.5g}") for name, usual in metrics.items()}


def block(dice, number):
    place = {"file": "device/kernels.cl", "line": 10 + number, "column": 5}
    sentence = {"rule": "port-unknown", "tone": "note", "text": "Waits for DDR; the report doesn't say how busy its port is"}
    return {"name": f"load_{number}", "kind": "global", "direction": "read", "memory": "DDR", "sources": [[place]],
            "samples": 4000, "sentence": sentence, **values(dice, BLOCK_METRICS)}


def summary(dice, build, board):
    kernels = [{"name": name, "device": 0, "invocations": 20, "samples": 4000, **values(dice, KERNEL_METRICS),
                "blocks": [block(dice, j) for j in range(NUM_BLOCKS) if j % len(KERNELS) == i]} for i, name in enumerate(KERNELS)]
    memories = [{"name": f"DDR{i}", **values(dice, MEMORY_METRICS), "peak_mb_per_s": 38400} for i in range(NUM_MEMORIES)]
    return {"schema": "zanl-profile/summary", "schema_version": 1, "time_unit_ns": 1, "input": "run.json",
            "zanx_version": f"4.2.0 Build {build}", "board": board, "clock_text": "240.0", "clock_mhz": 240,
            "span_ns": dice.uniform(5e7, 6e7), "kernels": kernels, "memories": memories}


def make_runs(folder, count):
    """The names of summaries with their dates: 40 a day on 4 boards, and a build a day."""
    dice = random.Random(1)
    names = []
    for number in range(count):
        path = folder / f"run{number:06}.json"
        path.write_text(json.dumps(summary(dice, 100 + number // RUNS_A_DAY, f"vela_{number % 4}"), separators=(",", ":")) + "\n")
        names.append(path)
    return names


def processor_seconds():
    """Of this process and those that it waited for."""
    return sum(sum(resource.getrusage(who)[:2]) for who in (resource.RUSAGE_SELF, resource.RUSAGE_CHILDREN))


def seconds_of(work, rounds=1):
    """On the clock, and of the processor."""
    taken = []
    for _ in range(rounds):
        begin = time.monotonic(), processor_seconds()
        work()
        taken.append((time.monotonic() - begin[0], processor_seconds() - begin[1]))
    return [statistics.median(seconds) for seconds in zip(*taken)]


def add_days(toolbox, database, names):
    """Adds the runs of each day under its date, as a farm does each night."""
    days = [names[first:first + RUNS_A_DAY] for first in range(0, len(names), RUNS_A_DAY)]
    for number, day in enumerate(days):
        date = time.strftime("%Y-%m-%d", time.gmtime(LAST_DAY - (len(days) - 1 - number) * 86400))
        listed = "".join(f"{name}\n" for name in day)
        subprocess.run([toolbox, "--quiet", "history", "add", database, "--from-list", "-", "--date", date],
                       input=listed, text=True, check=True)


def queries():
    """The title and the text of each query of the page."""
    page = (TOP / "docs" / "fleet.md").read_text(encoding="utf-8")
    return re.findall(r"^\*\*(.+?)\*\*.*?\n\n((?:    .*\n)+)", page, re.MULTILINE)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--runs", type=int, default=10000)
    parser.add_argument("--rounds", type=int, default=5)
    arguments = parser.parse_args()
    toolbox = arguments.build.resolve() / "tools" / "zanl_profile" / "zanl-profile"
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        names = make_runs(folder, arguments.runs)
        database = folder / "runs.db"
        size = statistics.mean(path.stat().st_size for path in names)
        clock, processor = seconds_of(lambda: add_days(toolbox, database, names))
        print(f"{len(names)} runs of {size:.0f} bytes: {len(names) / clock:.0f} a second, {len(names) / processor:.0f} a second of the "
              f"processor, {database.stat().st_size / len(names):.0f} bytes a run\n\n| question | seconds | processor |\n|---|---|---|")

        def show(title, taken):
            print(f"| {title} | {taken[0]:.3f} | {taken[1]:.3f} |")

        def ask(*words):
            return seconds_of(lambda: subprocess.run([toolbox, "history", *words], stdout=subprocess.DEVNULL, check=True),
                              arguments.rounds)

        trend = ["trend", database, "--kernel", "aggregate", "--metric", "kernel_time"]
        show("`history trend`, all runs", ask(*trend))
        show("`history trend --last 30`", ask(*trend, "--last", "30"))
        show("`history list`", ask("list", database))
        show("`history show last`", ask("show", database, "last"))
        connection = sqlite3.connect(database)
        for title, query in queries():
            show(title, seconds_of(lambda query=query: connection.execute(query).fetchall(), arguments.rounds))


if __name__ == "__main__":
    main()
