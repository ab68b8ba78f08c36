# SPDX-License-Identifier: Apache-2.0
"""The scripts that make what is handed out: archives that are always the same, and what is said where one can't go on."""

import os
import pathlib
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(TOP / "packaging"))
import make_archives

EPOCH = 1_700_000_000


class Packaging(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.top = pathlib.Path(folder.name)

    def test_an_archive_depends_on_names_and_contents_alone(self):
        files = {"b/run": (b"#!/bin/sh\n", True), "a": (b"text", False)}
        make_archives.write_archive(self.top / "1.tar.gz", "top", files, EPOCH)
        make_archives.write_archive(self.top / "2.tar.gz", "top", dict(reversed(files.items())), EPOCH)
        self.assertEqual((self.top / "1.tar.gz").read_bytes(), (self.top / "2.tar.gz").read_bytes())
        with tarfile.open(self.top / "1.tar.gz") as archive:
            entries = [(entry.name, entry.mode, entry.mtime, entry.uid, entry.uname) for entry in archive]
            self.assertEqual(entries, [("top/a", 0o644, EPOCH, 0, ""), ("top/b/run", 0o755, EPOCH, 0, "")])
            self.assertEqual(archive.extractfile("top/b/run").read(), b"#!/bin/sh\n")

    @unittest.skipUnless((TOP / ".git").exists(), "the sources are no clone")
    def test_the_archive_of_the_sources_has_the_commit(self):
        files = make_archives.source_files()
        self.assertRegex(files["cmake/commit.txt"][0], rb"^[0-9a-f]{40}\n$")
        self.assertEqual(files["dev"], ((TOP / "dev").read_bytes(), True))
        self.assertNotIn("build", {name.split("/")[0] for name in files})

    def run_with(self, programs, *command):
        """Runs a script where these programs are, and no others."""
        folder = self.top / "programs"
        folder.mkdir()
        for program in programs:
            (folder / program).symlink_to(shutil.which(program))
        run = subprocess.run(command, env={"PATH": str(folder)}, text=True, capture_output=True)
        return run.returncode, run.stdout, run.stderr

    def test_to_try_a_package_without_mmdebstrap_is_no_failure_and_no_success(self):
        package = self.top / "x.deb"
        package.write_text("")
        outcome = self.run_with(["bash", "dirname", "readlink"], shutil.which("bash"), TOP / "packaging/try_package", package)
        self.assertEqual(outcome, (77, "", "try_package: mmdebstrap is missing: apt-get install mmdebstrap\n"))

    def test_to_try_no_package_is_wrong_use(self):
        status, _, err = self.run_with(["bash", "dirname", "readlink"], shutil.which("bash"), TOP / "packaging/try_package")
        self.assertEqual((status, err), (1, "usage: try_package PACKAGE.deb [RELEASE...]\n"))

    def test_builds_that_differ_are_found(self):
        top = self.top / "project"
        (top / "packaging").mkdir(parents=True)
        (top / "build/tinyxml2").mkdir(parents=True)
        shutil.copy(TOP / "packaging/compare_builds", top / "packaging")
        programs = {
            top / "packaging/fetch_tinyxml2": "",
            # One file is always the same, the other one has the folder in it.
            self.top / "stand_ins/cmake": "mkdir -p build/dist/files; echo x >build/dist/files/same; pwd >build/dist/files/other",
            self.top / "stand_ins/diffoscope": 'echo "diffoscope ${1##*/} ${2##*/}"',
        }
        for path, commands in programs.items():
            path.parent.mkdir(exist_ok=True)
            path.write_text(f"#!/bin/sh\n{commands}\n")
            path.chmod(0o755)
        identity = {f"GIT_{who}_{what}": "a@b" for who in ("AUTHOR", "COMMITTER") for what in ("NAME", "EMAIL")}
        environment = os.environ | identity | {"PATH": f"{self.top}/stand_ins:{os.environ['PATH']}"}
        for arguments in (["init", "--quiet"], ["add", "packaging"], ["commit", "--quiet", "--message", "x"]):
            subprocess.run(["git", "-C", top, *arguments], env=environment, check=True)
        run = subprocess.run([top / "packaging/compare_builds"], env=environment, text=True, capture_output=True)
        self.assertEqual((run.returncode, run.stdout, run.stderr),
                         (1, "diffoscope other other\nsame bytes: same\n", "different: other\n"))

    def test_sources_that_are_there_are_not_fetched(self):
        (self.top / "tinyxml2.cpp").write_text("")
        outcome = self.run_with(["bash", "realpath"], shutil.which("bash"), TOP / "packaging/fetch_tinyxml2", self.top)
        self.assertEqual(outcome, (0, "", ""))


if __name__ == "__main__":
    unittest.main()
