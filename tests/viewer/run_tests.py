#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Runs the tests of the viewer: its modules in node, their types, and the page in Chromium.

usage: run_tests.py [--program PATH]      PATH is a built zanl-profile; it makes the pages and is compared with them.

Prints how many tests passed. A line "not run: ..." names what can't be tested here, as the programs are built without
node, a browser and packages. The exit status is 1 if a test failed.
"""

import argparse
import os
import pathlib
import re
import shutil
import subprocess
import sys

FOLDER = pathlib.Path(__file__).resolve().parent
TYPE_CHECKER = "node_modules/typescript/bin/tsc"
PACKAGES = ("typescript", "playwright-core", "axe-core")
BROWSERS = ("chromium", "chromium-browser", "google-chrome")
# Tests that need a browser end so.
BROWSER_SUFFIX = ".browser.mjs"
UNIT_SUFFIX = ".test.mjs"


def works(program):
    """Whether a program is there and starts."""
    if not shutil.which(program):
        return False
    return subprocess.run([program, "--version"], capture_output=True, check=False).returncode == 0


def find_browser():
    """The browser that the tests use, or None."""
    named = os.environ.get("CHROMIUM")
    return next((name for name in ([named] if named else BROWSERS) if works(name)), None)


def counts(output):
    """Numbers of tests that passed and that were skipped, of the text of a run."""
    return [int(re.search(rf"^# {word} (\d+)$", output, re.MULTILINE)[1]) for word in ("pass", "skipped")]


def run_node(arguments, environment):
    """Runs node in the folder of the tests. A failure shows its output and ends everything."""
    result = subprocess.run(["node", *arguments], cwd=FOLDER, env=environment, capture_output=True, text=True, check=False)
    if result.returncode != 0:
        sys.exit(result.stdout + result.stderr)
    return result.stdout


def main():
    parser = argparse.ArgumentParser(description="Runs the tests of the viewer.")
    parser.add_argument("--program", help="a built zanl-profile")
    options = parser.parse_args()
    environment = dict(os.environ)
    left_out = []
    if options.program:
        environment["ZAN_PROFILE"] = str(pathlib.Path(options.program).resolve())
    else:
        left_out.append("comparisons of the viewer's page with the program (no program is named)")
    if not works("node"):
        print("0 tests passed\nnot run: all tests of the viewer (node is missing)")
        return
    files = [sorted(path.name for path in FOLDER.glob("*" + suffix)) for suffix in (UNIT_SUFFIX, BROWSER_SUFFIX)]
    num_passed, num_skipped = counts(run_node(["--test", "--test-reporter=tap", *files[0]], environment))
    if num_skipped and options.program:
        left_out.append(f"{num_skipped} tests of the viewer's modules")
    if not all((FOLDER / "node_modules" / name).is_dir() for name in PACKAGES):
        left_out.append("the types of the viewer's modules and its page in a browser (the packages of tests/viewer are missing: npm ci)")
    else:
        run_node([TYPE_CHECKER, "-p", "tsconfig.json"], environment)
        browser = find_browser()
        if browser:
            environment["CHROMIUM"] = shutil.which(browser)
            num_passed += counts(run_node(["--test", "--test-reporter=tap", *files[1]], environment))[0]
        else:
            left_out.append("the viewer's page in a browser (Chromium is missing)")
    print(f"{num_passed} tests passed")
    for what in left_out:
        print(f"not run: {what}")


if __name__ == "__main__":
    main()
