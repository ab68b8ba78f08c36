# SPDX-License-Identifier: Apache-2.0
"""The version text of a build: where its commit comes from, in a clone, in a plain copy, and in an archive."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

SCRIPT = pathlib.Path(__file__).resolve().parent.parent / "cmake" / "write_version.cmake"
ZEROS = "0" * 40
UNFILLED = "$Format:%H$\n"


class Version(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.top = pathlib.Path(folder.name)

    def make_sources(self, name, commit_text=UNFILLED):
        """A source tree with nothing but the files that the version needs."""
        sources = self.top / name
        (sources / "cmake").mkdir(parents=True)
        shutil.copy(SCRIPT, sources / "cmake")
        (sources / "cmake" / "commit.txt").write_text(commit_text)
        return sources

    def git(self, folder, *arguments):
        identity = {f"GIT_{who}_{what}": "a@b" for who in ("AUTHOR", "COMMITTER") for what in ("NAME", "EMAIL")}
        command = ["git", "-C", folder, *arguments]
        run = subprocess.run(command, env=os.environ | identity, check=True, text=True, capture_output=True)
        return run.stdout.strip()

    def commit(self, folder):
        self.git(folder, "add", "--all")
        self.git(folder, "commit", "--quiet", "--allow-empty", "--message", "x")
        return self.git(folder, "rev-parse", "HEAD")

    def compose(self, sources, environment=None):
        """Writes the version file of the sources and returns its text."""
        output = self.top / "tly_version.cpp"
        command = [shutil.which("cmake"), f"-DSOURCE_DIR={sources}", "-DVERSION=2031.2.3", f"-DOUTPUT={output}"]
        subprocess.run([*command, "-P", sources / "cmake" / SCRIPT.name], env=environment, check=True)
        return output.read_text()

    def text(self, commit):
        return f'#include "tly_constants.h"\n\nconst std::string tly_version = "2031.2.3.{commit}";\n'

    def test_a_clone_has_its_commit(self):
        sources = self.make_sources("clone")
        self.git(sources, "init", "--quiet")
        first = self.commit(sources)
        self.assertEqual(self.compose(sources), self.text(first))
        second = self.commit(sources)
        self.assertEqual(self.compose(sources), self.text(second))

    def test_a_clone_without_commits_has_zeros(self):
        sources = self.make_sources("clone")
        self.git(sources, "init", "--quiet")
        self.assertEqual(self.compose(sources), self.text(ZEROS))

    def test_a_plain_copy_has_zeros(self):
        self.assertEqual(self.compose(self.make_sources("copy")), self.text(ZEROS))

    def test_a_copy_inside_another_project_does_not_take_that_ones_commit(self):
        sources = self.make_sources("project/third_party/copy")
        self.git(self.top / "project", "init", "--quiet")
        self.commit(self.top / "project")
        self.assertEqual(self.compose(sources), self.text(ZEROS))

    def test_an_archive_has_the_commit_that_it_was_made_of(self):
        commit = "0123456789abcdef0123456789abcdef01234567"
        self.assertEqual(self.compose(self.make_sources("archive", commit + "\n")), self.text(commit))

    def test_an_archive_with_something_else_in_place_of_the_commit_has_zeros(self):
        for text in ("", "0123456789abcdef\n", "0123456789ABCDEF0123456789ABCDEF01234567\n", "main\n"):
            with self.subTest(text):
                sources = self.make_sources("archive", text)
                self.assertEqual(self.compose(sources), self.text(ZEROS))
                shutil.rmtree(sources)

    def test_no_git_at_all_has_zeros(self):
        empty = self.top / "no programs"
        empty.mkdir()
        sources = self.make_sources("copy")
        self.assertEqual(self.compose(sources, {"PATH": str(empty)}), self.text(ZEROS))

    def test_a_text_that_stays_is_not_written_again(self):
        sources = self.make_sources("copy")
        self.compose(sources)
        output = self.top / "tly_version.cpp"
        os.utime(output, (1000, 1000))
        self.compose(sources)
        self.assertEqual(output.stat().st_mtime, 1000)


if __name__ == "__main__":
    unittest.main()
