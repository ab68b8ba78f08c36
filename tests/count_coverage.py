#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Counts what the tests of a coverage build ran through, and lists what they didn't.

usage: count_coverage.py BUILD [--lines PERCENT] [--branches PERCENT]

Reads the counts of BUILD/counts, which the programs of the build have written, and writes BUILD/left.txt: each condition of
the sources that was never true or never false, and each line that no test runs. Exit status 1 if less than that many
percent of the lines or of the outcomes of conditions were met.

The counts are clang's: of conditions as they stand in the sources. Those of g++ also have the compiler's own branches, for
which of several texts it has to free; they are a third of all.
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys

TOP = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("lib", "src", "zan_profiler", "tly", "profile", "tools")


def programs_of(build):
    files = [build / "zanl-profile-tly", *build.glob("tools/*/*"), *build.glob("tests/*_test"), *build.glob("tests/*/*_test")]
    return [file for file in sorted(files) if file.is_file() and os.access(file, os.X_OK)]


def export(build):
    """The counts of all files, as llvm-cov has them."""
    merged = build / "counts" / "all.profdata"
    # It says of each function that ran more often than a number can count that it did.
    subprocess.run(["llvm-profdata", "merge", "-sparse", *build.glob("counts/*.profraw"), "-o", merged], check=True,
                   stderr=subprocess.DEVNULL)
    first, *others = programs_of(build)
    objects = [word for program in others for word in ("-object", program)]
    command = ["llvm-cov", "export", "-format=text", f"-instr-profile={merged}", first, *objects]
    # What it says on standard error is that test programs have different functions of one name.
    text = subprocess.run(command, check=True, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL).stdout
    return json.loads(text)["data"][0]["files"]


def name_of(file, top=TOP):
    """The file's name below `top`, if it is of the sources that count."""
    name = os.path.relpath(file["filename"], top)
    return name if name.split("/")[0] in FOLDERS else None


def missed_conditions(file):
    """Line, column and outcome of each condition that was met with the other outcome alone. One that was never met is among
    the lines that never ran, or known to the compiler."""
    missed = set()
    for line, column, _, _, times_true, times_false, *_ in file["branches"]:
        if times_true == 0 and times_false != 0:
            missed.add((line, column, "never true"))
        if times_false == 0 and times_true != 0:
            missed.add((line, column, "never false"))
    return missed


def missed_lines(file):
    """Where a stretch begins that was never run. A segment is a line, a column, a count, and whether there is one."""
    return {(line, column, "never run") for line, column, count, has_count, begins, *_ in file["segments"]
            if has_count and begins and count == 0}


def percent(part, whole):
    return 100.0 * part / whole if whole else 100.0


def totals(files):
    """Percent of the lines, and of the outcomes of conditions."""
    return tuple(percent(sum(file["summary"][kind]["covered"] for file in files), sum(file["summary"][kind]["count"] for file in files))
                 for kind in ("lines", "branches"))


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("build", type=pathlib.Path)
    parser.add_argument("--lines", type=float, default=0.0)
    parser.add_argument("--branches", type=float, default=0.0)
    arguments = parser.parse_args()
    files = {name: file for file in export(arguments.build) if (name := name_of(file))}
    left = [f"{name}:{line}:{column}: {what}\n" for name, file in sorted(files.items())
            for line, column, what in sorted(missed_conditions(file) | missed_lines(file))]
    (arguments.build / "left.txt").write_text("".join(left))
    lines, branches = totals(files.values())
    print(f"{lines:.1f}% of the lines, {branches:.1f}% of the outcomes of conditions; what is left: {arguments.build}/left.txt")
    if lines < arguments.lines or branches < arguments.branches:
        sys.exit(f"at least {arguments.lines:g}% and {arguments.branches:g}% are asked for")


if __name__ == "__main__":
    main()
