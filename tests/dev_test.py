# SPDX-License-Identifier: Apache-2.0
"""What ./dev says and does where it can't go on. The commands that install and build run on stand-ins."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

DEV = pathlib.Path(__file__).resolve().parent.parent / "dev"


class Dev(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.programs = pathlib.Path(folder.name)
        self.calls = self.programs / "calls"
        self.calls.write_text("")
        self.script = DEV

    def stand_in(self, name, commands):
        program = self.programs / name
        program.write_text(f'#!/bin/sh\necho "{name} $*" >>{self.calls}\n{commands}\n')
        program.chmod(0o755)

    def dev(self, *arguments):
        environment = os.environ | {"PATH": f"{self.programs}:/usr/bin:/bin"}
        options = {"env": environment, "text": True, "capture_output": True, "stdin": subprocess.DEVNULL}
        run = subprocess.run([self.script, *arguments], **options)
        return run.returncode, run.stdout, run.stderr

    def calls_of(self, name):
        return [line for line in self.calls.read_text().splitlines() if line.startswith(name + " ")]

    def nothing_is_installed(self, user):
        self.stand_in("dpkg-query", "exit 1")
        self.stand_in("id", f"echo {user}")
        self.stand_in("apt-get", "exit 7")

    def test_alone_it_lists_its_commands(self):
        status, out, err = self.dev()
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(out.startswith("usage: ./dev COMMAND\n"))
        for command in ("demo", "test", "bench", "coverage", "fuzz", "lint", "format", "help"):
            self.assertRegex(out, rf"(?m)^  {command}\b.*  \S")
        self.assertEqual(self.dev("help"), (0, out, ""))
        self.assertEqual(self.dev("--help"), (0, out, ""))

    def test_an_unknown_command_is_reported_with_those_that_begin_like_it(self):
        meant = {"dem": "'demo'", "tests": "'test'", "benc": "'bench'", "formats": "'format'", "f": "'fuzz' or 'format'"}
        for word, commands in meant.items():
            with self.subTest(word):
                status, out, err = self.dev(word)
                self.assertEqual((status, out), (2, ""))
                self.assertEqual(err.splitlines()[0], f"dev: unknown command '{word}'; did you mean {commands}?")
                self.assertIn("usage: ./dev COMMAND\n", err)

    def test_a_word_like_no_command_gets_no_suggestion(self):
        status, _, err = self.dev("something")
        self.assertEqual((status, err.splitlines()[0]), (2, "dev: unknown command 'something'"))

    def test_functions_of_the_script_are_no_commands(self):
        self.assertEqual(self.dev("need")[0], 2)

    def test_test_refuses_what_it_does_not_know(self):
        self.assertEqual(self.dev("test", "release"), (1, "", "dev: test takes quick, all, walks, fleet, --again or nothing, not 'release'\n"))

    def test_fuzz_names_the_fuzzers_that_there_are(self):
        for name in ((), ("none",)):
            status, out, err = self.dev("fuzz", *name)
            self.assertEqual((status, out), (1, ""))
            first, *fuzzers = err.splitlines()
            self.assertEqual(first, "dev: fuzz takes the name of a fuzzer, one of:")
            sources = DEV.parent.glob("fuzz/*_fuzz.cpp")
            self.assertCountEqual(fuzzers, [f"    {path.name.removesuffix('_fuzz.cpp')}" for path in sources])

    def test_without_root_and_sudo_it_names_the_packages_and_stops(self):
        self.nothing_is_installed(user=1000)
        self.stand_in("sudo", "exit 1")
        status, out, err = self.dev("demo")
        self.assertEqual((status, out), (1, ""))
        lines = err.splitlines()
        self.assertEqual(lines[0], "dev: some packages are missing, and installing them takes root or sudo:")
        self.assertRegex(lines[1], r"^    apt-get install -y --no-install-recommends g\+\+ cmake .*libelf-dev")
        self.assertEqual(len(lines), 2)
        self.assertEqual(self.calls_of("apt-get"), [])

    def test_only_missing_packages_are_named(self):
        self.nothing_is_installed(user=1000)
        self.stand_in("sudo", "exit 1")
        self.stand_in("dpkg-query", 'case "$*" in *libelf-dev) exit 1 ;; esac; echo "install ok installed"')
        self.assertIn("apt-get install -y --no-install-recommends libelf-dev\n", self.dev("demo")[2])

    def test_a_package_that_was_removed_again_is_missing(self):
        self.nothing_is_installed(user=1000)
        self.stand_in("sudo", "exit 1")
        self.stand_in("dpkg-query", 'echo "deinstall ok config-files"')
        self.assertIn("apt-get install", self.dev("demo")[2])

    def test_root_installs_and_a_failure_ends_it(self):
        self.nothing_is_installed(user=0)
        status, out, _ = self.dev("demo")
        self.assertEqual(status, 7)
        self.assertTrue(out.startswith("installing g++ cmake "))
        self.assertEqual(self.calls_of("apt-get"), ["apt-get update -qq"])

    def test_others_install_by_sudo(self):
        self.nothing_is_installed(user=1000)
        self.stand_in("sudo", '[ "$1" = -n ] && shift; exec "$@"')
        self.stand_in("apt-get", 'case "$*" in *install*) exit 7 ;; esac')
        self.assertEqual(self.dev("demo")[0], 7)
        update, install = self.calls_of("apt-get")
        self.assertEqual(update, "apt-get update -qq")
        self.assertRegex(install, r"^apt-get install -y --no-install-recommends .* g\+\+ cmake ")

    def builds_on_stand_ins(self):
        """A copy of the script, with the sample that the demo uses, where a build makes programs that do nothing."""
        self.lint_runs_on_stand_ins()
        (self.script.parent / "samples").mkdir()
        commands = """
for file in build/demo/zanl-profile-tly build/demo/tools/zanl_profile/zanl-profile; do
    mkdir -p ${file%/*} && printf '#!/bin/sh\n[ "$1" != summary ] || echo the summary of $2\n' >$file && chmod +x $file
done
case "$*" in *--build*) for n in $(seq 30); do echo "[$n/30] Building"; done ;; esac
"""
        self.stand_in("cmake", commands)

    def test_the_demo_says_what_it_does_and_where_the_programs_are(self):
        self.builds_on_stand_ins()
        status, out, err = self.dev("demo")
        self.assertEqual((status, err), (0, ""))
        progress = [f"    {n} of 30 files built" for n in range(3, 31, 3)]
        self.assertEqual(out.splitlines()[:11], ["building both programs in build/demo", *progress])
        summary = "$ zanl-profile summary build/demo/report.json\nthe summary of build/demo/report.json\n"
        self.assertTrue(out.endswith(summary), out)
        self.assertNotIn("\r", out)
        programs = ["    build/demo/zanl-profile-tly", "    build/demo/tools/zanl_profile/zanl-profile"]
        self.assertEqual(out.split("The programs:\n")[1].splitlines()[:2], programs)
        self.assertIn("The run as a page, for any browser:\n    build/demo/image_pipeline.html\n", out)
        self.assertEqual(len(out.split("To try next:\n")[1].split("\n\n")[0].splitlines()), 2)

    def test_a_demo_that_does_not_build_shows_why(self):
        self.builds_on_stand_ins()
        self.stand_in("cmake", 'case "$*" in *--build*) echo "[1/2] Building"; echo "a.cpp:1: error: odd"; exit 1 ;; esac')
        status, out, err = self.dev("demo")
        self.assertEqual(status, 1)
        self.assertTrue(out.endswith("a.cpp:1: error: odd\n"), out)
        self.assertRegex(err, r"^dev: 'cmake --build .*' failed; its whole output is in build/demo.log\n$")

    def test_packages_are_counted_while_they_are_installed(self):
        self.nothing_is_installed(user=0)
        counted = "echo '0 upgraded, 2 newly installed, 0 to remove'; echo 'Setting up a (1)'; echo 'Setting up b (1)'"
        self.stand_in("apt-get", f'case "$*" in *install*) {counted}; exit 7 ;; esac')
        status, out, _ = self.dev("demo")
        self.assertEqual(status, 7)
        self.assertEqual(out.splitlines()[1:], ["    1 of 2 packages installed", "    2 of 2 packages installed"])

    def test_a_quick_test_has_one_build_and_leaves_out_thorough_tests(self):
        self.builds_on_stand_ins()
        self.stand_in("python3", "")
        folder = "build/release/Testing/Temporary"
        self.stand_in("ctest", f"mkdir -p {folder} && echo '[  PASSED  ] 7 tests.' >{folder}/LastTest.log")
        status, out, err = self.dev("test", "quick")
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"^sources +ok\nquick +building, testing: 7 tests passed\n$")
        builds = ["cmake --preset release", "cmake --build --preset release --target quick_tests"]
        self.assertEqual(self.calls_of("cmake"), builds)
        self.assertEqual(len(self.calls_of("ctest")), 1)
        self.assertIn("--preset release ", self.calls_of("ctest")[0])
        self.assertIn(" --label-exclude thorough", self.calls_of("ctest")[0])
        self.assertEqual([call.split()[1] for call in self.calls_of("python3")], ["tests/check_sources.py"])

    def test_the_walks_are_a_step_of_their_own(self):
        self.builds_on_stand_ins()
        self.stand_in("python3", "echo 9 tests of 3 walks passed")
        status, out, err = self.dev("test", "walks")
        self.assertEqual((status, err), (0, ""))
        self.assertRegex(out, r"^sources +ok\nwalks +9 tests of 3 walks passed\n$")
        self.assertEqual([call.split()[1] for call in self.calls_of("python3")],
                         ["tests/check_sources.py", "tests/walks/run_walks.py"])
        self.assertEqual(self.calls_of("cmake"), [])

    def viewer_runs_on_stand_ins(self, lines):
        """A copy of the script, with tests of the viewer that print these lines, and nothing of what they need."""
        self.builds_on_stand_ins()
        self.stand_in("python3", "echo Ran 5 tests")
        self.stand_in("ctest", "folder=build/$2/Testing/Temporary; mkdir -p $folder && echo '[  PASSED  ] 7 tests.' >$folder/LastTest.log")
        for name in ("node", "npm", "chromium", "chromium-browser", "google-chrome"):
            self.stand_in(name, "exit 1")
        for name, printed in (("viewer", lines), ("exports", ["4 tests passed"])):
            tests = self.script.parent / "tests" / name
            tests.mkdir(parents=True)
            (tests / "package-lock.json").write_text("{}")
            (tests / "run_tests.py").write_text("#!/bin/sh\ncat <<END\n" + "\n".join(printed) + "\nEND\n")
            (tests / "run_tests.py").chmod(0o755)

    def test_what_the_viewers_tests_leave_out_is_named_at_the_end_and_run_again(self):
        self.viewer_runs_on_stand_ins(["3 tests passed", "not run: the page (Chromium is missing)"])
        status, out, _ = self.dev("test")
        self.assertEqual(status, 0)
        self.assertIn("viewer          3 tests passed\n", out)
        self.assertEqual(out.splitlines()[-1], "not tested: the page (Chromium is missing)")
        again = self.dev("test")[1]
        self.assertIn("viewer          3 tests passed\n", again)
        self.assertIn("release         unchanged since it passed\n", again)
        self.assertEqual(again.splitlines()[-1], "not tested: the page (Chromium is missing)")

    def test_with_all_of_the_viewers_tests_nothing_is_named(self):
        self.viewer_runs_on_stand_ins(["3 tests passed"])
        status, out, _ = self.dev("test")
        self.assertEqual((status, out.splitlines()[-1]), (0, "exports         4 tests passed"))
        self.assertIn("viewer          unchanged since it passed\n", self.dev("test")[1])

    def test_one_build_is_tested_then_on_demand_all_that_there_are(self):
        self.viewer_runs_on_stand_ins(["3 tests passed"])
        def steps_of(words):
            return [line.split()[0] for line in self.dev("test", *words)[1].splitlines()]
        one_build = ["sources", "scripts", "release", "viewer", "exports"]
        self.assertEqual(steps_of([]), one_build)
        self.assertEqual([call for call in self.calls_of("cmake") if " --build " not in call], ["cmake --preset release"])
        self.assertEqual(steps_of(["all"]), one_build + ["walks", "release-clang", "asan"])
        self.assertEqual([call for call in self.calls_of("cmake") if " --build " not in call],
                         ["cmake --preset release", "cmake --preset release-clang", "cmake --preset asan"])

    def test_again_runs_what_is_unchanged(self):
        self.viewer_runs_on_stand_ins(["3 tests passed"])
        self.dev("test", "all")
        self.assertEqual(self.dev("test", "all")[1].count("unchanged since it passed"), 8)
        for words in (["all", "--again"], ["--again", "all"]):
            self.assertNotIn("unchanged", self.dev("test", *words)[1])

    def test_what_the_viewers_tests_need_is_installed(self):
        self.viewer_runs_on_stand_ins(["3 tests passed"])
        self.stand_in("dpkg-query", 'case "$*" in *nodejs|*npm|*chromium) exit 1 ;; esac; echo "install ok installed"')
        self.stand_in("id", "echo 0")
        self.stand_in("apt-get", "")
        self.assertEqual(self.dev("test")[0], 0)
        self.assertEqual(self.calls_of("apt-get")[-1].split()[-3:], ["nodejs", "npm", "chromium"])
        self.assertEqual(self.calls_of("npm")[-1], "npm ci")

    def packages_on_stand_ins(self):
        self.lint_runs_on_stand_ins()
        packaging = self.script.parent / "packaging"
        packaging.mkdir()
        for name in ("fetch_tinyxml2", "check_dist.py"):
            self.stand_in(name, "")
            (packaging / name).symlink_to(self.programs / name)
        self.stand_in("cmake", "mkdir -p build/dist/files && touch build/dist/files/made")

    def test_what_is_handed_out_is_made_then_checked(self):
        self.packages_on_stand_ins()
        status, out, err = self.dev("dist")
        self.assertEqual((status, err), (0, ""))
        self.assertTrue(out.startswith("fetching, building, checking\n"), out)
        self.assertRegex(out, r" made\n$")
        steps = [line for line in self.calls.read_text().splitlines() if "/" in line or line.startswith("cmake ")]
        self.assertEqual([step.split("/")[-1] for step in steps], ["tinyxml2", "cmake --workflow --preset dist", "files"])

    def test_a_library_that_cannot_be_fetched_ends_it(self):
        self.packages_on_stand_ins()
        self.stand_in("fetch_tinyxml2", "echo 'no network'; exit 1")
        status, out, err = self.dev("dist")
        self.assertEqual((status, out), (1, "fetching, failed\n\nno network\n"))
        self.assertRegex(err, r"^dev: 'packaging/fetch_tinyxml2 .*' failed; its whole output is in build/dist.log\n$")
        self.assertEqual(self.calls_of("cmake"), [])

    # What it says has passed, or not, is then said of a folder without sources.
    def lint_runs_on_stand_ins(self):
        self.script = self.programs / "sources" / "dev"
        self.script.parent.mkdir()
        shutil.copy(DEV, self.script)
        shutil.copytree(DEV.parent / "dev.d", self.script.parent / "dev.d")
        self.stand_in("dpkg-query", 'echo "install ok installed"')
        for name in ("cmake", "run-clang-tidy", "cppcheck"):
            self.stand_in(name, "")

    def test_lint_without_findings_passes_and_is_not_done_again(self):
        self.lint_runs_on_stand_ins()
        self.assertEqual(self.dev("lint"), (0, "clang-tidy      ok\ncppcheck        ok\n", ""))
        unchanged = "clang-tidy      unchanged since it passed\ncppcheck        unchanged since it passed\n"
        self.assertEqual(self.dev("lint"), (0, unchanged, ""))
        self.assertEqual((len(self.calls_of("run-clang-tidy")), len(self.calls_of("cppcheck"))), (1, 1))

    def test_lint_fails_with_the_findings_of_clang_tidy_and_nothing_else(self):
        self.lint_runs_on_stand_ins()
        commands = """
echo 'clang-tidy-14 -p=build/lint /top/tly/unity_0_cxx.cxx'
printf '\\033[1mtly/a.cpp:7:9: error: \\033[0modd\\n'
echo '31 warnings generated.' >&2
exit 1
"""
        self.stand_in("run-clang-tidy", commands)
        status, out, err = self.dev("lint")
        self.assertEqual((status, out), (1, "clang-tidy      failed\n\ntly/a.cpp:7:9: error: odd\n"))
        self.assertEqual(err, "dev: 'run_clang_tidy' failed; its whole output is in build/clang-tidy.log\n")
        self.assertEqual(self.dev("lint")[0], 1)
        self.assertEqual(self.calls_of("cppcheck"), [])

    def test_lint_fails_with_the_findings_of_cppcheck(self):
        self.lint_runs_on_stand_ins()
        self.stand_in("cppcheck", "echo 'tly/a.cpp:7: odd [oddity]' >&2; exit 1")
        status, out, err = self.dev("lint")
        self.assertEqual(status, 1)
        self.assertEqual(out, "clang-tidy      ok\ncppcheck        failed\n\ntly/a.cpp:7: odd [oddity]\n")
        self.assertRegex(err, r"^dev: 'cppcheck .*' failed; its whole output is in build/cppcheck.log\n$")


if __name__ == "__main__":
    unittest.main()
