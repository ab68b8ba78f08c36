# SPDX-License-Identifier: Apache-2.0
"""The shell function of docs/scripts.md against a stand-in for the program, which ends in each way that the README lists.

tests/end_to_end/scripts_page_test.cpp runs the function with the program itself.
"""

import os
import pathlib
import re
import subprocess
import tempfile
import textwrap
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
PAGE = TOP / "docs" / "scripts.md"
SHELLS = ["sh", "bash", "sh -eu", "bash -eu"]
OLD = "the report of an earlier run\n"
REPORT = '{\n    "kernels":\n    {\n        "nodes": ""\n    }\n}\n'
WRITE_REPORT = f"printf '%s' '{REPORT}' >\"$3\""

# For each situation of the README's table: bodies of the stand-in, each with the status that the function has to return.
# 0 and 2 come with the new report, 1 leaves the old one.
SITUATIONS = {
    "success, also with lines left out": [
        (WRITE_REPORT, 0),
        (f"echo 'warning: empty .mon line 3' >&2; {WRITE_REPORT}", 2),
    ],
    "wrong number of arguments, or a wrong ending": [
        ("echo '   Usage: zanl-profile-tly'; exit 0", 1),
        ("echo 'ABORT: Missing .mon file.' >&2; echo '   Usage: zanl-profile-tly'", 1),
    ],
    "the package can't be opened, or lacks its version, its board description or its timing report": [
        ("echo 'ABORT: Error parsing version.' >&2; exit 1", 1),
    ],
    "the board description can't be loaded": [("kill -SEGV $$", 1)],
    "the profiler description can't be loaded": [("echo 'Error: unable to load profiler.xml file' >&2; exit 1", 1)],
    "the monitor file can't be opened, or differs from the design about shared counters": [
        ("echo 'ABORT: .mon file errored while trying to open.' >&2; exit 1", 1),
    ],
    "a monitor line of digits and commas alone": [("echo 'terminate called' >&2; kill -ABRT $$", 1)],
    "the report can't be written": [
        ("echo 'terminate called' >&2; kill -ABRT $$", 1),
        ("printf '{\\n    \"kernels\":\\n    {\\n' >\"$3\"; kill -ABRT $$", 1),
    ],
}
# What the table doesn't have.
OTHERS = [
    ("kill -KILL $$", 1),
    (f"{WRITE_REPORT}; kill -KILL $$", 1),
    (f"{WRITE_REPORT}; kill -TERM $$", 1),
    ("printf '{\\n    \"kernels\":\\n    {\\n    }\\n' >\"$3\"", 1),  # a part, with status 0
    (": >\"$3\"", 1),
]


def shell_function():
    """The block of the page that holds the function, and the lines of the function alone."""
    block = re.search(r"^    # make_report .*\n((?:    .*\n)+)", PAGE.read_text(), re.MULTILINE)
    return textwrap.dedent(block[0]), block[1].splitlines()


class Folder:
    """A folder with a stand-in for the program, a monitor file and an old report."""

    def __init__(self, path, body):
        self.path = pathlib.Path(path)
        (self.path / "bin").mkdir()
        program = self.path / "bin" / "zanl-profile-tly"
        program.write_text(f"#!/bin/sh\nulimit -c 0\n{body}\n")
        program.chmod(0o755)
        (self.path / "profile.mon").write_text("0,0,.reprogram,1,2\n")
        (self.path / "report.json").write_text(OLD)

    def make_report(self, shell, arguments):
        code = shell_function()[0] + 'make_report "$@"\n'
        environment = dict(os.environ, PATH=f"{self.path / 'bin'}:{os.environ['PATH']}")
        return subprocess.run([*shell.split(), "-c", code, shell, *arguments], cwd=self.path, env=environment,
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, timeout=60)

    def files(self):
        return {file.name: file.read_text() for file in self.path.iterdir() if file.is_file()}


class ScriptsPage(unittest.TestCase):
    def expect(self, body, status, arguments=("design.zanx", "profile.mon", "report.json"), report="report.json"):
        for shell in SHELLS:
            with self.subTest(shell=shell, body=body, arguments=arguments), tempfile.TemporaryDirectory() as path:
                folder = Folder(path, body)
                ran = folder.make_report(shell, arguments)
                self.assertEqual(ran.returncode, status, ran.stderr)
                self.assertEqual(ran.stdout, "")
                expected = {"profile.mon": "0,0,.reprogram,1,2\n", "report.json": OLD}
                if status != 1:
                    expected[report] = REPORT
                self.assertEqual(folder.files(), expected)

    def test_each_situation_of_the_readme(self):
        for situation, runs in SITUATIONS.items():
            with self.subTest(situation=situation):
                for body, status in runs:
                    self.expect(body, status)

    def test_the_situations_are_those_of_the_readme(self):
        table = (TOP / "README.md").read_text().partition("| situation |")[2].partition("\n\n")[0]
        self.assertEqual([row.split(" | ")[0].lstrip("| ") for row in table.splitlines()[2:]], list(SITUATIONS))

    def test_killed_programs_and_parts_of_reports(self):
        for body, status in OTHERS:
            self.expect(body, status)

    def test_wrong_use_of_the_function(self):
        for arguments in [(), ("design.zanx",), ("design.zanx", "profile.mon"),
                          ("design.zanx", "profile.mon", "report.json", "more"),
                          ("design.zanx", "missing.mon", "report.json"),
                          ("design.zanx", ".", "report.json"),
                          ("design.zanx", "profile.mon", "bin"),
                          ("design.zanx", "profile.mon", "missing/report.json")]:
            self.expect(WRITE_REPORT, 1, arguments)

    def test_a_named_pipe_is_refused_before_anything_waits_for_it(self):
        with tempfile.TemporaryDirectory() as path:
            folder = Folder(path, WRITE_REPORT)
            os.mkfifo(folder.path / "pipe.mon")
            self.assertEqual(folder.make_report("sh", ["design.zanx", "pipe.mon", "report.json"]).returncode, 1)

    def test_reports_of_any_name(self):
        self.expect(WRITE_REPORT, 0, ("design.zanx", "profile.mon", "new.txt"), "new.txt")
        self.expect(WRITE_REPORT, 0, ("design.zanx", "profile.mon", "-a b*.json"), "-a b*.json")

    def test_a_program_that_is_not_there(self):
        with tempfile.TemporaryDirectory() as path:
            folder = Folder(path, WRITE_REPORT)
            (folder.path / "bin" / "zanl-profile-tly").unlink()
            self.assertEqual(folder.make_report("sh", ["design.zanx", "profile.mon", "report.json"]).returncode, 1)

    def test_messages_reach_standard_error(self):
        with tempfile.TemporaryDirectory() as path:
            ran = Folder(path, f"echo 'warning: one' >&2; echo 'warning: two' >&2; {WRITE_REPORT}").make_report(
                "sh", ["design.zanx", "profile.mon", "report.json"])
            self.assertEqual((ran.returncode, ran.stderr), (2, "warning: one\nwarning: two\n"))

    def test_the_function_has_ten_lines_at_most(self):
        self.assertLessEqual(len(shell_function()[1]), 10)


if __name__ == "__main__":
    unittest.main()
