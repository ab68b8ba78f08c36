#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What `zanl-profile view` takes to make a page, and a browser to show it: samples, workloads, and runs of many values.

Each row is a run: its values, the size of its page and bytes a value; the time that the program took, megabytes of report
a second, and its peak memory; then, in headless Chromium with software drawing at 1440 x 900, medians over the rounds:
first paint, the page parsed, from the click on a block to its drawn charts, frames (median and 95th percentile of 60
steps of zooming and panning), and the heap of scripts. The row of the samples has the greatest of all of them.

Rows are named as the shapes of `workloads`; a number such as 10M is that many values of the pipeline, about.
"""

import argparse
import json
import pathlib
import re
import shutil
import statistics
import subprocess
import tempfile

TOP = pathlib.Path(__file__).resolve().parent.parent
TESTS = TOP / "tests" / "viewer"
ROWS = ["samples", "pipeline", "S", "W", "X", "A", "L", "M", "1M", "10M", "100M"]
VALUES_A_FRAME = 6_740  # of the pipeline
HEAD = ("run", "values", "page MB", "B/value", "made in s", "MB/s", "MiB", "first paint ms", "parsed ms", "chart ms",
        "frame ms", "heap MB")


def run(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, text=True, stdout=subprocess.PIPE, **options).stdout


def measured(measure, command):
    """Seconds on the clock, and the peak memory in MiB."""
    wall, _, kibibytes = run(measure, *command).splitlines()[-1].split()
    return float(wall), float(kibibytes) / 1024


def make_run(build, name, folder):
    """A package and a capture, and the report of both; its inputs as `view` takes them, and the report's megabytes."""
    frames = re.fullmatch(r"(\d+)M", name)
    shape = ["pipeline", folder, f"frames={int(frames[1]) * 1_000_000 // VALUES_A_FRAME}"] if frames else [name, folder]
    run(build / "bench" / "workloads", *shape)
    package, capture, report = folder / "design.zanx", folder / "profile.mon", folder / "report.json"
    run(build / "zanl-profile-tly", package, capture, report)
    return report, report.stat().st_size / 1e6


def values_of(page):
    """How many values a page has; its head says so."""
    with open(page, encoding="utf-8") as file:
        head = re.search(r'<script type="application/json" id="head">(.*?)</script>', file.read(64 << 20), re.DOTALL)[1]
    return int(json.loads(head)["run"]["values"])


def make_page(arguments, report, page):
    if arguments.reference:
        command = [shutil.which("node"), TESTS / "reference" / "make_page.mjs", report, "-o", page]
    else:
        command = [arguments.build / "tools" / "zanl_profile" / "zanl-profile", "view", report, "-o", page]
    return measured(arguments.build / "bench" / "measure", command)


def look_at(page, rounds):
    """Medians of what the browser took, by name."""
    return json.loads(run("node", "measure_page.mjs", page, rounds, cwd=TESTS))


def cells(name, values, page_bytes, making, seen):
    seconds, megabytes, memory = making
    share = f"{page_bytes / values:.2f}" if values >= 1_000_000 else ""
    frames = f"{seen['frame median']:.0f}, {seen['frame 95 %']:.0f}"
    times = [f"{seen[key]:.0f}" for key in ("first paint", "parsed", "chart")]
    return [name, f"{values:,}", f"{page_bytes / 1e6:.2f}", share, f"{seconds:.1f}", f"{megabytes / seconds:.0f}",
            f"{memory:.0f}", *times, frames, f"{seen['heap MB']:.0f}"]


def row_of_run(arguments, name):
    with tempfile.TemporaryDirectory(dir=arguments.folder) as folder:
        folder = pathlib.Path(folder)
        report, megabytes = make_run(arguments.build, name, folder)
        page = folder / "page.html"
        seconds, memory = make_page(arguments, report, page)
        report.unlink()
        making = (seconds, megabytes, memory)
        return cells(name, values_of(page), page.stat().st_size, making, look_at(page, arguments.rounds))


def row_of_samples(arguments):
    """Of ten small pages the greatest of each number."""
    rows = []
    with tempfile.TemporaryDirectory(dir=arguments.folder) as folder:
        for report in sorted((TOP / "samples").glob("*/expected_report.json")):
            page = pathlib.Path(folder) / f"{report.parent.name}.html"
            seconds, memory = make_page(arguments, report, page)
            rows.append((values_of(page), page.stat().st_size, seconds, report.stat().st_size / 1e6, memory, look_at(page, 1)))
    seen = {key: max(row[-1][key] for row in rows if row[-1][key] is not None) for key in rows[0][-1]}
    values, size, seconds, _, memory = (max(row[i] for row in rows) for i in range(5))
    # Their reports are too small for a rate.
    making = (seconds, statistics.median(row[3] for row in rows), memory)
    return cells("samples", values, size, making, seen)


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--build", type=pathlib.Path, default="build/release", help="folder of the programs")
    parser.add_argument("--rounds", type=int, default=3)
    parser.add_argument("--folder", type=pathlib.Path, help="where runs and pages are made for a while: 100M takes 5 GB")
    parser.add_argument("--reference", action="store_true", help="pages by the small writer of the tests, up to L")
    parser.add_argument("rows", nargs="*", default=ROWS)
    arguments = parser.parse_args()
    arguments.build = arguments.build.resolve()
    print("| " + " | ".join(HEAD) + " |\n" + "|---" * len(HEAD) + "|", flush=True)
    for name in arguments.rows:
        row = row_of_samples(arguments) if name == "samples" else row_of_run(arguments, name)
        print("| " + " | ".join(row) + " |", flush=True)


if __name__ == "__main__":
    main()
