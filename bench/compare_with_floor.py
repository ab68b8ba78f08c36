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
import re
import statistics
import subprocess
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent
SHAPES = ["S", "L", "M", "W", "A", "X"]
PROCESS_BYTES = 8 << 20
# What grows, on which shape, the numbers that grow, and others. Kernels have 250 lines each. The sizes are such that the work of a run outweighs its start.
GROWTH = [
    ("lines", "L", {"lines": 10_000}, {}),
    ("instances", "L", {"insts_per_kernel": 60}, {"lines": 5_000}),
    ("kernels", "W", {"kernels": 20, "lines": 5_000}, {}),
    ("invocations", "M", {"lines": 60_000}, {}),
]
# Lines of the shapes when instructions are counted.
COUNTED_LINES = {"S": 5_000, "L": 1_000, "M": 15_000, "W": 1_000, "A": 200, "X": 500}
# The hot loops, by the names of their functions. The first row that fits takes a function.
HOT_LOOPS = [
    ("fields to numbers", r"PlainFields::|MonLine::split|read_field"),
    ("numbers to lists", r"decode_column|append_lines|TlyModuleInst::updateCounters|Sample(Buffer|List)<.*append"),
    ("metrics", r"write_details|write_port_metrics|megabytes_per_second|average_channel_depth"),
    ("numbers to text", r"write_number|write_numbers|SampleList<.*::read"),
    ("description", r"tinyxml2|zan::|import_profiler|meaning_of_tag"),
]


def run(measure, *command):
    """Wall time and processor time in seconds, and the most memory held, in bytes."""
    done = subprocess.run([measure, *command], text=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    if done.returncode != 0:
        raise SystemExit(f"{' '.join(map(str, command))} ended with {done.returncode}")
    wall, processor, kib = done.stdout.split()
    return float(wall), float(processor), int(kib) * 1024


def count_values(report):
    """Lines of the report that hold a value: they end in a quote, or a quote and a comma."""
    values, tail = 0, b""
    with open(report, "rb") as file:
        while block := file.read(1 << 24):
            block = tail + block
            values += block.count(b'",\n') + block.count(b'"\n')
            tail = block[-2:]
            values -= tail.count(b'"\n') + tail.count(b'",\n')
    return values + (tail == b'"\n')


class Workload:
    def __init__(self, build, folder, shape, numbers=()):
        self.bench = build / "bench"
        self.program = build / "zanl-profile-tly"
        self.folder = pathlib.Path(folder)
        arguments = [f"{name}={number}" for name, number in dict(numbers).items()]
        subprocess.run([self.bench / "workloads", shape, folder, *arguments], check=True)
        self.report = self.folder / "report.json"
        self.files = [self.folder / "design.zanx", self.folder / "profile.mon", self.report]

    # Both write a new file: to write over one would wait for the disk.
    def run_program(self):
        self.report.unlink(missing_ok=True)
        return run(self.bench / "measure", self.program, *self.files)

    def run_floor(self, values, size):
        output = self.folder / "floor.out"
        output.unlink(missing_ok=True)
        return run(self.bench / "measure", self.bench / "floor", self.files[1], output, str(values), str(size))

    def stages(self):
        text = subprocess.run([self.bench / "stages", *self.files], check=True, text=True, capture_output=True).stdout
        return {name: float(ms) for name, ms in re.findall(r"^(\S+) ([\d.]+)$", text, re.MULTILINE)}


def compare(build, shape, runs):
    with tempfile.TemporaryDirectory() as folder:
        work = Workload(build, folder, shape)
        work.run_program()
        values, size = count_values(work.report), work.report.stat().st_size
        work.run_floor(values, size)
        pairs = [(work.run_program(), work.run_floor(values, size)) for _ in range(runs)]
        ours, floor = (statistics.median(pair[i][0] for pair in pairs) for i in (0, 1))
        processor = statistics.median(pair[0][1] for pair in pairs) / statistics.median(pair[1][1] for pair in pairs)
        memory = max(pair[0][2] for pair in pairs)
        stages = work.stages()
    share = ", ".join(f"{name} {ms / sum(stages.values()):.0%}" for name, ms in stages.items())
    beyond = max(0, memory - PROCESS_BYTES) / values
    print(
        f"| {shape} | {values:,} | {ours * 1e3:.1f} | {floor * 1e3:.1f} | {ours / floor:.2f} "
        f"| {processor:.2f} | {memory / 2**20:.1f} | {beyond:.1f} | {share} |",
        flush=True,
    )


def count_instructions(build, shape):
    with tempfile.TemporaryDirectory() as folder:
        work = Workload(build, folder, shape, {"lines": COUNTED_LINES[shape]})
        counts = f"{folder}/counts"
        valgrind = ["valgrind", "--tool=callgrind", f"--callgrind-out-file={counts}", work.program, *work.files]
        subprocess.run(valgrind, check=True, capture_output=True)
        values = count_values(work.report)
        annotate = ["callgrind_annotate", "--threshold=100", counts]
        text = subprocess.run(annotate, check=True, text=True, capture_output=True).stdout
    total, sums = 0, dict.fromkeys([name for name, _ in HOT_LOOPS], 0)
    for count, function in re.findall(r"^ *([\d,]+) \([ \d.]+%\)  (.*)$", text, re.MULTILINE):
        number = int(count.replace(",", ""))
        if function == "PROGRAM TOTALS":
            total = number
            continue
        loop = next((name for name, pattern in HOT_LOOPS if re.search(pattern, function)), None)
        if loop:
            sums[loop] += number
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
        rows.append((statistics.median(row[1] for row in measured), max(row[2] for row in measured)))
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
