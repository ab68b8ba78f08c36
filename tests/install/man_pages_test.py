#!/usr/bin/env python3
# SPDX-License-Identifier: Apache-2.0
"""The manual pages have what `--help` has: a page for each command, each option once and no other.

usage: man_pages_test.py TOOLBOX [ARGUMENTS OF unittest]
"""

import collections
import pathlib
import re
import shutil
import subprocess
import sys
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent.parent
PAGES = TOP / "docs" / "man"
SECTIONS = ["NAME", "SYNOPSIS", "DESCRIPTION", "OPTIONS", "EXIT STATUS", "FILES", "EXAMPLES", "SEE ALSO"]
toolbox = ""


def help_of(command):
    run = subprocess.run([toolbox, "help", *command], text=True, capture_output=True, check=True)
    return run.stdout


def rows(page, headline):
    """The first words of the rows below headlines of a help page that begin like this, without what is in brackets."""
    for block in re.findall(rf"^{headline}.*:\n((?:  .*\n)+)", page, re.MULTILINE):
        yield from (re.split(r" {2,}| Needs:| Excludes:", line.strip())[0] for line in block.splitlines())


def commands(command=()):
    """The program and all commands below it, as tuples of words."""
    yield command
    for name in rows(help_of(command), "Commands"):
        yield from commands((*command, name))


def page_name(command):
    return "-".join(["zanl-profile", *command]) + ".1.scd"


def section(page, title):
    found = re.search(rf"^# {title}\n(.*?)(?=^# |\Z)", page, re.MULTILINE | re.DOTALL)
    return found[1] if found else ""


def terms(text):
    """What a list of a page explains: its terms, without the marks of scdoc."""
    lines = re.findall(r"^([*_].*)\n\t", text, re.MULTILINE)
    return [re.sub(r"\\(.)|[*_]", lambda mark: mark[1] or "", line) for line in lines]


def help_options(page):
    """The options of a help page, as manual pages write them: "-o, --output DIR"."""
    return [re.sub(r" \.\.\.$", "", row).replace(",", ", ") for row in rows(page, "Options")]


def faults_of_page(page, help_page):
    faults = [f"has no section {title}" for title in SECTIONS if not section(page, title).strip()]
    wanted = collections.Counter(help_options(help_page))
    found = collections.Counter(terms(section(page, "OPTIONS")))
    faults += [f"lacks the option {option}" for option in wanted - found]
    faults += [f"has the option {option}, which --help hasn't, or twice" for option in found - wanted]
    for title, headline in (("COMMANDS", "Commands"), ("ARGUMENTS", "Arguments")):
        if sorted(terms(section(page, title))) != sorted(rows(help_page, headline)):
            faults.append(f"has other {title} than --help")
    statuses = re.findall(r"^  (\d)  ", help_page.split("Exit status:")[1], re.MULTILINE)
    if terms(section(page, "EXIT STATUS")) != statuses:
        faults.append("has another EXIT STATUS than --help")
    return faults


class ManPages(unittest.TestCase):
    def test_each_command_has_a_page_that_says_what_its_help_says(self):
        found = list(commands())
        self.assertGreater(len(found), 15)
        for command in found:
            with self.subTest(page_name(command)):
                page = PAGES / page_name(command)
                self.assertTrue(page.is_file(), f"docs/man/{page.name} is missing")
                self.assertEqual(faults_of_page(page.read_text(), help_of(command)), [])

    def test_no_page_is_of_a_command_that_there_is_not(self):
        names = {page_name(command) for command in commands()} | {"zanl-profile-tly.1.scd"}
        self.assertEqual({page.name for page in PAGES.iterdir()}, names)

    def test_the_page_of_the_other_program_has_the_sections_and_what_surprises(self):
        page = (PAGES / "zanl-profile-tly.1.scd").read_text()
        for title in SECTIONS:
            self.assertTrue(section(page, title).strip(), title)
        for phrase in ("Or the command line was wrong", "SIGSEGV", "a part of a report", "Only compute unit 0"):
            self.assertIn(phrase, page)

    def test_names_of_other_pages_are_names_of_pages(self):
        for page in PAGES.iterdir():
            for name in re.findall(r"\*(zanl-profile[\w-]*)\*\(1\)", page.read_text()):
                with self.subTest(page=page.name, name=name):
                    self.assertTrue((PAGES / f"{name}.1.scd").is_file())

    @unittest.skipUnless(shutil.which("scdoc") and shutil.which("mandoc"), "not installed: apt-get install scdoc mandoc")
    def test_the_pages_can_be_formatted_and_have_no_errors(self):
        for page in sorted(PAGES.iterdir()):
            with self.subTest(page.name):
                made = subprocess.run(["scdoc"], input=page.read_bytes(), capture_output=True, check=True)
                lint = subprocess.run(["mandoc", "-T", "lint", "-W", "error"], input=made.stdout, capture_output=True)
                self.assertEqual((lint.returncode, lint.stdout, lint.stderr), (0, b"", b""))

    def test_faults_of_a_page_are_found(self):
        help_page = "a\nUsage: x\n\nOptions:\n  -h,--help    print\n  --kernel NAME ...  only\n\nExit status:\n  0  well\n  2  not\n"
        page = "# NAME\nx\n# OPTIONS\n\n*-h*, *--help*\n\tPrint.\n\n*--other*\n\tOdd.\n\n# EXIT STATUS\n\n*0*\n\tWell.\n"
        self.assertEqual(faults_of_page(page, help_page)[-3:], [
            "lacks the option --kernel NAME",
            "has the option --other, which --help hasn't, or twice",
            "has another EXIT STATUS than --help",
        ])
        self.assertIn("has no section FILES", faults_of_page(page, help_page))


if __name__ == "__main__":
    toolbox = sys.argv.pop(1)
    unittest.main()
