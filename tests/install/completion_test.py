#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""What the shells offer at the end of command lines of the toolbox, asked of bash, zsh and fish themselves.

usage: completion_test.py TOOLBOX [ARGUMENTS OF unittest]

A shell that isn't installed is left out.
"""

import concurrent.futures
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
toolbox = ""

# Command lines, and the ends of the words that are offered. The folder has the files design.zanx, data.mon, done.json and
# dump.txt, and the folder deep.
FILES_WITH_D = {"data.mon", "design.zanx", "done.json", "dump.txt", "deep"}
OFFERS = {
    "pack": {"package"},
    "package cr": {"create"},
    "--quiet package cr": {"create"},
    "--color never package cr": {"create"},
    "help package cr": {"create"},
    "package list --lo": {"--long"},
    "package --color never list --lo": {"--long"},
    "package list -- --lo": set(),
    "--color al": {"always"},
    "--color=al": {"always"},
    "summary --sort sta": {"stall"},
    "completion f": {"fish"},
    "check d": {"design.zanx", "deep"},
    "check design.zanx d": {"data.mon", "deep"},
    "run design.zanx data.mon d": {"done.json", "deep"},
    "summary d": {"design.zanx", "data.mon", "done.json", "deep"},
    "summary --top 3 d": {"design.zanx", "data.mon", "done.json", "deep"},
    "package list design.zanx d": set(),
    "package pack d": FILES_WITH_D,
    "package pack out.stream d": FILES_WITH_D,
    "package show design.zanx .zan.v": {".zan.version", ".zan.velmora_report"},
    "package show --color never design.zanx .zan.ver": {".zan.version"},
    "package remove design.zanx .zan.version .zan.b": {".zan.board_spec.xml"},
    "package show none.zanx .zan.v": set(),
    "package update design.zanx .zan.ver": {".zan.version="},
    "package update design.zanx .zan.version=du": {"dump.txt"},
}


def commands_of_help(command=()):
    """The names of commands by the command that they are below, "package list", as help pages have them."""
    page = subprocess.run([toolbox, "help", *command], text=True, capture_output=True, check=True).stdout
    block = re.search(r"^Commands:\n((?:  .*\n)+)", page, re.MULTILINE)
    names = [line.split()[0] for line in block[1].splitlines()] if block else []
    found = {" ".join(command): names} if names else {}
    for name in names:
        found |= commands_of_help((*command, name))
    return found


class Completion(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = pathlib.Path(folder.name)
        os.symlink(pathlib.Path(toolbox).resolve(), cls.folder / "zanl-profile")
        cls.work = cls.folder / "work"
        (cls.work / "deep").mkdir(parents=True)
        for name in ("data.mon", "done.json", "dump.txt"):
            (cls.work / name).write_text("")
        cls.run_command(toolbox, "package", "create", "design.zanx", "--from", TOP / "samples" / "vector_add")
        for shell in ("bash", "zsh", "fish"):
            (cls.folder / f"script.{shell}").write_text(cls.run_command(toolbox, "completion", shell))
        for name in ("capture_setup.zsh",):
            shutil.copy(HERE / name, cls.folder)

    @classmethod
    def run_command(cls, *command):
        environment = os.environ | {"PATH": f"{cls.folder}:{os.environ['PATH']}", "HOME": str(cls.folder), "TERM": "dumb",
                                    "LC_ALL": "C.UTF-8"}
        options = {"text": True, "cwd": cls.work, "env": environment, "stdin": subprocess.DEVNULL, "timeout": 60}
        run = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.PIPE, **options)
        if run.returncode != 0 or run.stderr:
            raise AssertionError(f"{command} ended with {run.returncode}: {run.stdout}{run.stderr}")
        return run.stdout

    def offers_of_bash(self, line):
        # As bash takes a line apart for completions.
        words = re.findall(r"[=:]+|[^\s=:]+", line) + ([""] if line.endswith(" ") else [])
        script = ('source "$1"; COMP_LINE=$2 COMP_POINT=${#2} COMP_WORDS=("${@:3}") COMP_CWORD=$(($# - 3)); _zanl_profile; '
                  '[ ${#COMPREPLY[@]} -eq 0 ] || printf "%s\\n" "${COMPREPLY[@]}"')
        return self.run_command("bash", "-uc", script, "bash", self.folder / "script.bash", line, *words)

    def offers_of_zsh(self, line):
        return self.run_command("zsh", "-f", HERE / "capture.zsh", self.folder / "script.zsh", line)

    def offers_of_fish(self, line):
        script = "source $argv[1]; complete -C $argv[2]"
        return re.sub(r"\t.*", "", self.run_command("fish", "--no-config", "-c", script, self.folder / "script.fish", line))

    def offers(self, shell, line):
        """The ends of the words that the shell offers: what comes after the "=" that is on the line already."""
        printed = getattr(self, f"offers_of_{shell}")(line)
        begin = re.search(r"[^ ]*=|", line.split(" ")[-1])[0]
        return {word.removeprefix(begin).removesuffix("/") for word in printed.splitlines() if word}

    def check_shell(self, shell):
        if not shutil.which(shell):
            self.skipTest(f"{shell} is not installed: apt-get install {shell}")
        expected = {f"zanl-profile {arguments}": words for arguments, words in OFFERS.items()}
        for command, names in commands_of_help().items():
            expected[" ".join(f"zanl-profile {command}".split()) + " "] = set(names)
        # A shell mostly waits for its terminal.
        with concurrent.futures.ThreadPoolExecutor(8) as pool:
            found = dict(zip(expected, pool.map(lambda line: self.offers(shell, line), expected)))
        for line, words in expected.items():
            with self.subTest(shell=shell, line=line):
                self.assertEqual(found[line], words)

    def test_bash(self):
        self.check_shell("bash")

    def test_zsh(self):
        self.check_shell("zsh")

    def test_fish(self):
        self.check_shell("fish")

    def test_a_name_of_a_section_is_quoted(self):
        # zsh and fish quote what they put on a line themselves.
        self.run_command(toolbox, "package", "create", "odd.zanx", "odd$(touch done)=dump.txt", "o'd=dump.txt")
        printed = self.offers_of_bash("zanl-profile package show odd.zanx o")
        self.assertEqual(printed.splitlines(), [r"odd\$\(touch\ done\)", r"o\'d"])

    def test_a_shell_knows_what_each_value_is(self):
        table = (self.folder / "script.bash").read_text().split("\n'\n")[0]
        unknown = [line for line in table.splitlines() if line.split("|")[3:4] == ["unknown"]]
        self.assertEqual(unknown, [], "give the label a row in tools/zanl_profile/completion/value_kinds.cpp")

    def test_an_option_takes_a_value_in_all_commands_or_in_none(self):
        kinds = {}
        for line in (self.folder / "script.bash").read_text().splitlines():
            fields = line.split("|")
            if fields[1:2] == ["option"]:
                kinds.setdefault(fields[2], set()).add(fields[3] == "none")
        self.assertGreater(len(kinds), 20)
        self.assertEqual([name for name, values in kinds.items() if len(values) > 1], [])

    def test_another_shell_is_refused(self):
        run = subprocess.run([toolbox, "completion", "tcsh"], text=True, capture_output=True)
        self.assertEqual((run.returncode, run.stdout), (2, ""))
        self.assertEqual(run.stderr, "zanl-profile: completion takes bash, zsh or fish, not 'tcsh'\n")


if __name__ == "__main__":
    toolbox = str(pathlib.Path(sys.argv.pop(1)).resolve())
    unittest.main()
