#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""`zanl-profile summary` and `diff` against `jq -c` that sums the stalls of all blocks, on reports of the workloads.

Each row is a shape: the size of its report, and megabytes of report a second of processor time, medians over the rounds,
and the peak memory. `diff` reads the report twice. With --big N the report of shape L with about N GB comes through a
pipe, from `cat`; jq is left out, because it holds the whole document.
"""

import argparse
import pathlib
import shlex
import statistics
import subprocess
import tempfile

SELECTION = ('[.kernels.nodes[].children[] | select(.type == "moduleinst") '
             '| {name, stalls: (.module_inst_details.stall_samples // [] | if . == "" then [] else . end '
             '| map(tonumber) | add)}]')
SHAPES = {"S": [], "L": ["lines=20000"], "M": ["lines=15000"], "A": []}
LINES_A_GB = 126_000  # of L


def measured(measure, command, folder):
    """Seconds of the processor, and the peak memory in MiB."""
    run = subprocess.run([measure, "/bin/sh", "-c", command], cwd=folder, text=True, stdout=subprocess.PIPE, check=True)
    _, processor, kibibytes = run.stdout.splitlines()[-1].split()
    return float(processor), float(kibibytes) / 1024


def make_report(build, shape, numbers, folder):
    subprocess.run([build / "bench" / "workloads", shape, folder, *numbers], check=True)
    subprocess.run([build / "zanl-profile-tly", "design.zanx", "profile.mon", "report.json"], cwd=folder, check=True)
    return (folder / "report.json").stat().st_size / 1e6


def row(name, size, commands, setting):
    measure, rounds, folder = setting
    cells = []
    for command, times_read in commands:
        results = [measured(measure, command + " >/dev/null", folder) for _ in range(rounds)]
        seconds = statistics.median(result[0] for result in results)
        memory = statistics.median(result[1] for result in results)
        cells += [f"{times_read * size / seconds:.0f}", f"{memory:.0f}"]
    print(f"| {name} | {size:.0f} | " + " | ".join(cells) + " |", flush=True)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--big", type=float, help="GB of the report that comes through a pipe")
    parser.add_argument("shapes", nargs="*", default=list(SHAPES))
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    toolbox = shlex.quote(str(build / "tools" / "zanl_profile" / "zanl-profile"))
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        setting = (build / "bench" / "measure", arguments.rounds, folder)
        summary, diff = f"{toolbox} summary report.json", f"{toolbox} diff report.json report.json"
        if arguments.big:
            size = make_report(build, "L", [f"lines={int(arguments.big * LINES_A_GB)}"], folder)
            print("| shape | MB | summary MB/s | MiB |\n|---|---|---|---|")
            row("L, from a pipe", size, [(f"cat report.json | {toolbox} summary -", 1)], setting)
            return
        print("| shape | MB | summary MB/s | MiB | diff MB/s | MiB | jq MB/s | MiB |\n|---|---|---|---|---|---|---|---|")
        for shape in arguments.shapes:
            size = make_report(build, shape, SHAPES[shape], folder)
            row(shape, size, [(summary, 1), (diff, 2), (f"jq -c '{SELECTION}' report.json", 1)], setting)


if __name__ == "__main__":
    main()
