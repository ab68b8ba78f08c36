# SPDX-License-Identifier: Apache-2.0
"""The index of the documents has each page."""

import pathlib
import re
import unittest

DOCS = pathlib.Path(__file__).resolve().parent.parent / "docs"
CHAPTERS = ["Getting started", "Formats", "Metrics", "Toolbox", "Viewer", "Scripts and CI", "Troubleshooting",
            "Performance", "Security"]


class Book(unittest.TestCase):
    def test_the_index_has_each_page(self):
        linked = set(re.findall(r"\]\(([\w.]+\.md)", (DOCS / "README.md").read_text()))
        self.assertEqual(linked, {page.name for page in DOCS.glob("*.md")} - {"README.md"})

    def test_the_index_has_each_chapter(self):
        titles = re.findall(r"^\| (\w[^|]*?) \| .*\]\(", (DOCS / "README.md").read_text(), re.MULTILINE)
        self.assertEqual([chapter for chapter in CHAPTERS if chapter not in titles], [])


if __name__ == "__main__":
    unittest.main()
