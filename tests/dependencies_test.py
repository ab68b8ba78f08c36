# SPDX-License-Identifier: Apache-2.0
"""The page of dependencies has a row for each package that ./dev installs, and each row is whole."""

import pathlib
import re
import unittest

TOP = pathlib.Path(__file__).resolve().parent.parent
# What a row has to have; what else was looked at may be empty.
COLUMNS = ["library or tool", "Debian package", "version", "licence", "what for"]


def rows():
    page = (TOP / "docs" / "dependencies.md").read_text()
    lines = [line for line in page.splitlines() if line.startswith("| ")]
    return [[cell.strip() for cell in line.strip("|").split("|")] for line in lines if "| Debian package |" not in line]


def packages_of_dev(text):
    """The packages in the lists of ./dev and its parts, and those that single commands need."""
    words = " ".join(re.findall(r"^\w+_packages=\(([^)]*)\)", text, re.MULTILINE))
    words += " " + " ".join(re.findall(r"\bneed ((?:[a-z][\w+.-]* ?)+)", re.sub(r"^ *#.*$", "", text, flags=re.MULTILINE)))
    return {word for word in words.split() if re.fullmatch(r"[a-z0-9][a-z0-9+.-]+", word)}


class Dependencies(unittest.TestCase):
    def test_each_row_is_whole(self):
        self.assertGreater(len(rows()), 20)
        for row in rows():
            with self.subTest(row[0]):
                self.assertEqual(len(row), len(COLUMNS) + 1)
                for column, cell in zip(COLUMNS, row):
                    self.assertNotEqual(cell, "", column)

    def test_each_package_that_is_installed_has_a_row(self):
        named = {name for row in rows() for name in re.findall(r"`([^`]+)`", row[1])}
        parts = [TOP / "dev", *sorted((TOP / "dev.d").glob("*.sh"))]
        packages = packages_of_dev("".join(path.read_text() for path in parts))
        self.assertIn("libelf-dev", packages)
        self.assertIn("valgrind", packages)
        self.assertEqual(sorted(packages - named), [])

    def test_packages_are_found_in_lists_and_single_commands(self):
        text = 'a_packages=(g++ x-dev\n    y)\nb_packages=("${a_packages[@]}" z1)\n    need jq\n    need "${a_packages[@]}" python3\n'
        self.assertEqual(packages_of_dev(text), {"g++", "x-dev", "z1", "jq"})


if __name__ == "__main__":
    unittest.main()
