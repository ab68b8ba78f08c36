#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Applies the walks of CONTRIBUTING.md to a copy of the sources, builds the copy, and runs the tests that come with them.

usage: run_walks.py
       run_walks.py --renew NAME      writes NAME.patch anew, of what differs from the last commit

The copy, its build and its logs are in build/walks.

A walk is a file here, NAME.patch. The lines before its first "diff" say what it does and which tests come with it:

    gtest: PATTERN...      tests of walks_test; CMakeLists.txt has its sources
    script: COMMAND        a script of the copy with its arguments; TOOLBOX stands for the toolbox that was built
"""

import argparse
import os
import pathlib
import re
import subprocess
import sys

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
sys.path.insert(0, str(TOP / "tests"))
from source_copy import update_copy  # noqa: E402
WORK = TOP / "build" / "walks"
COPY, BUILD = WORK / "sources", WORK / "build"
# The slow model agrees with the program on these; all seeds are for the test of its own.
ENVIRONMENT = os.environ | {"ZAN_SEEDS": "0-40", "GIT_CEILING_DIRECTORIES": str(WORK)}


class Failed(Exception):
    """What went wrong, for people."""


class Walk:
    """A patch, the files that it changes, and the tests that come with it."""

    def __init__(self, path):
        self.path = path
        self.name = path.stem
        text = path.read_text()
        head = re.split(r"^diff ", text, maxsplit=1, flags=re.MULTILINE)[0]
        self.patterns = " ".join(re.findall(r"^gtest: (.*)$", head, re.MULTILINE)).split()
        self.scripts = [line.split() for line in re.findall(r"^script: (.*)$", head, re.MULTILINE)]
        self.files = re.findall(r"^diff --git a/(\S+) b/\1$", text, re.MULTILINE)
        self.new_files = re.findall(r"^--- /dev/null\n\+\+\+ b/(\S+)$", text, re.MULTILINE)


def all_walks(folder=HERE):
    return [Walk(path) for path in sorted(folder.glob("*.patch"))]


def run(command, log=None, **options):
    """Runs a command; its output goes to the log of this name in build/walks, and is shown if it fails."""
    result = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, env=ENVIRONMENT,
                            stdin=subprocess.DEVNULL, **options)
    if log:
        (WORK / log).write_text(result.stdout)
    if result.returncode != 0:
        raise Failed(f"'{' '.join(map(str, command))}' failed:\n{result.stdout[-20000:]}")
    return result.stdout


def apply(walk, folder):
    """Applies a walk to the sources in a folder, as they are after the walks before it."""
    # Not as a part of a repository around the folder, of which git would leave out what lies elsewhere.
    environment = ENVIRONMENT | {"GIT_CEILING_DIRECTORIES": str(folder.resolve().parent)}
    command = ["git", "apply", "--unidiff-zero", walk.path]
    result = subprocess.run(command, cwd=folder, text=True, capture_output=True, env=environment)
    if result.returncode != 0:
        raise Failed(f"tests/walks/{walk.path.name} no longer applies:\n{result.stderr}"
                     f"In a tree without changes, renew it by\n"
                     f"    git apply --reject tests/walks/{walk.path.name}    # what is left to do stands in *.rej\n"
                     f"    tests/walks/run_walks.py --renew {walk.name}\n"
                     f"and take the changes back")


def renew(name):
    """Writes a walk anew: its head, and what of the tree differs from the last commit."""
    path = HERE / f"{name}.patch"
    head = re.split(r"^diff ", path.read_text(), maxsplit=1, flags=re.MULTILINE)[0]
    run(["git", "add", "--intent-to-add", "--all"], cwd=TOP)
    # A line of CHANGELOG.md may stand anywhere, and the lines around it change with each other change.
    path.write_text(head + run(["git", "diff", "-U0", "--", "CHANGELOG.md"], cwd=TOP) +
                    run(["git", "diff", "-U2", "--", ".", ":!CHANGELOG.md", ":!tests/walks", ":!*.rej"], cwd=TOP))


def build():
    # clang++ takes less time than g++.
    run(["cmake", "-G", "Ninja", "-S", COPY / "tests" / "walks", "-B", BUILD, "-DCMAKE_CXX_COMPILER=clang++"], "configure.log")
    run(["cmake", "--build", BUILD, "--target", "walks_test"], "build.log")


def test(walk):
    program, toolbox = BUILD / "walks_test", BUILD / "zan" / "tools" / "zanl_profile" / "zanl-profile"
    for pattern in walk.patterns:
        if "  " not in run([program, "--gtest_list_tests", f"--gtest_filter={pattern}"]):
            raise Failed(f"{walk.name}: walks_test has no test {pattern}; its sources are in tests/walks/CMakeLists.txt")
    out = run([program, f"--gtest_filter={':'.join(walk.patterns)}"], f"{walk.name}.log")
    passed = int(re.search(r"^\[  PASSED  \] (\d+) test", out, re.MULTILINE)[1])
    for number, script in enumerate(walk.scripts):
        command = [str(toolbox) if word == "TOOLBOX" else word for word in script]
        out = run([sys.executable, *command], f"{walk.name}_{number}.log", cwd=COPY)
        passed += sum(map(int, re.findall(r"^Ran (\d+) test", out, re.MULTILINE)))
    return passed


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--renew", metavar="NAME")
    arguments = parser.parse_args()
    if arguments.renew:
        renew(arguments.renew)
        return
    walks = all_walks()
    update_copy(TOP, COPY)
    for walk in walks:
        apply(walk, COPY)
    build()
    run([sys.executable, "tests/check_sources.py"], "sources.log", cwd=COPY)
    print(f"{sum(map(test, walks))} tests of {len(walks)} walks passed")


if __name__ == "__main__":
    try:
        main()
    except Failed as failure:
        sys.exit(f"run_walks.py: {failure}")
