# SPDX-License-Identifier: Apache-2.0
"""The modules of the viewer's page: their unit tests in node, and their types. Both need what a build of the programs doesn't, so they are skipped where it is missing."""

import pathlib
import shutil
import subprocess
import unittest

FOLDER = pathlib.Path(__file__).resolve().parent / "viewer"
NODE = shutil.which("node")
TSC = FOLDER / "node_modules" / "typescript" / "bin" / "tsc"


def run(*command):
    return subprocess.run(command, cwd=FOLDER, capture_output=True, text=True, check=False)


class ViewerTest(unittest.TestCase):
    @unittest.skipUnless(NODE, "node isn't installed")
    def test_the_modules_do_what_their_tests_say(self):
        files = sorted(path.name for path in FOLDER.glob("*.test.mjs") if path.name != "browser.test.mjs")
        self.assertGreater(len(files), 5)
        result = run(NODE, "--test", *files)
        self.assertEqual(result.returncode, 0, result.stdout[-4000:] + result.stderr[-1000:])

    @unittest.skipUnless(NODE and TSC.exists(), "the packages of tests/viewer aren't installed: npm ci there")
    def test_the_types_of_the_modules_are_right(self):
        result = run(NODE, str(TSC), "-p", "tsconfig.json")
        self.assertEqual(result.returncode, 0, result.stdout[-4000:])


if __name__ == "__main__":
    unittest.main()
