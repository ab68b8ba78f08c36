#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs zanl-profile-tly beside a copy: `cat` of the capture to nothing, and `cat` of the finished report to a file.

No run can take less than that. The two run in turn. Milliseconds are the best of the runs on the clock, both with the
start of their processes. The ratio is that of the best, then that of the best processor times; with --comparisons it
is the median of so many, and the least and the greatest stand with it. Faults are the pages that a run touches first. A
value is a line of the report that holds one. With --instructions valgrind counts what a run executes, and what its hot
loops execute for each value; that takes 50 times as long as a run.
"""

import argparse
import pathlib
import statistics
import tempfile

from whole_runs import HOT_LOOPS, SHAPES, TOP, Workload, bytes_a_value, count_values, instructions_of, share_of

# So many that a run takes from 10 milliseconds to a second. The pipeline counts frames.
LINES = {"S": 5_000, "L": 20_000, "M": 60_000, "W": 1_000, "A": 5_000, "X": 2_000, "pipeline": 300}
HEAD = ("shape", "lines", "values", "ms", "copy ms", "ratio", "of processor time", "MiB", "bytes a value", "faults", "stages")


def copy(work):
    """Wall and processor time of the copy."""
    output = work.folder / "copy.out"
    parts = [work.run("/bin/cat", work.files[1], output="/dev/null"),
             work.run("/bin/cat", work.report, written=output, output=output)]
    return sum(part.wall for part in parts), sum(part.processor for part in parts)


def best(runs):
    """The least of each: milliseconds of a run, those of the copy, and the ratios of wall and of processor time."""
    ours, ours_processor = min(ours.wall for ours, _ in runs), min(ours.processor for ours, _ in runs)
    wall, processor = (min(copied[i] for _, copied in runs) for i in (0, 1))
    return ours * 1e3, wall * 1e3, ours / wall, ours_processor / processor


def spread(numbers):
    """The median, and the least and the greatest if there are several."""
    middle = f"{statistics.median(numbers):.2f}"
    return middle if len(numbers) == 1 else f"{middle} ({min(numbers):.2f} to {max(numbers):.2f})"


def row_of(values, comparisons, memory, faults, stages):
    """The cells of a shape but for its name and size."""
    ours, copied = (f"{statistics.median(row[i] for row in comparisons):.1f}" for i in (0, 1))
    ratios = [spread([row[i] for row in comparisons]) for i in (2, 3)]
    held = [f"{memory / 2**20:.1f}", f"{bytes_a_value(memory, values):.1f}"]
    return [f"{values:,}", ours, copied, *ratios, *held, f"{faults:,}", share_of(stages)]


def instructions_cells(text, values):
    total, sums = instructions_of(text)
    return [f"{total / 1e6:.1f}", *(f"{number / values:.1f}" for number in sums.values())]


def compare(options, shape):
    size = "frames" if shape == "pipeline" else "lines"
    with tempfile.TemporaryDirectory() as folder:
        work = Workload(options.build, folder, shape, {size: LINES[shape]})
        first = work.run_program()
        values = count_values(work.report)
        copy(work)
        comparisons = [best([(work.run_program(), copy(work)) for _ in range(options.runs)])
                       for _ in range(options.comparisons)]
        cells = row_of(values, comparisons, first.memory, first.faults, work.stages())
        if options.instructions:
            cells += instructions_cells(work.instructions(), values)
    print(f"| {shape} | {LINES[shape]:,} | {' | '.join(cells)} |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default=TOP / "build" / "release", help="folder of the programs")
    parser.add_argument("--runs", type=int, default=5, help="of which the best counts")
    parser.add_argument("--comparisons", type=int, default=1, help="of which the median counts")
    parser.add_argument("--instructions", action="store_true", help="count them, too")
    parser.add_argument("shapes", nargs="*", metavar="SHAPE", help=f"of {', '.join(LINES)}; all if none is named")
    options = parser.parse_args()
    head = HEAD + (("millions", *(name for name, _ in HOT_LOOPS)) if options.instructions else ())
    print(f"| {' | '.join(head)} |\n{'|---' * len(head)}|")
    for shape in options.shapes or [*SHAPES, "pipeline"]:
        compare(options, shape)


if __name__ == "__main__":
    main()
