# SPDX-License-Identifier: Apache-2.0
"""What is said of the viewer's tests where a part of what they need is missing. They run on stand-ins here."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent / "viewer" / "run_tests.py"
# A run of node --test: one test passed in each file, and one of all was skipped.
NODE = """
case "$*" in
--version) echo v18.20.4 ;;
*--test*) for file in "$@"; do case $file in *.mjs) passed=$((passed + 1)) ;; esac; done; echo "# pass $passed"; echo "# skipped ${SKIPPED:-0}" ;;
*) exit ${TYPES:-0} ;;
esac
"""


class ViewerTest(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.programs = pathlib.Path(folder.name) / "bin"
        self.tests = pathlib.Path(folder.name) / "tests"
        self.programs.mkdir()
        self.tests.mkdir()
        shutil.copy(SCRIPT, self.tests)
        for name in ("a.test.mjs", "b.test.mjs", "page.browser.mjs"):
            (self.tests / name).write_text("")
        self.stand_in("node", NODE)
        self.stand_in("chromium", "echo Chromium 1")
        self.install("typescript", "playwright-core", "axe-core")

    def stand_in(self, name, commands):
        program = self.programs / name
        program.write_text(f"#!/bin/sh\n{commands}\n")
        program.chmod(0o755)

    def install(self, *names):
        shutil.rmtree(self.tests / "node_modules", ignore_errors=True)
        for name in names:
            (self.tests / "node_modules" / name).mkdir(parents=True)

    def run_tests(self, *arguments, **more):
        environment = {key: text for key, text in os.environ.items() if key != "CHROMIUM"}
        environment |= {"PATH": f"{self.programs}:/usr/bin:/bin"} | more
        run = subprocess.run([self.tests / SCRIPT.name, *arguments], env=environment, text=True, capture_output=True, check=False)
        return run.returncode, run.stdout.splitlines()

    def test_with_everything_all_tests_run(self):
        self.assertEqual(self.run_tests("--program", "/bin/true"), (0, ["3 tests passed"]))

    def test_without_node_nothing_runs(self):
        self.stand_in("node", "exit 127")
        status, lines = self.run_tests("--program", "/bin/true")
        self.assertEqual((status, lines), (0, ["0 tests passed", "not run: all tests of the viewer (node is missing)"]))

    def test_without_a_browser_the_tests_of_modules_run(self):
        for name in ("chromium", "chromium-browser", "google-chrome"):
            self.stand_in(name, "exit 1")
        status, lines = self.run_tests("--program", "/bin/true")
        self.assertEqual((status, lines), (0, ["2 tests passed", "not run: the viewer's page in a browser (Chromium is missing)"]))

    def test_without_its_packages_neither_types_nor_browser_are_tested(self):
        self.install("typescript", "axe-core")
        status, lines = self.run_tests("--program", "/bin/true", TYPES="1")
        self.assertEqual((status, lines[0], len(lines)), (0, "2 tests passed", 2))
        self.assertRegex(lines[1], r"^not run: the types .* browser \(the packages .* missing: npm ci\)$")

    def test_without_a_program_the_comparison_is_named(self):
        status, lines = self.run_tests(SKIPPED="10")
        self.assertEqual((status, lines[0], len(lines)), (0, "3 tests passed", 2))
        self.assertIn("no program is named", lines[1])

    def test_tests_that_are_skipped_for_no_known_reason_are_counted(self):
        status, lines = self.run_tests("--program", "/bin/true", SKIPPED="4")
        self.assertEqual((status, lines), (0, ["3 tests passed", "not run: 4 tests of the viewer's modules"]))

    def test_wrong_types_fail(self):
        self.assertEqual(self.run_tests("--program", "/bin/true", TYPES="2"), (1, []))


if __name__ == "__main__":
    unittest.main()
