# SPDX-License-Identifier: Apache-2.0
"""Which files take a licence line, and where it goes."""

import contextlib
import io
import pathlib
import tempfile
import unittest

import licence_lines

LINE = "SPDX-License-Identifier: Apache-2.0"


class LicenceLines(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.top = pathlib.Path(folder.name)

    def write(self, name, text):
        path = self.top / name
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text)
        return path

    def test_the_line_comes_first_as_a_comment_of_the_language(self):
        lines = {
            "a.cpp": f"// {LINE}\n", "a.css": f"/* {LINE} */\n", "a.md": f"<!-- {LINE} -->\n", "a.py": f"# {LINE}\n",
            "CMakeLists.txt": f"# {LINE}\n", "pkg_editor.h": f"/* {LINE} */\n",
        }
        for name, line in lines.items():
            with self.subTest(name):
                self.assertEqual(licence_lines.with_line(self.write(name, ""), "text\n"), line + "text\n")

    def test_a_first_line_that_programs_look_at_stays_first(self):
        firsts = {
            "run": ("#!/bin/sh\n", f"# {LINE}\n"),
            "a.html": ("<!DOCTYPE html>\n", f"<!-- {LINE} -->\n"),
            "a.1.scd": ("a(1)\n", f"; {LINE}\n"),
        }
        for name, (first, line) in firsts.items():
            with self.subTest(name):
                path = self.write(name, first)
                self.assertEqual(licence_lines.with_line(path, first + "text\n"), first + line + "text\n")

    def test_data_and_what_was_made_take_none(self):
        for name in ("a.json", "a.case", "notes.txt", "data", "build/a.cpp", "tests/golden/a.md", ".git/a.py"):
            self.write(name, "text\n")
        self.write("script", "#!/bin/sh\n")
        self.assertEqual(licence_lines.files_without(self.top), ["script"])

    def test_a_line_counts_among_the_first_three_alone(self):
        self.write("a.py", f"1\n2\n# {LINE}\n")
        self.write("b.py", f"1\n2\n3\n# {LINE}\n")
        self.assertEqual(licence_lines.files_without(self.top), ["b.py"])

    def test_what_was_added_is_found_and_not_added_again(self):
        path = self.write("a.md", "# A page\n")
        printed = io.StringIO()
        with contextlib.redirect_stdout(printed):
            licence_lines.main([self.top])
            licence_lines.main([self.top])
        self.assertEqual(printed.getvalue(), "a.md\n")
        self.assertEqual(path.read_text(), f"<!-- {LINE} -->\n# A page\n")


if __name__ == "__main__":
    unittest.main()
