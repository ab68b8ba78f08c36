#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Puts what commands print into the pages that show it.

usage: make_outputs.py [--check] --toolbox PROGRAM --program PROGRAM --workloads PROGRAM

A page shows a command and its output in an indented block after a line `<!-- output -->`. The block begins with the
command, after a dollar sign. Commands run in a folder with each sample as NAME.zanx, NAME.mon and NAME.json, and with two
runs of a pipeline of seven kernels, which `workloads` makes: base and new, each with design.zanx, profile.mon, report.json
and summary.json. With --check nothing is written, and the exit status is 1 if a page shows something else than what its
commands print.
"""

import argparse
import difflib
import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import textwrap

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGES = [TOP / "README.md", *sorted((TOP / "docs").glob("*.md"))]
# A block ends at the first line that is neither indented nor empty before an indented one.
BLOCK = re.compile(r"(<!-- output -->\n\n)((?:    .*\n|\n(?=    ))+)")


def run(command, folder, environment):
    return subprocess.run(["bash", "-c", command], cwd=folder, env=environment, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False).stdout


def make_samples(folder, environment):
    for sample in sorted((TOP / "samples").glob("*/profile.mon")):
        name = sample.parent.name
        shutil.copy(sample, folder / f"{name}.mon")
        run(f"zanl-profile package create {name}.zanx --from {sample.parent} && "
            f"zanl-profile-tly {name}.zanx {name}.mon {name}.json", folder, environment)
        if not (folder / f"{name}.json").exists():
            sys.exit(f"make_outputs.py: there is no report of the sample '{name}'")


def make_runs(folder, environment):
    """Two runs; in the new one the accesses of a kernel are aligned."""
    for name, shape in (("base", "pipeline"), ("new", "pipeline_aligned")):
        run(f"workloads {shape} {name} && cd {name} && zanl-profile-tly design.zanx profile.mon report.json && "
            "zanl-profile summary report.json --json > summary.json", folder, environment)
        if not (folder / name / "summary.json").stat().st_size:
            sys.exit(f"make_outputs.py: the run '{name}' can't be made")


def renewed(text, folder, environment):
    """The page with the outputs of its commands."""
    def block(match):
        command = match[2].split("\n", 1)[0].strip().removeprefix("$ ")
        output = f"$ {command}\n{run(command, folder, environment)}"
        return match[1] + textwrap.indent(output, "    ")
    return BLOCK.sub(block, text)


def link_programs(arguments, folder):
    """A folder with the programs under the names that users type."""
    folder.mkdir()
    for name, program in (("zanl-profile", arguments.toolbox), ("zanl-profile-tly", arguments.program),
                          ("workloads", arguments.workloads)):
        (folder / name).symlink_to(pathlib.Path(program).resolve())


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", 1)[0])
    parser.add_argument("--check", action="store_true")
    for program in ("--toolbox", "--program", "--workloads"):
        parser.add_argument(program, required=True)
    arguments = parser.parse_args()
    stale = 0
    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        link_programs(arguments, folder / "programs")
        environment = {"PATH": f"{folder / 'programs'}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}
        (folder / "examples").symlink_to(TOP / "examples")
        make_samples(folder, environment)
        make_runs(folder, environment)
        for page in PAGES:
            text = page.read_text()
            new_text = renewed(text, folder, environment)
            if new_text == text:
                continue
            stale += 1
            sys.stdout.writelines(difflib.unified_diff(text.splitlines(True), new_text.splitlines(True), str(page), "now"))
            if not arguments.check:
                page.write_text(new_text)
    return 1 if stale and arguments.check else 0


if __name__ == "__main__":
    sys.exit(main())
