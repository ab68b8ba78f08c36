#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What `cmake --install` puts where, and that the installed library can be used.

usage: install_test.py BUILD_FOLDER [ARGUMENTS OF unittest]

tests/install/files.txt has the files. A row "TARGET/ <- PATTERN" stands for a file in TARGET for each file of the sources
that fits, without the ending .scd.
"""

import os
import pathlib
import re
import shutil
import subprocess
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
TOP = HERE.parent.parent
HAS_SCDOC = shutil.which("scdoc") is not None
build = ""


def expected_files(text):
    """The paths that rows like those of files.txt stand for, below the prefix."""
    paths = set()
    for row in text.split("\n"):
        target, arrow, pattern = row.partition(" <- ")
        if arrow:
            base = pathlib.PurePath(pattern.split("*")[0])
            files = [file for file in TOP.glob(pattern) if file.is_file() and "__pycache__" not in file.parts]
            paths |= {target + str(file.relative_to(TOP / base)).removesuffix(".scd") for file in files}
        elif row:
            paths.add(row)
    return paths


def run(*command, status=0, **options):
    """The joined output of a command, which has to end with this status."""
    outcome = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if outcome.returncode != status:
        raise AssertionError(f"{command} ended with {outcome.returncode}:\n{outcome.stdout}")
    return outcome.stdout


class Install(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.top = pathlib.Path(folder.name)
        run("cmake", "--install", build, "--prefix", "/opt/p", env=os.environ | {"DESTDIR": str(cls.top / "stage")})
        # An installed tree may be moved.
        cls.prefix = cls.top / "moved"
        (cls.top / "stage/opt/p").rename(cls.prefix)

    def test_the_files_are_those_of_the_list_and_all_are_below_destdir(self):
        files = {file.relative_to(self.prefix).as_posix() for file in self.prefix.rglob("*") if file.is_file()}
        files = {re.sub(r"(targets-)\w+(\.cmake)$", r"\1*\2", file) for file in files}
        expected = expected_files((HERE / "files.txt").read_text())
        if not HAS_SCDOC:
            expected = {file for file in expected if not file.startswith("share/man/")}
        self.assertEqual(sorted(files), sorted(expected))
        self.assertEqual([file for file in (self.top / "stage").rglob("*") if file.is_file()], [])

    def test_no_file_names_the_build_folder_or_the_sources(self):
        names = [os.fsencode(pathlib.Path(build).resolve()), os.fsencode(TOP) + b"/"]
        for file in self.prefix.rglob("*"):
            if file.is_file():
                content = file.read_bytes()
                with self.subTest(file.relative_to(self.prefix).as_posix()):
                    self.assertFalse([name for name in names if name in content])

    def test_the_programs_run_where_they_were_moved(self):
        run(self.prefix / "bin/zanl-profile", "package", "create", "x.zanx", "--from", TOP / "samples/vector_add",
            cwd=self.top)
        run(self.prefix / "bin/zanl-profile-tly", "x.zanx", TOP / "samples/vector_add/profile.mon", "x.json",
            cwd=self.top)
        self.assertTrue((self.top / "x.json").read_text().endswith("}\n"))

    def test_completions_are_what_the_program_prints(self):
        files = {"bash": "bash-completion/completions/zanl-profile", "zsh": "zsh/site-functions/_zanl-profile",
                 "fish": "fish/vendor_completions.d/zanl-profile.fish"}
        for shell, file in files.items():
            printed = run(self.prefix / "bin/zanl-profile", "completion", shell)
            self.assertEqual((self.prefix / "share" / file).read_text(), printed)

    # A program of another project makes a package with the library, and reads it back.
    def check_consumer(self, program):
        self.assertEqual(run(program, self.top / "made.zanx"), "4.2.0 Build 117\n")
        names = run(self.prefix / "bin/zanl-profile", "package", "list", "--names", self.top / "made.zanx")
        self.assertEqual(names, ".zan.version\n")

    def test_a_program_in_c_is_built_against_it_by_cmake(self):
        run("cmake", "-S", HERE / "consumer", "-B", self.top / "by_cmake", f"-DCMAKE_PREFIX_PATH={self.prefix}")
        run("cmake", "--build", self.top / "by_cmake")
        self.check_consumer(self.top / "by_cmake/consumer")

    def test_another_major_version_is_refused_by_cmake(self):
        sources = self.top / "newer"
        shutil.copytree(HERE / "consumer", sources)
        lists = sources / "CMakeLists.txt"
        lists.write_text(lists.read_text().replace("zanl_profile 2026.1", "zanl_profile 2027"))
        printed = run("cmake", "-S", sources, "-B", self.top / "b", f"-DCMAKE_PREFIX_PATH={self.prefix}", status=1)
        self.assertIn("2026.1.0", printed)

    @unittest.skipUnless(shutil.which("pkg-config"), "pkg-config is not installed")
    def test_a_program_in_c_is_built_against_it_by_pkg_config(self):
        environment = os.environ | {"PKG_CONFIG_PATH": str(self.prefix / "lib/pkgconfig")}
        flags = run("pkg-config", "--cflags", "--libs", "pkg_editor", env=environment).split()
        run("cc", HERE / "consumer/main.c", "-o", self.top / "by_pkg_config", *flags)
        self.check_consumer(self.top / "by_pkg_config")

    def test_a_prefix_that_cant_be_written_is_named(self):
        blocked = self.top / "file"
        blocked.write_text("")
        printed = run("cmake", "--install", build, "--prefix", blocked / "p", status=1)
        self.assertIn(str(blocked / "p"), printed)


if __name__ == "__main__":
    build = sys.argv.pop(1)
    unittest.main()
