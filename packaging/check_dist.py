#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""Checks the three files that ./dev dist makes.

usage: check_dist.py FOLDER [ARGUMENTS OF unittest]      FOLDER holds the files

With root or user namespaces the portable programs run where nothing but them and a sample is. `--sources` as the last
argument also builds the archive of the sources and runs ./dev demo there, without git.
"""

import os
import pathlib
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
SAMPLE = TOP / "samples" / "image_pipeline"
folder = pathlib.Path()
builds_sources = False


def run(*command, **options):
    outcome = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if outcome.returncode != 0:
        raise AssertionError(f"{command} ended with {outcome.returncode}:\n{outcome.stdout}")
    return outcome.stdout


def can_change_root():
    return subprocess.run(["unshare", "--map-root-user", "true"], capture_output=True).returncode == 0


class Dist(unittest.TestCase):
    def setUp(self):
        work = tempfile.TemporaryDirectory()
        self.addCleanup(work.cleanup)
        self.work = pathlib.Path(work.name)

    def only(self, pattern, *, but=()):
        found = [path for path in folder.glob(pattern) if path not in but]
        self.assertEqual(len(found), 1, f"{pattern}: {found}")
        return found[0]

    def portable(self):
        return self.only("zanl-profile-*-*.tar.gz")

    def sources(self):
        return self.only("zanl-profile-*.tar.gz", but=[self.portable()])

    def extract(self, archive):
        with tarfile.open(archive) as file:
            file.extractall(self.work)
        return next(self.work.iterdir())

    def programs_of_package(self):
        package = self.work / "package"
        run("dpkg-deb", "--extract", self.only("*.deb"), package)
        return package / "usr/bin"

    def report(self, programs, *, root=None):
        """The report of the sample, made by these programs, in a tree with nothing else if `root` is one."""
        home = root or self.work
        shutil.copytree(SAMPLE, home / "sample")
        enter = ["unshare", "--map-root-user", "--root", str(root), "--wd", "/"] if root else []
        place = pathlib.Path("/bin") if root else programs
        run(*enter, place / "zanl-profile", "package", "create", "d.zanx", "--from", "sample", cwd=home)
        run(*enter, place / "zanl-profile-tly", "d.zanx", "sample/profile.mon", "r.json", cwd=home)
        return (home / "r.json").read_bytes(), run(*enter, place / "zanl-profile", "summary", "r.json", cwd=home)

    def test_there_are_three_files(self):
        self.assertEqual(len(list(folder.iterdir())), 3)
        self.assertEqual(len({self.sources(), self.portable(), self.only("*.deb")}), 3)

    def test_the_sources_are_what_git_knows(self):
        top = self.extract(self.sources())
        files = {path.relative_to(top).as_posix() for path in top.rglob("*") if path.is_file()}
        self.assertEqual(files, set(run("git", "-C", TOP, "ls-files").splitlines()))
        commit = run("git", "-C", TOP, "rev-parse", "HEAD")
        self.assertEqual((top / "cmake/commit.txt").read_text(), commit)

    def test_the_sources_build_and_pass_the_demo_without_git(self):
        if not builds_sources:
            self.skipTest("only with --sources")
        top = self.extract(self.sources())
        without_git = self.work / "programs"
        without_git.mkdir()
        (without_git / "git").write_text("#!/bin/sh\nexit 127\n")
        (without_git / "git").chmod(0o755)
        printed = run("./dev", "demo", cwd=top, env=os.environ | {"PATH": f"{without_git}:{os.environ['PATH']}"})
        self.assertIn("Which kernel took the time?", printed)

    def test_portable_programs_need_no_library_and_have_no_fixed_address(self):
        for program in (self.extract(self.portable()) / "bin").iterdir():
            with self.subTest(program.name):
                header = run("readelf", "--wide", "--file-header", "--program-headers", "--dynamic", program)
                self.assertNotIn("(NEEDED)", header)
                self.assertNotIn("INTERP", header)
                self.assertRegex(header, r"Type: +DYN ")
                self.assertIn("GNU_RELRO", header)
                self.assertRegex(header, r"GNU_STACK .* RW ")

    @unittest.skipUnless(can_change_root(), "needs root or user namespaces")
    def test_portable_programs_run_where_nothing_else_is_and_make_the_same_bytes(self):
        bin_folder = self.extract(self.portable()) / "bin"
        root = self.work / "root"
        shutil.copytree(bin_folder, root / "bin")
        alone = self.report(None, root=root)
        self.assertEqual(alone, self.report(self.programs_of_package()))
        self.assertTrue(alone[0].endswith(b"}\n"))

    def test_the_package_has_what_debian_asks_for(self):
        self.assertTrue(shutil.which("lintian"), "lintian is not installed: apt-get install lintian")
        lint = subprocess.run(["lintian", "--fail-on", "error", "--allow-root", self.only("*.deb")], text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.assertEqual(lint.returncode, 0, lint.stdout)
        self.assertNotIn("no-manual-page", lint.stdout)

    def test_the_package_names_what_its_programs_need(self):
        depends = run("dpkg-deb", "--field", self.only("*.deb"), "Depends")
        for library in ("libc6", "libstdc++6", "libelf1", "zlib1g"):
            self.assertIn(library, depends)
        # Their names differ from release to release.
        for library in ("fmt", "tinyxml2", "utf8proc"):
            self.assertNotIn(library, depends)

    def test_no_file_names_the_folder_of_the_build(self):
        self.programs_of_package()
        self.extract(self.portable())
        for path in self.work.rglob("*"):
            if path.is_file() and not path.is_symlink():
                with self.subTest(path.relative_to(self.work).as_posix()):
                    self.assertNotIn(os.fsencode(TOP) + b"/", path.read_bytes())


if __name__ == "__main__":
    folder = pathlib.Path(sys.argv.pop(1)).resolve()
    if sys.argv[-1] == "--sources":
        builds_sources = bool(sys.argv.pop())
    unittest.main()
