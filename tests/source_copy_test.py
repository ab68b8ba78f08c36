# SPDX-License-Identifier: Apache-2.0
"""Copies of the sources are brought up to date so that a build sees what has changed."""

import os
import pathlib
import tempfile
import unittest

from source_copy import update_copy

LONG_AGO = 1_000_000_000  # seconds of a file's time


class SourceCopy(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.source, self.target = pathlib.Path(folder.name) / "source", pathlib.Path(folder.name) / "target"
        (self.source / "folder").mkdir(parents=True)
        self.write("folder/a.cpp", "first")

    def write(self, name, text):
        (self.source / name).write_text(text)
        os.utime(self.source / name, (LONG_AGO, LONG_AGO))

    def test_a_file_that_changed_is_newer_than_what_was_built_of_the_last(self):
        update_copy(self.source, self.target)
        copy = self.target / "folder" / "a.cpp"
        os.utime(copy, (LONG_AGO + 1, LONG_AGO + 1))
        self.write("folder/a.cpp", "other")
        update_copy(self.source, self.target)
        self.assertEqual(copy.read_text(), "other")
        self.assertGreater(copy.stat().st_mtime, LONG_AGO + 1)

    def test_a_file_that_is_the_same_keeps_its_time(self):
        update_copy(self.source, self.target)
        copy = self.target / "folder" / "a.cpp"
        os.utime(copy, (LONG_AGO, LONG_AGO))
        update_copy(self.source, self.target)
        self.assertEqual(copy.stat().st_mtime, LONG_AGO)

    def test_what_is_gone_goes_and_builds_are_left_out(self):
        self.write("b.cpp", "more")
        (self.source / "build").mkdir()
        update_copy(self.source, self.target)
        (self.source / "b.cpp").unlink()
        update_copy(self.source, self.target)
        self.assertEqual([path.name for path in self.target.iterdir()], ["folder"])


if __name__ == "__main__":
    unittest.main()
