# SPDX-License-Identifier: Apache-2.0
"""The walks of CONTRIBUTING.md still apply, and the page names the files that they change. `./dev test walks` builds them."""

import pathlib
import re
import shutil
import sys
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "tests" / "walks"))
import run_walks  # noqa: E402

PATCH = """A walk.

gtest: A.* B.c
script: s.py TOOLBOX -v

diff --git a/f b/f
--- a/f
+++ b/f
@@ -1,3 +1,4 @@
 1
 2
+new
 3
diff --git a/d/g.cpp b/d/g.cpp
new file mode 100644
--- /dev/null
+++ b/d/g.cpp
@@ -0,0 +1 @@
+g
"""


def sections(page):
    """The texts of the sections of a page, by their headlines."""
    parts = re.split(r"^#+ (.*)$", page, flags=re.MULTILINE)
    return dict(zip(parts[1::2], parts[2::2]))


def files_of_table(text):
    """The paths in the first column of a section's table."""
    return [path for row in re.findall(r"^\|([^|]*)\|", text, re.MULTILINE) for path in re.findall(r"`([^`]+)`", row)]


class Walks(unittest.TestCase):
    def folder(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        return pathlib.Path(folder.name)

    def test_all_of_them_apply_to_one_copy(self):
        copy = self.folder()
        walks = run_walks.all_walks()
        for path in {file for walk in walks for file in walk.files if file not in walk.new_files}:
            (copy / path).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy2(TOP / path, copy / path)
        for walk in walks:
            run_walks.apply(walk, copy)
            for path in walk.files:
                self.assertNotEqual((copy / path).read_bytes(), b"" if path in walk.new_files else (TOP / path).read_bytes())

    def test_each_comes_with_tests_and_has_a_section_with_its_files(self):
        page = sections((TOP / "CONTRIBUTING.md").read_text())
        walks = run_walks.all_walks()
        named = {re.search(r"tests/walks/(\w+)\.patch", text)[1]: files_of_table(text) for text in page.values()
                 if "tests/walks/" in text and files_of_table(text)}
        self.assertEqual(sorted(named), [walk.name for walk in walks])
        for walk in walks:
            with self.subTest(walk.name):
                self.assertTrue(walk.patterns)
                self.assertEqual(sorted(named[walk.name]), sorted(walk.files))

    def test_a_patch_is_read_as_its_files_and_tests(self):
        path = self.folder() / "walk.patch"
        path.write_text(PATCH)
        walk = run_walks.Walk(path)
        self.assertEqual((walk.name, walk.files, walk.new_files), ("walk", ["f", "d/g.cpp"], ["d/g.cpp"]))
        self.assertEqual((walk.patterns, walk.scripts), (["A.*", "B.c"], [["s.py", "TOOLBOX", "-v"]]))

    def test_one_that_no_longer_applies_is_named_with_the_way_to_renew_it(self):
        copy = self.folder()
        (copy / "walk.patch").write_text(PATCH)
        walk = run_walks.Walk(copy / "walk.patch")
        (copy / "f").write_text("1\nother\n3\n")
        with self.assertRaisesRegex(run_walks.Failed, r"tests/walks/walk\.patch no longer applies:(?s:.*)--renew walk"):
            run_walks.apply(walk, copy)
        (copy / "f").write_text("1\n2\n3\n")
        run_walks.apply(walk, copy)
        self.assertEqual((copy / "f").read_text(), "1\n2\nnew\n3\n")

    def test_what_objects_are_made_of_is_read_from_ninja(self):
        text = ("a.o: #deps 2, deps mtime 12 (VALID)\n    ../x.cpp\n    ../x.h\n\n"
                "old.o: #deps 1, deps mtime 12 (STALE)\n    ../x.h\n\nb.o: #deps 1, deps mtime 12 (VALID)\n    ../y.cpp\n")
        self.assertEqual(run_walks.dependencies(text), {"a.o": ["../x.cpp", "../x.h"], "b.o": ["../y.cpp"]})

    def test_objects_are_taken_only_if_nothing_of_theirs_changes(self):
        objects = {"a.o": ["p/a.cpp", "p/a.h"], "b.o": ["q/b.cpp", "p/a.h"], "c.o": ["q/c.cpp"]}
        for changed, new, untouched in ((set(), set(), {"a.o", "b.o", "c.o"}),
                                        ({"p/a.h"}, set(), {"c.o"}),
                                        ({"q/c.cpp"}, set(), {"a.o", "b.o"}),
                                        ({"q/d.cpp"}, {"q/d.cpp"}, {"a.o"}),
                                        ({"q/d.h"}, {"q/d.h"}, set()),
                                        ({"q/page.md"}, {"q/page.md"}, {"a.o", "b.o", "c.o"})):
            with self.subTest(changed=changed):
                self.assertEqual(run_walks.untouched_objects(objects, changed, new), untouched)

    def test_an_object_of_joined_sources_needs_all_of_its_folder(self):
        top = self.folder()
        (top / "p").mkdir()
        for name in ("a.cpp", "b.cpp", "main.cpp", "a.h"):
            (top / "p" / name).write_text("")
        self.assertTrue(run_walks.has_whole_folders(["p/a.cpp", "p/b.cpp", "q/x.h"], top))
        self.assertFalse(run_walks.has_whole_folders(["p/a.cpp"], top))


if __name__ == "__main__":
    unittest.main()
