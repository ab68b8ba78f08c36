# SPDX-License-Identifier: Apache-2.0
"""A plain copy of the sources, without git's data, builds and runs; its version has zeros in place of a commit.

The copy and its build are kept under build/plain_copy, so that a second run builds only what has changed.
"""

import pathlib
import subprocess
import tempfile
import unittest

from source_copy import update_copy

TOP = pathlib.Path(__file__).resolve().parent.parent
FOLDER = TOP / "build" / "plain_copy"
SAMPLE = pathlib.PurePath("samples") / "vector_add"


def run(*command, **options):
    result = subprocess.run(command, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, **options)
    if result.returncode != 0:
        raise AssertionError(f"{command} failed:\n{result.stdout}")


class PlainCopy(unittest.TestCase):
    def test_it_builds_and_its_report_has_zeros_for_the_commit(self):
        sources, build = FOLDER / "sources", FOLDER / "build"
        update_copy(TOP, sources)
        # Without the toolbox, which takes three times as long to build and has the same version.
        # This is the one build that shows that each source includes what it needs: the others compile those of a target
        # as one.
        options = ["-DCMAKE_BUILD_TYPE=", "-DZAN_BUILD_TOOLS=OFF", "-DZAN_BUILD_TESTS=OFF", "-DZAN_BUILD_BENCH=OFF"]
        run("cmake", "-G", "Ninja", "-S", sources, "-B", build, *options)
        run("cmake", "--build", build, "--target", "zanl-profile-tly")
        with tempfile.TemporaryDirectory() as folder:
            sections = [f"--add-section=.zan.{path.name}={path}" for path in (sources / SAMPLE / "sections").iterdir()]
            (pathlib.Path(folder) / "first").write_bytes(b"1")
            run("objcopy", "-I", "binary", "-O", "elf32-i386", *sections, "first", "design.zanx", cwd=folder)
            files = ["design.zanx", sources / SAMPLE / "profile.mon", "report.json"]
            run(build / "zanl-profile-tly", *files, cwd=folder)
            report = (pathlib.Path(folder) / "report.json").read_text()
        self.assertRegex(report, r'"profiler_json_version": "\d{4}\.\d+\.\d+\.0{40}"')


if __name__ == "__main__":
    unittest.main()
