#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs zanl-profile-tly and the floor program in turn on the shapes of bench/workload.h, and compares them.

usage: compare_with_floor.py [--build FOLDER] [--runs N] [--growth | --instructions] [SHAPE...]

Without an option: medians of wall time, their ratio, that of processor time, the most memory held, that memory beyond
8 MiB for each value of the report, and the share of time by stage. With --growth: each size at 1, 2, 4 and 8 times, and
what doubling costs in processor time and memory.
With --instructions: what the program executes for each value on shortened shapes, counted by valgrind, which are the
same numbers on a busy machine. A value is a line of the report that holds one: an element of an array, or a key with a
text.
"""

import argparse
import pathlib
import statistics
import tempfile

from whole_runs import HOT_LOOPS, SHAPES, TOP, Workload, bytes_a_value, count_values, instructions_of, share_of

# What grows, on which shape, the numbers that grow, and others. Kernels have 250 lines each. The sizes are such that the work of a run outweighs its start.
GROWTH = [
    ("lines", "L", {"lines": 10_000}, {}),
    ("instances", "L", {"insts_per_kernel": 60}, {"lines": 5_000}),
    ("kernels", "W", {"kernels": 20, "lines": 5_000}, {}),
    ("invocations", "M", {"lines": 60_000}, {}),
]
# Lines of the shapes when instructions are counted.
COUNTED_LINES = {"S": 5_000, "L": 1_000, "M": 15_000, "W": 1_000, "A": 200, "X": 500}


def run_floor(work, values, size):
    output = work.folder / "floor.out"
    return work.run(work.bench / "floor", work.files[1], output, str(values), str(size), written=output)


def compare(build, shape, runs):
    with tempfile.TemporaryDirectory() as folder:
        work = Workload(build, folder, shape)
        work.run_program()
        values, size = count_values(work.report), work.report.stat().st_size
        run_floor(work, values, size)
        pairs = [(work.run_program(), run_floor(work, values, size)) for _ in range(runs)]
        ours, floor = (statistics.median(pair[i].wall for pair in pairs) for i in (0, 1))
        processor = statistics.median(pair[0].processor for pair in pairs) / statistics.median(pair[1].processor for pair in pairs)
        memory = max(pair[0].memory for pair in pairs)
        stages = work.stages()
    print(
        f"| {shape} | {values:,} | {ours * 1e3:.1f} | {floor * 1e3:.1f} | {ours / floor:.2f} "
        f"| {processor:.2f} | {memory / 2**20:.1f} | {bytes_a_value(memory, values):.1f} | {share_of(stages)} |",
        flush=True,
    )


def count_instructions(build, shape):
    with tempfile.TemporaryDirectory() as folder:
        work = Workload(build, folder, shape, {"lines": COUNTED_LINES[shape]})
        total, sums = instructions_of(work.instructions())
        values = count_values(work.report)
    parts = " | ".join(f"{number / values:.1f}" for number in sums.values())
    size = f"{COUNTED_LINES[shape]:,} | {values:,}"
    print(f"| {shape} | {size} | {total / 1e6:.1f} | {total / values:.1f} | {parts} |", flush=True)


def grow(build, what, shape, growing, fixed, runs):
    rows = []
    for factor in (1, 2, 4, 8):
        with tempfile.TemporaryDirectory() as folder:
            numbers = {name: number * factor for name, number in growing.items()}
            work = Workload(build, folder, shape, numbers | fixed)
            measured = [work.run_program() for _ in range(runs)]
        rows.append((statistics.median(row.processor for row in measured), max(row.memory for row in measured)))
    for factor, row, last in zip((1, 2, 4, 8), rows, [None, *rows]):
        costs = ("", "") if last is None else (f"{row[0] / last[0]:.2f}", f"{row[1] / last[1]:.2f}")
        print(f"| {what} | {factor} | {row[0] * 1e3:.0f} | {costs[0]} | {row[1] / 2**20:.1f} | {costs[1]} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=TOP / "build" / "release")
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--growth", action="store_true")
    parser.add_argument("--instructions", action="store_true")
    parser.add_argument("shapes", nargs="*", metavar="SHAPE")
    options = parser.parse_args()
    if options.growth:
        print("| twice the | size | ms | times the last | MiB | times the last |\n|---|---|---|---|---|---|")
        for row in GROWTH:
            grow(options.build, *row, options.runs)
        return
    if options.instructions:
        print(f"| shape | lines | values | millions | a value | {' | '.join(name for name, _ in HOT_LOOPS)} |")
        print("|---" * (5 + len(HOT_LOOPS)) + "|")
        for shape in options.shapes or SHAPES:
            count_instructions(options.build, shape)
        return
    print("| shape | values | ms | floor ms | ratio | of processor time | MiB | bytes a value | stages |")
    print("|---|---|---|---|---|---|---|---|---|")
    for shape in options.shapes or SHAPES:
        compare(options.build, shape, options.runs)


if __name__ == "__main__":
    main()
